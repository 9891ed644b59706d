#include "follower/arrival.h"

#include <gtest/gtest.h>

#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_test::FollowerAlone;
using controller_base_test::Stamped;

Parameters WithHeading(double tolerance) {
  Parameters parameters;
  parameters.goal_tolerance = 0.1;
  parameters.goal_heading_tolerance = tolerance;
  return parameters;
}

TEST(Arrival, TheSameGoalIsOneWithinBothTolerances) {
  const Parameters parameters = WithHeading(0.2);
  Arrival arrival(parameters);
  EXPECT_FALSE(arrival.IsGoal(Stamped({0.0, 0.0, 0.0}).pose));
  arrival.SetGoal(Stamped({1.0, 2.0, 3.0}).pose);
  EXPECT_TRUE(arrival.IsGoal(Stamped({1.09, 2.0, 3.0}).pose));
  EXPECT_FALSE(arrival.IsGoal(Stamped({1.11, 2.0, 3.0}).pose));
  EXPECT_TRUE(arrival.IsGoal(Stamped({1.0, 2.0, 3.19}).pose));
  EXPECT_FALSE(arrival.IsGoal(Stamped({1.0, 2.0, 3.21}).pose));
}

TEST(Arrival, WithoutAHeadingAllHeadingsAreTheGoals) {
  const Parameters any_heading = WithHeading(3.15);
  Arrival arrival(any_heading);
  arrival.SetGoal(Stamped({0.0, 0.0, 0.0}).pose);
  EXPECT_EQ(arrival.LeftToTurn({0.0, 0.0, 3.1}), 0.0);
  EXPECT_TRUE(arrival.IsGoal(Stamped({0.0, 0.0, 3.1}).pose));

  const Parameters parameters = WithHeading(0.2);
  Arrival unoriented(parameters);
  unoriented.SetGoal(geometry_msgs::Pose());
  EXPECT_EQ(unoriented.LeftToTurn({0.0, 0.0, 3.1}), 0.0);
}

TEST(Arrival, TheShorterWayToTheHeadingIsLeft) {
  const Parameters parameters = WithHeading(0.2);
  Arrival arrival(parameters);
  arrival.SetGoal(Stamped({0.0, 0.0, 3.0}).pose);
  EXPECT_NEAR(arrival.LeftToTurn({0.0, 0.0, 2.0}), 1.0, 1e-9);
  EXPECT_NEAR(arrival.LeftToTurn({0.0, 0.0, -3.0}), 6.0 - 2.0 * kPi, 1e-9);
  EXPECT_EQ(arrival.LeftToTurn({0.0, 0.0, 2.81}), 0.0);
}

class FollowerWithHeading : public FollowerAlone {
 protected:
  FollowerWithHeading() : FollowerAlone(WithHeading(0.2)) {
    path_.poses.back() = Stamped({2.0, 0.0, 2.0});
    follower_.SetPath(path_);
  }
};

TEST_F(FollowerWithHeading, TheGoalsHeadingIsTurnedToOnTheSpot) {
  Drive(400);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_NEAR(pose_.yaw, 2.0, 0.2);
  EXPECT_NEAR(pose_.x, 2.0, 0.1);
}

TEST_F(FollowerWithHeading, ThePositionStaysReachedWhileItTurns) {
  ASSERT_TRUE(DriveUntil("turn"));
  pose_.x -= 0.2;  // wheels slip
  robot_ = Stamped(pose_);
  Drive(2);  // to a stand
  EXPECT_EQ(Drive(100), 0.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_NEAR(pose_.yaw, 2.0, 0.2);
}

TEST_F(FollowerWithHeading, AGoalThatIsNotLatchedIsDrivenBackTo) {
  Parameters parameters = WithHeading(0.2);
  parameters.latch_goal = false;
  follower_.SetParameters(parameters);
  ASSERT_TRUE(DriveUntil("turn"));
  pose_.x -= 0.2;  // wheels slip
  robot_ = Stamped(pose_);
  Drive(600);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_NEAR(pose_.x, 2.0, 0.1);
  EXPECT_NEAR(pose_.yaw, 2.0, 0.2);
}

TEST_F(FollowerWithHeading, AContactTakesItAwayFromTheGoal) {
  ASSERT_TRUE(DriveUntil("turn"));
  Touch(1);
  Drive(1);
  EXPECT_STREQ(follower_.activity(), "back-off");
  Drive(600);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_NEAR(pose_.x, 2.0, 0.1);
}

TEST_F(FollowerAlone, AGoalsHeadingThatNobodyAskedForIsNotTurnedTo) {
  path_.poses.back() = Stamped({2.0, 0.0, 2.0});
  follower_.SetPath(path_);
  Drive(400);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_NEAR(pose_.yaw, 0.0, 0.1);
}

}  // namespace
}  // namespace controller_base::follower
