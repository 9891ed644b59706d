#include "demo/judge/expectation.h"

#include <gtest/gtest.h>

namespace controller_base_demo {
namespace {

TEST(ExpectationTest, WhatDidNotComeTrueIsTold) {
  DriveRecord drive;
  drive.outcome = Outcome::kReached;
  drive.contacts = 2;
  drive.events = {{ros::Time(1.0), "path", {}, "new path"}, {ros::Time(2.0), "arrival", {}, "0.04 m"}};
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

}  // namespace
}  // namespace controller_base_demo
