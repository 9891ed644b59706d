#include "follower/printable.h"

#include <gtest/gtest.h>

#include <string>

namespace controller_base::follower {
namespace {

TEST(Printable, OrdinaryTextStays) {
  for (const std::string text :
       {"", "a goal at (1.0, 2.0)", "T\xc3\xbcr", "\xe2\x86\x92 \xe5\xba\x8a \xf0\x9f\x9a\xaa", "back\\slash"}) {
    EXPECT_EQ(Printable(text), text);
  }
}

TEST(Printable, ControlCharactersAreShown) {
  EXPECT_EQ(Printable("a\nb\r\tc"), "a\\x0ab\\x0d\\x09c");
  EXPECT_EQ(Printable("\x1b[31mred\x1b]0;title\x07"), "\\x1b[31mred\\x1b]0;title\\x07");
  EXPECT_EQ(Printable(std::string("a\0b\x7f", 4)), "a\\x00b\\x7f");
  EXPECT_EQ(Printable("\xc2\x9b"
                      "31m"),
            "\\xc2\\x9b31m");  // C1 in UTF-8
  EXPECT_EQ(Printable("\xe2\x80\xae"
                      "abc"),
            "\\xe2\\x80\\xaeabc");  // right to left
  EXPECT_EQ(Printable("\xe2\x80\xa8"
                      "abc"),
            "\\xe2\\x80\\xa8abc");  // a line's end
}

TEST(Printable, BytesThatAreNoTextAreShown) {
  EXPECT_EQ(Printable("\x9b"
                      "31m"),
            "\\x9b31m");                  // C1, for a terminal of one byte a character
  EXPECT_EQ(Printable("\xc3"), "\\xc3");  // cut off
  EXPECT_EQ(Printable("\xc3(\xe2\x82"), "\\xc3(\\xe2\\x82");
  EXPECT_EQ(Printable("\xc0\x8a"), "\\xc0\\x8a");                    // a line's end in two bytes
  EXPECT_EQ(Printable("\xe0\x80\x8a"), "\\xe0\\x80\\x8a");           // and in three
  EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // a surrogate
  EXPECT_EQ(Printable("\xf5\x80\x80\x80"), "\\xf5\\x80\\x80\\x80");  // beyond the last character
  EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(Printable, WhatIsTooLongIsCutOffBetweenCharacters) {
  EXPECT_EQ(Printable("abcdef", 6), "abcdef");
  EXPECT_EQ(Printable("abcdef", 5), "abcde...");
  EXPECT_EQ(Printable("abc\xc3\xbc", 4), "abc...");
  EXPECT_EQ(Printable("abc\n", 6), "abc...");
}

}  // namespace
}  // namespace controller_base::follower
