#include "demo/programs/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace controller_base::demo {
namespace {

using testing::ElementsAre;

class CommandLine : public testing::Test {
 protected:
  bool Read(const std::vector<std::string>& arguments) {
    return ReadOptions(arguments, {{"--name", [this](const std::string& value) { set_.push_back("name " + value); }},
                                   {"--flag", [this](const std::string&) { set_.emplace_back("flag"); }, false}});
  }

  // The reason for refusing it; empty when it is accepted.
  std::string Complaint(const std::vector<std::string>& arguments) {
    try {
      Read(arguments);
    } catch (const OptionError& error) {
      return error.what();
    }
    return "";
  }

  std::vector<std::string> set_;
};

TEST_F(CommandLine, OptionsAreSetInTheirOrder) {
  EXPECT_TRUE(Read({"--name", "a", "--flag", "--name=b", "--name="}));
  EXPECT_THAT(set_, ElementsAre("name a", "flag", "name b", "name "));
}

TEST_F(CommandLine, HelpEndsTheReading) {
  EXPECT_FALSE(Read({"--flag", "--help", "--unknown"}));
  EXPECT_FALSE(Read({"-h"}));
  EXPECT_THAT(set_, ElementsAre("flag"));
}

TEST_F(CommandLine, AMistakeIsToldByItsName) {
  const std::string hint = "; --help shows the known ones";
  EXPECT_EQ(Complaint({"--nam", "a"}), "unknown option '--nam'" + hint);
  EXPECT_EQ(Complaint({"--nam=a"}), "unknown option '--nam'" + hint);
  EXPECT_EQ(Complaint({"--flag=1"}), "unknown option '--flag'" + hint);
  EXPECT_EQ(Complaint({"--name"}), "'--name' is not a known option, or lacks its value" + hint);
  EXPECT_TRUE(set_.empty());
}

TEST(ParseCount, TakesDigitsWithinItsLimits) {
  EXPECT_EQ(ParseCount("--n", "3", 3, 5), 3u);
  EXPECT_EQ(ParseCount("--n", "5", 3, 5), 5u);
  for (const char* wrong : {"2", "6", "", "4.0", "-4", "4 ", "0x4", "99999999999999999999"}) {
    EXPECT_THROW(ParseCount("--n", wrong, 3, 5), OptionError) << wrong;
  }
}

TEST(ParseNumbers, TakesAsManyFiniteNumbersAsAreWanted) {
  EXPECT_THAT(ParseNumbers("--at", "1,-2.5", 2), ElementsAre(1.0, -2.5));
  for (const char* wrong : {"1", "1,2,3", "1,", "1;2", "nan,1", "1,inf", ""}) {
    EXPECT_THROW(ParseNumbers("--at", wrong, 2), OptionError) << wrong;
  }
}

}  // namespace
}  // namespace controller_base::demo
