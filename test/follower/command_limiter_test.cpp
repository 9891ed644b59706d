#include "follower/command_limiter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "costmap_2d/cost_values.h"
#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_test::FollowerAlone;
using controller_base_test::Stamped;

class CommandLimiterTest : public testing::Test {
 protected:
  CommandLimiterTest() {
    parameters_.cruise_speed = 0.5;
    parameters_.acceleration = 1.0;
    parameters_.max_turn_rate = 2.0;
    parameters_.turn_acceleration = 4.0;
    ros::Time::setNow(ros::Time(100.0));
  }

  Command After(double seconds, const Command& wanted) {
    ros::Time::setNow(ros::Time::now() + ros::Duration(seconds));
    return limiter_.Limit(wanted);
  }

  Parameters parameters_;
  CommandLimiter limiter_{parameters_};
};

TEST_F(CommandLimiterTest, SpeedAndTurnRateChangeNoFasterThanTheyMay) {
  EXPECT_NEAR(After(0.0, {1.0, 9.0}).speed, 0.05, 1e-9);  // the first: a usual cycle
  const Command second = After(0.1, {1.0, 9.0});
  EXPECT_NEAR(second.speed, 0.15, 1e-9);
  EXPECT_NEAR(second.turn_rate, 0.6, 1e-9);
  const Command back = After(0.1, {-1.0, -9.0});
  EXPECT_NEAR(back.speed, 0.05, 1e-9);
  EXPECT_NEAR(back.turn_rate, 0.2, 1e-9);
}

TEST_F(CommandLimiterTest, NoneIsFasterThanItMayBe) {
  const Command command = After(0.9, {9.0, -9.0});
  After(0.9, {9.0, -9.0});
  EXPECT_LE(command.speed, 0.5);
  EXPECT_EQ(After(0.9, {9.0, -9.0}).speed, 0.5);
  EXPECT_EQ(After(0.9, {-9.0, -9.0}).turn_rate, -2.0);
  EXPECT_GE(After(0.9, {-9.0, -9.0}).speed, -0.5);
}

TEST_F(CommandLimiterTest, WhatIsWithinTheLimitsIsLeftAlone) {
  After(0.0, {0.03, 0.1});
  const Command command = After(0.05, {0.07, 0.2});
  EXPECT_EQ(command.speed, 0.07);
  EXPECT_EQ(command.turn_rate, 0.2);
}

TEST_F(CommandLimiterTest, AClockThatStandsStillChangesNothingAndAJumpIsAUsualCycle) {
  const double first = After(0.0, {1.0, 0.0}).speed;
  EXPECT_EQ(After(0.0, {1.0, 0.0}).speed, first);
  EXPECT_NEAR(After(500.0, {1.0, 0.0}).speed, first + 0.05, 1e-9);
  EXPECT_NEAR(After(-500.0, {1.0, 0.0}).speed, first + 0.10, 1e-9);
}

TEST_F(CommandLimiterTest, AStoppedRobotBeginsFromAStand) {
  After(0.0, {1.0, 1.0});
  EXPECT_FALSE(limiter_.IsStanding());
  limiter_.Stop();
  EXPECT_TRUE(limiter_.IsStanding());
  EXPECT_NEAR(After(0.9, {1.0, 0.0}).speed, 0.05, 1e-9);
}

// A drive that turns on the spot, drives around an obstacle, touches something, and turns to its goal's heading.
class EventfulDrive : public FollowerAlone {
 protected:
  static Parameters WithHeading() {
    Parameters parameters;
    parameters.goal_heading_tolerance = 0.1;
    return parameters;
  }

  EventfulDrive() : FollowerAlone(WithHeading()) {
    for (unsigned int my = 58; my < 62; ++my) {
      map_.setCost(85, my, costmap_2d::LETHAL_OBSTACLE);
    }
    path_.poses.back() = Stamped({2.0, 0.0, -2.0});
    pose_.yaw = 3.0;
    robot_ = Stamped(pose_);
    follower_.SetPath(path_);
  }
};

TEST_F(EventfulDrive, EveryCommandIsWithinTheLimitsToTheLast) {
  constexpr double kCycle = 0.05;  // s
  const Parameters limits;
  Command last;
  double fastest_turn = 0.0;
  for (int cycle = 0; cycle < 1000 && !IsOver(follower_.outcome().state); ++cycle) {
    if (cycle == 60) {
      Touch(3);
    }
    const Command command = OneCycle(kCycle);
    if (cycle == 60) {
      ASSERT_GT(last.speed, 0.1);
      last = {};  // a contact stops the robot at once
    }
    EXPECT_LE(std::abs(command.speed), limits.cruise_speed) << cycle;
    EXPECT_LE(std::abs(command.turn_rate), limits.max_turn_rate) << cycle;
    EXPECT_LE(std::abs(command.speed - last.speed), limits.acceleration * kCycle + 1e-9) << cycle;
    EXPECT_LE(std::abs(command.turn_rate - last.turn_rate), limits.turn_acceleration * kCycle + 1e-9) << cycle;
    fastest_turn = std::max(fastest_turn, std::abs(command.turn_rate));
    last = command;
    pose_.yaw += kCycle * command.turn_rate;
    pose_.x += kCycle * command.speed * std::cos(pose_.yaw);
    pose_.y += kCycle * command.speed * std::sin(pose_.yaw);
    robot_ = Stamped(pose_);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached) << follower_.outcome().reason;
  EXPECT_EQ(last.speed, 0.0);
  EXPECT_EQ(last.turn_rate, 0.0);
  EXPECT_EQ(fastest_turn, limits.max_turn_rate);  // it had to turn far
  EXPECT_EQ(recorder_.Told("contact").size(), 1u);
  EXPECT_FALSE(recorder_.detours.empty());
}

TEST_F(EventfulDrive, ADriveThatEndsElsewhereThanAtItsGoalStopsAtOnce) {
  Drive(60);
  ASSERT_GT(OneCycle(0.05).speed, 0.1);
  follower_.Cancel();
  EXPECT_EQ(OneCycle(0.05).speed, 0.0);
}

TEST_F(FollowerAlone, TheLastContactStopsTheRobotAtOnce) {
  for (int contact = 1; contact <= 10; ++contact) {
    ASSERT_FALSE(IsOver(follower_.outcome().state));
    CycleAfter(0.31);
    Touch(2);
    const Command command = OneCycle(0.05);
    if (contact == 10) {
      EXPECT_EQ(command.speed, 0.0);
      EXPECT_EQ(command.turn_rate, 0.0);
    }
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kAborted);
}

}  // namespace
}  // namespace controller_base::follower
