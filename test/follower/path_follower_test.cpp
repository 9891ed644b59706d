#include "controller_base/follower/path_follower.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "costmap_2d/cost_values.h"
#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_test::FollowerAlone;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(FollowerAlone, ItDrivesAlongItsPath) {
  const Command command = CycleAfter(0.05);
  EXPECT_GT(command.speed, 0.0);
  EXPECT_NEAR(command.turn_rate, 0.0, 1e-9);
}

TEST_F(FollowerAlone, ItDrivesOnWhenItIsTouchedFromBehind) {
  Drive(20);
  const double speed = CycleAfter(0.05).speed;
  follower_.AddBackContact(ros::Time::now());
  EXPECT_GE(CycleAfter(0.05).speed, speed);
  EXPECT_THAT(recorder_.Told("contact"), ElementsAre("bumper: back, driving on"));
  EXPECT_FALSE(follower_.boxes().empty());
  EXPECT_GT(Drive(20), 0.0);
}

// The pose of the detour that lies farthest aside.
geometry_msgs::Point Corner(const nav_msgs::Path& detour) {
  return std::max_element(
             detour.poses.begin(), detour.poses.end(),
             [](const auto& a, const auto& b) { return std::abs(a.pose.position.y) < std::abs(b.pose.position.y); })
      ->pose.position;
}

class FollowerOnADetour : public FollowerAlone {
 protected:
  void SetUp() override {
    for (unsigned int my = 56; my < 66; ++my) {  // y from -0.2 m to 0.3 m: the shorter detour leads to the right
      for (unsigned int mx = 80; mx < 84; ++mx) {
        map_.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
      }
    }
    OneCycle(0.1);
    ASSERT_EQ(recorder_.detours.size(), 1u);
    corner_ = Corner(recorder_.detours[0].detour);
  }

  void SetCorner(unsigned char cost) {
    unsigned int mx = 0;
    unsigned int my = 0;
    ASSERT_TRUE(map_.worldToMap(corner_.x, corner_.y, mx, my));
    map_.setCost(mx, my, cost);
  }

  geometry_msgs::Point corner_;
};

TEST_F(FollowerOnADetour, ItIsDrivenOnWhenAFarPoseOfItIsBlockedForAScan) {
  for (int scan = 0; scan < 20; ++scan) {
    SetCorner(scan % 2 == 0 ? costmap_2d::LETHAL_OBSTACLE : costmap_2d::FREE_SPACE);
    EXPECT_GT(OneCycle(0.1).speed, 0.0) << scan;
  }
  EXPECT_STREQ(follower_.activity(), "detour");
  EXPECT_EQ(recorder_.detours.size(), 1u);
}

TEST_F(FollowerOnADetour, ItIsReplacedByOneOnTheSameSideWhenItStaysBlocked) {
  SetCorner(costmap_2d::LETHAL_OBSTACLE);
  for (int scan = 0; scan < 15; ++scan) {
    EXPECT_GT(OneCycle(0.1).speed, 0.0) << scan;  // without a stop
  }
  ASSERT_EQ(recorder_.detours.size(), 2u);
  EXPECT_LT(corner_.y, 0.0);
  EXPECT_LT(Corner(recorder_.detours[1].detour).y, 0.0);
  EXPECT_THAT(recorder_.Told("blocked"), testing::Contains("the detour is blocked as well: another one is needed"));
}

TEST_F(FollowerOnADetour, OneOnWhichItOnlyTurnsIsAnOutcomeUntilItDrivesOn) {
  const geometry_msgs::PoseStamped ahead = robot_;
  for (int cycle = 0; cycle < 60; ++cycle) {
    EXPECT_EQ(follower_.outcome().state, cycle < 55 ? DriveState::kDriving : DriveState::kBlocked) << cycle;
    robot_ = controller_base_test::Stamped({0.0, 0.0, cycle % 2 == 0 ? 2.8 : 3.4});  // it never faces the detour
    OneCycle(0.1);
  }
  EXPECT_EQ(follower_.outcome().reason, "the detour is too narrow to be driven here");
  EXPECT_FALSE(follower_.outcome().refusal);
  robot_ = ahead;
  CycleAfter(1.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
}

TEST_F(FollowerAlone, AStuckRobotIsGivenUpAfterTwentySeconds) {
  EXPECT_GT(CycleAfter(0.0).speed, 0.0);
  EXPECT_GT(CycleAfter(19.9).speed, 0.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  const Command command = CycleAfter(0.2);
  EXPECT_EQ(command.speed, 0.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("CheckBaseLine failed, baseline_pose:(0.00,0.00)"));
}

TEST_F(FollowerAlone, AClockThatJumpsIsNoStall) {
  CycleAfter(10.0);
  EXPECT_GT(OneCycle(3600.0).speed, 0.0);
  EXPECT_GT(OneCycle(-400.0).speed, 0.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  EXPECT_EQ(recorder_.events.back().kind, EventKind::kClock);
  CycleAfter(20.5);
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
}

TEST_F(FollowerAlone, AClockThatNeverGoesOnEndsTheDrive) {
  for (int cycle = 0; cycle < 700; ++cycle) {
    OneCycle(0.0);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kClockStopped);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kClock);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("the clock has stood still"));
}

TEST_F(FollowerAlone, OffItsLocalMapItWaitsSaysSoOnceAndDrivesOnWhenItIsFound) {
  const costmap_2d::Costmap2D whole = map_;
  CycleAfter(0.05);
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, 0.5, -1.0);  // the path leads over it
  EXPECT_EQ(CycleAfter(5.0).speed, 0.0);
  EXPECT_THAT(recorder_.Told("lost"), ElementsAre("the robot is not on its local map: waiting"));
  EXPECT_STREQ(follower_.activity(), "blocked");
  map_ = whole;
  EXPECT_GT(CycleAfter(0.05).speed, 0.0);
  EXPECT_EQ(recorder_.Told("free").size(), 1u);
  EXPECT_STREQ(follower_.activity(), "path");
}

TEST_F(FollowerAlone, OffItsLocalMapItIsGivenUpWithThatReason) {
  CycleAfter(0.05);
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, 0.5, -1.0);
  CycleAfter(20.5);
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_THAT(follower_.outcome().reason,
              StartsWith("the robot is not on its local map; stalled, less than 0.2 m in 20 s: "));
  EXPECT_EQ(follower_.outcome().summary, "the robot is not on its local map");
}

TEST_F(FollowerAlone, WithNoPathOnItsLocalMapItIsGivenUpWithThatReason) {
  CycleAfter(0.05);
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, -1.5, 0.1);
  robot_.pose.position.y = 0.2;
  EXPECT_EQ(CycleAfter(20.5).speed, 0.0);
  EXPECT_THAT(recorder_.Told("lost"), ElementsAre("the path ahead is not on the local map: waiting"));
  EXPECT_THAT(follower_.outcome().reason, StartsWith("the path ahead is not on the local map; stalled, "));
}

TEST_F(FollowerAlone, ADetourIsGivenUpWhenTheLocalMapShowsNothingOfIt) {
  const costmap_2d::Costmap2D whole = map_;
  for (unsigned int my = 58; my < 62; ++my) {
    map_.setCost(80, my, costmap_2d::LETHAL_OBSTACLE);  // 1 m ahead
  }
  CycleAfter(0.05);
  ASSERT_STREQ(follower_.activity(), "detour");
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, 30.0, 30.0);
  EXPECT_EQ(CycleAfter(1.0).speed, 0.0);
  EXPECT_EQ(recorder_.Told("lost").size(), 1u);
  EXPECT_EQ(follower_.detour(), nullptr);
  map_ = whole;
  EXPECT_GT(CycleAfter(0.05).speed, 0.0);
  EXPECT_STREQ(follower_.activity(), "path");
}

// Free cells begin 0.2 m and 0.5 m to the left.
TEST_F(FollowerAlone, AnObstacleIsLeftTowardsAFreePlaceNearByAndNotTowardsOneBehindIt) {
  for (const double depth : {0.2, 0.5}) {
    map_ = costmap_2d::Costmap2D(120, 120, 0.05, -3.0, -3.0);
    for (unsigned int my = 0; my < static_cast<unsigned int>(std::lround((3.0 + depth) / 0.05)); ++my) {
      for (unsigned int mx = 0; mx < 120; ++mx) {
        map_.setCost(mx, my, costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
      }
    }
    follower_.SetPath(path_);
    const Command command = CycleAfter(0.05);
    EXPECT_EQ(command.turn_rate > 0.0, depth < 0.4) << depth;  // the robot turns first
    EXPECT_EQ(command.speed, 0.0);
    EXPECT_EQ(recorder_.Told("refused").back(), "no detour: the robot stands too near to an obstacle");
  }
}

// A wider corridor does not help a robot that stands in an obstacle.
TEST_F(FollowerAlone, TheSearchAfterAnObstacleWasLeftBeginsWithTheNarrowestCorridor) {
  const costmap_2d::Costmap2D whole = map_;
  for (unsigned int my = 0; my < 120; ++my) {
    for (unsigned int mx = 0; mx < 120; ++mx) {
      map_.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
    }
  }
  CycleAfter(5.0);
  EXPECT_EQ(recorder_.Told("refused").size(), 5u);  // one a second
  map_ = whole;
  map_.setCost(80, 60, costmap_2d::LETHAL_OBSTACLE);
  CycleAfter(1.1);
  EXPECT_THAT(recorder_.Told("corridor").back(), HasSubstr("(0.60 m)"));
}

TEST_F(FollowerAlone, AContactMakesItBackOff) {
  CycleAfter(0.05);
  Touch(1);
  CycleAfter(0.05);
  const Command command = CycleAfter(0.1);
  EXPECT_LT(command.speed, 0.0);
  EXPECT_STREQ(follower_.activity(), "back-off");
}

// A stall soon after a contact names the contact as its cause; a stall long after one does not.
TEST_F(FollowerAlone, AFreshContactExplainsAStall) {
  CycleAfter(1.0);
  Touch(1);
  CycleAfter(0.05);
  CycleAfter(19.5);
  ASSERT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_THAT(follower_.outcome().reason, testing::StartsWith("something touched "));
  EXPECT_THAT(follower_.outcome().reason, HasSubstr(" s before; stalled, less than 0.2 m in 20 s: "));
  EXPECT_THAT(follower_.outcome().summary, testing::EndsWith(" s before"));
}

TEST_F(FollowerAlone, AnOldContactExplainsNothing) {
  Touch(1);
  CycleAfter(0.05);
  CycleAfter(10.0);
  robot_.pose.position.x = 0.25;
  CycleAfter(20.5);
  ASSERT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_THAT(follower_.outcome().reason, testing::StartsWith("stalled"));
  EXPECT_EQ(follower_.outcome().summary, "stalled, less than 0.2 m in 20 s");
}

// The path's first pose lies behind the robot, as far away as the shortest look-ahead: it is not taken as a target.
TEST_F(FollowerAlone, ItNeverTurnsBackToThePoseThatItHasPassed) {
  for (unsigned int mx = 0; mx < 120; ++mx) {
    map_.setCost(mx, 56, costmap_2d::LETHAL_OBSTACLE);  // to both sides,
    map_.setCost(mx, 64, costmap_2d::LETHAL_OBSTACLE);
  }
  for (const double x : {0.051, 0.074, 0.099, 0.123}) {
    robot_.pose.position.x = x;
    EXPECT_GT(CycleAfter(0.05).speed, 0.0) << x;
  }
}

TEST_F(FollowerAlone, AStaleContactIsNoReason) {
  CycleAfter(0.05);
  Touch(1);
  EXPECT_GT(CycleAfter(0.25).speed, 0.0);
}

TEST_F(FollowerAlone, TheTenthContactEndsTheDrive) {
  for (int contact = 1; contact <= 10; ++contact) {
    EXPECT_EQ(follower_.outcome().state, DriveState::kDriving) << contact;
    Touch(2);
    CycleAfter(0.05);
    CycleAfter(0.3);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kAborted);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kContact);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("10 contacts"));
  EXPECT_EQ(CycleAfter(0.05).speed, 0.0);
}

TEST_F(FollowerAlone, ANewPathStartsOver) {
  Touch(2);
  CycleAfter(0.05);
  CycleAfter(25.0);
  ASSERT_TRUE(IsOver(follower_.outcome().state));
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.poses.resize(2, robot_);
  path.poses.back().pose.position.y = 1.0;
  follower_.SetPath(path);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  EXPECT_TRUE(follower_.outcome().reason.empty());
  EXPECT_GT(CycleAfter(0.05).turn_rate, 0.0);
}

TEST_F(FollowerAlone, BadParametersAreRefusedByName) {
  Parameters parameters;
  parameters.lookahead = 0.0;
  try {
    const PathFollower follower(&recorder_, parameters);
    FAIL() << "it took them";
  } catch (const std::invalid_argument& error) {
    EXPECT_THAT(error.what(), StartsWith("lookahead is 0 m"));
  }
}

TEST_F(FollowerAlone, AParameterThatIsChangedCountsFromTheNextCycleOn) {
  Drive(40);
  ASSERT_EQ(OneCycle(0.05).speed, Parameters().cruise_speed);
  Parameters slow;
  slow.cruise_speed = 0.2;
  follower_.SetParameters(slow);
  EXPECT_NEAR(OneCycle(0.05).speed, 0.40, 1e-9);  // it brakes within its acceleration
  CycleAfter(0.3);
  EXPECT_EQ(OneCycle(0.05).speed, 0.2);
}

TEST_F(FollowerAlone, ParametersThatAreRefusedChangeNothing) {
  Drive(40);
  Parameters bad;
  bad.cruise_speed = 0.2;
  bad.braking = 2.0;
  EXPECT_THROW(follower_.SetParameters(bad), std::invalid_argument);
  EXPECT_EQ(OneCycle(0.05).speed, Parameters().cruise_speed);
}

TEST_F(FollowerAlone, WithoutAPathItStandsAndHasNothingToCancel) {
  PathFollower follower(nullptr);
  EXPECT_EQ(follower.outcome().state, DriveState::kIdle);
  EXPECT_EQ(follower.Cycle(robot_, ToLocalMapData(map_).View()).speed, 0.0);
  follower.Cancel();
  EXPECT_EQ(follower.outcome().state, DriveState::kIdle);
  EXPECT_THROW(follower.SetPath(nav_msgs::Path()), std::invalid_argument);
}

TEST_F(FollowerAlone, ACancelledDriveIsOverAndItsCauseSaysSo) {
  EXPECT_GT(CycleAfter(0.05).speed, 0.0);
  follower_.Cancel();
  EXPECT_EQ(follower_.outcome().state, DriveState::kCancelled);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kCancelled);
  EXPECT_THAT(recorder_.Told("stop"), ElementsAre("cancelled"));
  EXPECT_EQ(CycleAfter(0.05).speed, 0.0);
  follower_.Cancel();
  EXPECT_EQ(recorder_.Told("stop").size(), 1u);
  follower_.SetPath(path_);
  EXPECT_GT(CycleAfter(0.05).speed, 0.0);
}

TEST_F(FollowerAlone, APathOfOnePoseIsDrivenTo) {
  nav_msgs::Path path = path_;
  path.poses.erase(path.poses.begin());
  follower_.SetPath(path);
  EXPECT_GT(CycleAfter(0.05).speed, 0.0);
  robot_.pose.position.x = 1.98;
  CycleAfter(0.0);
  for (double x = 0.25; x <= 2.0; x += 0.25) {
    robot_.pose.position.x = x;
    CycleAfter(0.5);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kArrived);
}

TEST_F(FollowerAlone, ABlockedPathIsAnOutcomeWithItsRefusalAndItsBeginning) {
  CycleAfter(0.05);
  EXPECT_EQ(follower_.outcome().since, ros::Time(500.0));
  const costmap_2d::Costmap2D free = map_;
  for (unsigned int my = 0; my < 120; ++my) {
    map_.setCost(80, my, costmap_2d::LETHAL_OBSTACLE);  // a wall 1 m ahead
  }
  CycleAfter(0.05);
  const ros::Time since = ros::Time::now();
  EXPECT_EQ(follower_.outcome().state, DriveState::kBlocked);
  EXPECT_EQ(follower_.outcome().refusal, Refusal::kNoPath);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kNone);
  CycleAfter(3.0);
  EXPECT_EQ(follower_.outcome().since, since);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("no way around"));
  map_ = free;
  CycleAfter(0.05);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  EXPECT_FALSE(follower_.outcome().refusal);
  EXPECT_EQ(follower_.outcome().since, ros::Time::now());
}

TEST_F(FollowerAlone, TheCauseOfAStallIsWhatHinderedTheRobot) {
  CycleAfter(0.05);
  const costmap_2d::Costmap2D free = map_;
  for (unsigned int my = 0; my < 120; ++my) {
    map_.setCost(80, my, costmap_2d::LETHAL_OBSTACLE);
  }
  CycleAfter(25.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kStalled);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kRefused);
  EXPECT_EQ(follower_.outcome().refusal, Refusal::kNoPath);
  map_ = free;
  follower_.SetPath(path_);
  CycleAfter(25.0);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kStall);
  follower_.SetPath(path_);
  CycleAfter(1.0);
  Touch(1);
  CycleAfter(0.05);
  CycleAfter(19.5);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kContact);
  follower_.SetPath(path_);
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, 0.5, -1.0);
  CycleAfter(25.0);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kLost);
}

TEST_F(FollowerAlone, WhoIsLostIsLostUntilHeIsFound) {
  const costmap_2d::Costmap2D whole = map_;
  CycleAfter(0.05);
  map_ = costmap_2d::Costmap2D(40, 40, 0.05, 0.5, -1.0);
  CycleAfter(0.05);
  const ros::Time since = ros::Time::now();
  CycleAfter(3.0);
  EXPECT_EQ(follower_.outcome().state, DriveState::kLost);
  EXPECT_EQ(follower_.outcome().since, since);
  EXPECT_EQ(follower_.outcome().reason, "the robot is not on its local map");
  EXPECT_FALSE(follower_.outcome().refusal);
  map_ = whole;
  CycleAfter(0.05);
  EXPECT_EQ(follower_.outcome().state, DriveState::kDriving);
  EXPECT_TRUE(follower_.outcome().reason.empty());
}

// Back and forth, without progress.
TEST_F(FollowerAlone, ThreeTimesThePathsLengthIsOverItsBudget) {
  for (int step = 1; step <= 40 && !IsOver(follower_.outcome().state); ++step) {
    robot_.pose.position.x = step % 2 == 0 ? 0.0 : 0.25;
    CycleAfter(0.5);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kOverBudget);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kBudget);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("three times its length driven"));
  EXPECT_GE(follower_.progress().distance_ratio, 3.0);
}

TEST_F(FollowerAlone, ThreeTimesThePathsTimeIsOverItsBudget) {
  for (int step = 1; step <= 200 && !IsOver(follower_.outcome().state); ++step) {
    robot_.pose.position.x = step % 20 == 0 ? 0.0 : 0.25;
    CycleAfter(0.5);
  }
  EXPECT_EQ(follower_.outcome().state, DriveState::kOverBudget);
  EXPECT_THAT(follower_.outcome().reason, HasSubstr("three times its time"));
}

TEST_F(FollowerAlone, AtThePathsEndTheDriveIsOverAndTheGoalReached) {
  Drive(400);
  EXPECT_EQ(follower_.outcome().state, DriveState::kReached);
  EXPECT_EQ(follower_.outcome().cause, StopCause::kArrived);
  EXPECT_EQ(follower_.outcome().since, ros::Time::now());
}

}  // namespace
}  // namespace controller_base::follower
