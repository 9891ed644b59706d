#include "follower/format.h"

#include <gtest/gtest.h>

#include <string>

namespace controller_base::follower {
namespace {

TEST(Format, AsPrintfHasIt) { EXPECT_EQ(Format("%d of %s, %.2f m", 3, "seven", 0.125), "3 of seven, 0.12 m"); }

TEST(Format, NothingIsCutOff) {
  const std::string text(1000, 'x');
  EXPECT_EQ(Format("<%s>", text.c_str()), "<" + text + ">");
  EXPECT_EQ(Format("%s", ""), "");
}

}  // namespace
}  // namespace controller_base::follower
