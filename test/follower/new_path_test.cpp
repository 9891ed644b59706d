// A new path in the middle of a drive.
#include <gmock/gmock.h>

#include <string>

#include "costmap_2d/cost_values.h"
#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_test::FollowerAlone;
using controller_base_test::Stamped;

class NewPath : public FollowerAlone {
 protected:
  nav_msgs::Path PathThrough(const std::vector<Pose2d>& poses) const {
    nav_msgs::Path path;
    path.header.frame_id = "map";
    for (const Pose2d& pose : poses) {
      path.poses.push_back(Stamped(pose));
    }
    return path;
  }

  // A wall 1 m ahead of the path's beginning, from y = -`depth` to y = `depth`.
  void BuildWall(double depth) {
    for (unsigned int my = 0; my < 120; ++my) {
      if (std::abs(-3.0 + 0.05 * (my + 0.5)) < depth) {
        map_.setCost(80, my, costmap_2d::LETHAL_OBSTACLE);
      }
    }
  }

  // A contact, and the cycles until its boxes are dropped.
  void TouchAndRecover() {
    Touch(3);
    Drive(1);
    ASSERT_TRUE(DriveUntil("path"));
  }
};

TEST_F(NewPath, OneThatSharesItsBeginningDoesNotMakeTheRobotStopOrLookBack) {
  const double cruise = Parameters().cruise_speed;
  for (const double end : {2.5, 2.4, 2.3}) {
    Drive(20);
    const double before = pose_.x;
    follower_.SetPath(PathThrough({{0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {end, 0.3, 0.0}}));
    EXPECT_NEAR(static_cast<double>(follower_.index()), before / 0.05, 3.0);
    EXPECT_NEAR(Drive(1), cruise, 0.01) << "at " << before;
    EXPECT_GT(pose_.x, before);
    EXPECT_NEAR(pose_.yaw, 0.0, 0.01);
  }
}

TEST_F(NewPath, OneThatLeavesTheOldOneBehindTheRobotIsJoinedWhereItLeaves) {
  Drive(60);
  ASSERT_GT(pose_.x, 1.0);
  follower_.SetPath(PathThrough({{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 2.0, 0.0}}));
  EXPECT_NEAR(static_cast<double>(follower_.index()), 1.0 / 0.05, 3.0);
}

TEST_F(NewPath, OneThatComesByLaterIsFollowedFromItsBeginning) {
  Drive(40);
  ASSERT_GT(pose_.x, 0.6);
  follower_.SetPath(PathThrough({{pose_.x, 0.0, 0.0}, {pose_.x, 1.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}}));
  EXPECT_EQ(follower_.index(), 0u);
}

// A planner that sends its path once a second.
TEST_F(NewPath, ADetourThatEndsOnItGoesOn) {
  BuildWall(0.1);
  Drive(1);
  ASSERT_STREQ(follower_.activity(), "detour");
  const auto detour = follower_.detour();
  follower_.SetPath(PathThrough({{pose_.x, pose_.y, 0.0}, {2.0, 0.0, 0.0}}));
  EXPECT_EQ(follower_.detour(), detour);
  follower_.SetPath(PathThrough({{pose_.x, pose_.y, 0.0}, {-2.0, 0.0, 0.0}}));
  EXPECT_EQ(follower_.detour(), nullptr);
}

TEST_F(NewPath, ToTheSameGoalKeepsTheBoxesAndTheCountOfContacts) {
  Drive(20);
  TouchAndRecover();
  ASSERT_FALSE(follower_.boxes().empty());
  const std::size_t boxes = follower_.boxes().size();
  follower_.SetPath(PathThrough({{pose_.x, pose_.y, 0.0}, {1.0, 1.0, 0.0}, {2.0, 0.04, 0.0}}));
  EXPECT_EQ(follower_.boxes().size(), boxes);
  Touch(3);
  Drive(1);
  EXPECT_THAT(recorder_.Told("contact").back(), testing::HasSubstr("contact 2 since"));
}

TEST_F(NewPath, ToTheSameGoalKeepsThemAlsoWhenTheDriveWasOver) {
  Drive(20);
  TouchAndRecover();
  const std::size_t boxes = follower_.boxes().size();
  follower_.Cancel();
  follower_.SetPath(path_);
  EXPECT_EQ(follower_.boxes().size(), boxes);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  Touch(3);
  Drive(1);
  EXPECT_THAT(recorder_.Told("contact").back(), testing::HasSubstr("contact 2 since"));
}

TEST_F(NewPath, ToAnotherGoalForgetsBoth) {
  Drive(20);
  TouchAndRecover();
  follower_.SetPath(PathThrough({{pose_.x, pose_.y, 0.0}, {2.0, 0.2, 0.0}}));
  EXPECT_TRUE(follower_.boxes().empty());
  Drive(8);  // contacts closer together are one
  Touch(3);
  Drive(1);
  EXPECT_THAT(recorder_.Told("contact").back(), testing::HasSubstr("contact 1 since"));
}

TEST_F(NewPath, ToTheSameGoalLetsABackOffGoOn) {
  Drive(20);
  Touch(3);
  Drive(1);
  follower_.SetPath(path_);
  EXPECT_STREQ(follower_.activity(), "back-off");
}

TEST_F(NewPath, EverySecondKeepsSinceWhenTheRobotWaitsAndItsStall) {
  BuildWall(3.0);
  Drive(30);
  ASSERT_EQ(follower_.outcome().state, DriveState::kBlocked);
  const ros::Time since = follower_.outcome().since;
  for (int second = 0; second < 30 && !IsOver(follower_.outcome().state); ++second) {
    EXPECT_EQ(follower_.outcome().since, since);
    follower_.SetPath(PathThrough({pose_, {2.0, 0.0, 0.0}}));
    Drive(20);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kRefused);
  EXPECT_LT((ros::Time::now() - since).toSec(), 23.0);
}

TEST_F(NewPath, ALongerOneToTheSameGoalHasALongerBudget) {
  Drive(20);
  const double length = follower_.progress().total_distance;
  const double moved = follower_.progress().moved_distance;
  follower_.SetPath(PathThrough({{pose_.x, pose_.y, 0.0}, {pose_.x, 2.0, 0.0}, {2.0, 0.0, 0.0}}));
  EXPECT_GT(follower_.progress().total_distance, length + 1.0);
  EXPECT_EQ(follower_.progress().moved_distance, moved);
  const double longer = follower_.progress().total_distance;
  follower_.SetPath(path_);
  EXPECT_EQ(follower_.progress().total_distance, longer);
}

// The cause that ended a drive is not given for the next.
TEST_F(NewPath, AContactBeforeTheDriveDoesNotExplainItsStall) {
  Drive(20);
  TouchAndRecover();
  follower_.Cancel();
  follower_.SetPath(path_);
  CycleAfter(25.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_NE(follower_.outcome().cause, StopCause::kContact);
}

}  // namespace
}  // namespace controller_base::follower
