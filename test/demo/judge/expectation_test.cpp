#include "demo/judge/expectation.h"

#include <gtest/gtest.h>

#include <limits>

namespace controller_base::demo {
namespace {

TEST(ExpectationTest, WhatDidNotComeTrueIsTold) {
  simulation::DriveRecord drive;
  drive.outcome.state = follower::DriveState::kReached;
  drive.contacts = 2;
  drive.events = {{ros::Time(1.0), follower::EventKind::kPath, {}, "new path"},
                  {ros::Time(2.0), follower::EventKind::kArrival, {}, "0.04 m"}};
  Expectation expectation;
  expectation.outcome = DriveOutcome::kReached;
  expectation.reasons = {"reached"};
  expectation.events = {{"path", "new"}, {"arrival", ""}};
  EXPECT_TRUE(Unmet(expectation, drive).empty());
  expectation.events = {{"path", "old"}};  // another text
  EXPECT_EQ(Unmet(expectation, drive).size(), 1u);
  expectation.events = {{"path", ""}, {"path", ""}};  // there is only one
  EXPECT_EQ(Unmet(expectation, drive).size(), 1u);
  expectation.events = {{"arrival", ""}, {"path", ""}};  // the wrong way round
  EXPECT_EQ(Unmet(expectation, drive).size(), 1u);
  expectation.never = {{"path", "new"}};
  EXPECT_EQ(Unmet(expectation, drive).size(), 2u);
  expectation.fewest_contacts = 2;
  expectation.most_contacts = 2;
  EXPECT_EQ(Unmet(expectation, drive).size(), 2u);
  expectation.fewest_contacts = 3;
  expectation.most_contacts = 4;
  EXPECT_EQ(Unmet(expectation, drive).size(), 3u);
  expectation.fewest_contacts = 0;
  expectation.most_contacts = 1;
  EXPECT_EQ(Unmet(expectation, drive).size(), 3u);
  expectation.reasons = {"aborted"};
  EXPECT_EQ(Unmet(expectation, drive).size(), 4u);
  expectation.outcome = DriveOutcome::kAborted;
  EXPECT_EQ(Unmet(expectation, drive).size(), 5u);
  drive.trajectory = {{12.0, {}, {}, 0, 0.0, "path", 0.0, 0.0}};
  expectation.latest_end = 12.0;
  EXPECT_EQ(Unmet(expectation, drive).size(), 5u);
  expectation.latest_end = 11.95;
  EXPECT_EQ(Unmet(expectation, drive).size(), 6u);
}

TEST(ExpectationTest, NumbersAreWords) {
  simulation::DriveRecord drive;
  drive.trajectory = {{40.8, {}, {}, 0, 0.0, "path", 0.0, 0.0}};
  Expectation expectation;
  expectation.latest_end = 20.0;
  EXPECT_EQ(Unmet(expectation, drive).at(0), "it took 40.80 s, longer than 20 s");
  expectation = {};
  const auto touched = [&](int times, int least, int most) {
    drive.contacts = times;
    expectation.fewest_contacts = least;
    expectation.most_contacts = most;
    return Unmet(expectation, drive).at(0);
  };
  const int any = std::numeric_limits<int>::max();
  EXPECT_EQ(touched(0, 1, any), "nothing was touched, expected: at least once");
  EXPECT_EQ(touched(1, 5, any), "something was touched once, expected: at least 5 times");
  EXPECT_EQ(touched(1, 0, 0), "something was touched once, expected: never");
  EXPECT_EQ(touched(3, 0, 2), "something was touched 3 times, expected: at most twice");
  EXPECT_EQ(touched(2, 3, 4), "something was touched twice, expected: at least 3 times and at most 4 times");
}

}  // namespace
}  // namespace controller_base::demo
