#include "follower/detour_search.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "follower/path_geometry.h"
#include "test/follower/occupy.h"
#include "test/follower/recorder.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PathOf;
using controller_base_test::PointAt;
using controller_base_test::PoseAt;
using controller_base_test::SetNow;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A robot at (1, 2) on a path along y = 2 m to (5, 2), on a free map of 6 m x 4 m with cells of 0.05 m.
class DetourSearchTest : public testing::Test {
 protected:
  void SetUp() override {
    SetNow(ros::Time(500.0));
    search_.Reset(PointAt(5.0, 2.0));
  }

  void Occupy(double from_x, double to_x, double from_y, double to_y,
              unsigned char cost = costmap_2d::LETHAL_OBSTACLE) {
    controller_base_test::Occupy({from_x, to_x, from_y, to_y}, &map_, cost);
  }

  Situation Now() { return {robot_, ToPose2d(robot_.pose), {map_, planner_.GetLocalMapObstacle()}, ahead_, lead_in_}; }

  std::optional<DetourReport> Search() { return search_.Search(Now()); }

  // What the robot waits for.
  std::string Waiting() const { return search_.hindrance() ? search_.hindrance()->text : ""; }

  // The width of the corridor of the next searches, each of which is refused.
  std::string WidthOfNextRefusal() {
    EXPECT_FALSE(Search());
    return Waiting();
  }

  controller_base_test::Recorder recorder_;
  Reporter reporter_{&recorder_};
  Parameters parameters_;
  nav_controller::LocalPlanner planner_{false};
  ContactRecovery recovery_{parameters_, reporter_, &planner_};
  DetourSearch search_{parameters_, reporter_, &planner_, &recovery_};
  costmap_2d::Costmap2D map_{120, 80, 0.05, 0.0, 0.0};
  geometry_msgs::PoseStamped robot_ = PoseAt(1.0, 2.0);
  nav_msgs::Path ahead_ = PathFromRobot(robot_, PathOf({{1.0, 2.0}, {5.0, 2.0}}));
  std::size_t lead_in_ = 1;
};

TEST_F(DetourSearchTest, ABoxOnThePathIsBypassedInTheNarrowestCorridor) {
  Occupy(2.35, 3.15, 1.65, 2.35, 100);
  Occupy(2.5, 3.0, 1.8, 2.2);
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_TRUE(detour->smoothed);
  EXPECT_FALSE(detour->goal_repaired);
  EXPECT_NEAR(PathLength(detour->blocked), 0.5, 0.06);
  EXPECT_NEAR(detour->detour.poses.back().pose.position.x, 5.0, 0.05);
  EXPECT_THAT(recorder_.Told("corridor"), ElementsAre("12 cells (0.60 m) to each side of the path"));
  EXPECT_FALSE(search_.hindrance());
  ASSERT_NE(search_.blockage(), nullptr);
  EXPECT_GT(search_.blockage()->left.y, 2.1);
  EXPECT_LT(search_.blockage()->right.y, 1.9);
}

TEST_F(DetourSearchTest, WhatBlocksIsTold) {
  Occupy(2.5, 3.0, 1.9, 2.1);
  Search();
  EXPECT_THAT(recorder_.Told("blocked").back(), HasSubstr("by an obstacle beside it, a side is open"));
  map_.SetLaserObstacle(50, 40, true);
  Search();
  EXPECT_THAT(recorder_.Told("blocked").back(), HasSubstr("by a laser obstacle, a side is open"));
  Occupy(2.5, 3.0, 1.7, 2.3);
  Search();
  EXPECT_THAT(recorder_.Told("blocked").back(), HasSubstr("closed on both sides (bilateral)"));
  planner_.CreateBoxObstacle(PointAt(1.6, 2.0), 0.0);
  Search();
  EXPECT_THAT(recorder_.Told("blocked").back(), HasSubstr("by virtual boxes"));
}

TEST_F(DetourSearchTest, WhereBothSidesAreClosedItBeginsWithAWiderCorridor) {
  Occupy(2.5, 3.0, 1.5, 2.5);
  ASSERT_TRUE(Search());
  EXPECT_THAT(recorder_.Told("corridor").back(), HasSubstr("(1.00 m)"));
}

TEST_F(DetourSearchTest, EachRefusalWidensTheCorridorUntilTheWidest) {
  Occupy(2.5, 3.0, 0.0, 4.0);
  EXPECT_EQ(WidthOfNextRefusal(), "no detour: no way around within 1.00 m of the path");  // it is bilateral
  EXPECT_EQ(WidthOfNextRefusal(), "no detour: no way around within 1.50 m of the path");
  EXPECT_EQ(WidthOfNextRefusal(), "no detour: no way around within 1.50 m of the path");
  EXPECT_EQ(recorder_.Told("blocked").size(), 1u);  // then the robot waits
  EXPECT_EQ(recorder_.Told("refused").size(), 3u);
}

TEST_F(DetourSearchTest, OnceThePathIsFreeTheNextSearchBeginsNarrowAgain) {
  Occupy(2.5, 3.0, 0.0, 4.0);
  WidthOfNextRefusal();
  WidthOfNextRefusal();
  search_.PathIsFree({});
  EXPECT_THAT(recorder_.Told("free"), ElementsAre("the path is free again"));
  EXPECT_FALSE(search_.hindrance());
  EXPECT_EQ(search_.blockage(), nullptr);
  search_.PathIsFree({});
  EXPECT_EQ(recorder_.Told("free").size(), 1u);
  EXPECT_EQ(WidthOfNextRefusal(), "no detour: no way around within 1.00 m of the path");
}

TEST_F(DetourSearchTest, ThereIsAPauseBetweenTwoSearches) {
  EXPECT_TRUE(search_.IsDue());
  Occupy(2.5, 3.0, 0.0, 4.0);
  Search();
  EXPECT_FALSE(search_.IsDue());
  SetNow(ros::Time(500.99));
  EXPECT_FALSE(search_.IsDue());
  SetNow(ros::Time(501.0));
  EXPECT_TRUE(search_.IsDue());
  Search();
  search_.SearchAtOnce();
  EXPECT_TRUE(search_.IsDue());
}

TEST_F(DetourSearchTest, ARobotInAnObstacleHasToLeaveItFirstWhichNoWiderCorridorHelps) {
  Occupy(0.0, 6.0, 0.0, 4.0);
  for (int attempt = 0; attempt < 4; ++attempt) {
    EXPECT_EQ(WidthOfNextRefusal(), "no detour: the robot stands too near to an obstacle");
  }
  map_ = costmap_2d::Costmap2D(120, 80, 0.05, 0.0, 0.0);
  Occupy(2.5, 3.0, 1.8, 2.2);
  ASSERT_TRUE(Search());
  EXPECT_THAT(recorder_.Told("corridor").back(), HasSubstr("(0.60 m)"));
}

TEST_F(DetourSearchTest, AnOccupiedGoalIsRepairedOrNamed) {
  Occupy(4.5, 5.5, 1.8, 2.2);
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_TRUE(detour->goal_repaired);
  EXPECT_LT(detour->detour.poses.back().pose.position.x, 4.5);
  Occupy(2.0, 5.5, 1.8, 2.2);  // the last free place is within 30 cells
  EXPECT_EQ(WidthOfNextRefusal(), "no detour: the goal is occupied, and the free place before it is within 30 cells");
}

TEST_F(DetourSearchTest, AnEndInABoxIsCutOffBecauseThePlannerDoesNotRepairIt) {
  Occupy(2.5, 3.0, 1.8, 2.2);
  planner_.CreateBoxObstacle(PointAt(5.0, 2.0), 0.0);
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_NEAR(detour->path.poses.back().pose.position.x, 4.9, 0.06);
  EXPECT_FALSE(detour->goal_repaired);
}

TEST_F(DetourSearchTest, AnOccupiedEndIsCutOffFromTheSecondAttemptOn) {
  Occupy(2.5, 2.6, 0.0, 4.0);
  Occupy(4.5, 5.5, 1.8, 2.2);
  WidthOfNextRefusal();
  EXPECT_EQ(Waiting(), "no detour: no way around within 1.00 m of the path");
  map_ = costmap_2d::Costmap2D(120, 80, 0.05, 0.0, 0.0);
  Occupy(2.5, 2.6, 1.8, 2.2);
  Occupy(4.5, 5.5, 1.8, 2.2);
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_LT(detour->path.poses.back().pose.position.x, 4.55);
  EXPECT_FALSE(detour->goal_repaired);
}

TEST_F(DetourSearchTest, TheWayToThePathIsNoPlaceToRejoin) {
  robot_ = PoseAt(1.0, 1.5);
  ahead_ = PathFromRobot(robot_, PathOf({{1.0, 2.0}, {5.0, 2.0}}));
  lead_in_ = ahead_.poses.size() - PathFromRobot(PoseAt(1.0, 2.0), PathOf({{1.0, 2.0}, {5.0, 2.0}})).poses.size() + 1;
  Occupy(2.5, 3.0, 1.8, 2.2);
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_NEAR(detour->path.poses.front().pose.position.y, 2.0, 1e-9);
}

// A smoothed detour may take a line that the planner's smoother finds free because only lethal cells lie on it.
TEST_F(DetourSearchTest, AShortcutThroughALethalCellIsGivenUpForTheSearchedWay) {
  parameters_.planning_clearance = 0.001;
  Occupy(2.5, 3.0, 1.6, 2.4);  // no ring of costs around it
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_FALSE(detour->smoothed);
  const PlannerView view(map_, planner_.GetLocalMapObstacle());
  EXPECT_TRUE(view.BlockedRun(detour->detour).poses.empty());
}

TEST_F(DetourSearchTest, BoxesThatCloseTheLastWayAreForgotten) {
  Occupy(2.5, 3.0, 0.0, 4.0);
  nav_controller::CollisionEvent contact;
  contact.collided = true;
  contact.stamp = ros::Time::now();
  contact.type = 3;
  recovery_.AddContact(contact);
  recovery_.React({1.0, 2.0, 0.0}, 0.0);
  const PlannerView view(map_, planner_.GetLocalMapObstacle());
  recovery_.Recover(view, {0.79, 2.0, 0.0});
  recovery_.Recover(view, {0.79, 2.0, kPi / 6});
  ASSERT_FALSE(recovery_.boxes().empty());
  robot_ = PoseAt(0.79, 2.0);
  ahead_ = PathFromRobot(robot_, PathOf({{1.0, 2.0}, {5.0, 2.0}}));
  for (int attempt = 0; attempt < 2; ++attempt) {
    WidthOfNextRefusal();
    EXPECT_FALSE(recovery_.boxes().empty()) << attempt;
  }
  const std::size_t wall = recovery_.boxes().size();
  WidthOfNextRefusal();
  EXPECT_LT(recovery_.boxes().size(), wall);
  EXPECT_EQ(recorder_.Told("forget").size(), 1u);
  SetNow(ros::Time::now() + ros::Duration(parameters_.forget_pause));
  WidthOfNextRefusal();
  EXPECT_THAT(recovery_.boxes(), IsEmpty());
  EXPECT_EQ(recorder_.Told("forget").size(), 2u);
}

double HighestY(const nav_msgs::Path& path) {
  double highest = -1e9;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    highest = std::max(highest, pose.pose.position.y);
  }
  return highest;
}

TEST_F(DetourSearchTest, ANewDetourKeepsTheSideOfTheOldOne) {
  Occupy(2.5, 3.0, 1.7, 2.2);  // the shorter detour leads to the left of it
  const std::optional<DetourReport> any_side = Search();
  ASSERT_TRUE(any_side);
  EXPECT_GT(HighestY(any_side->detour), 2.2);
  search_.KeepSide(PathOf({{1.0, 2.0}, {2.3, 1.5}, {3.2, 1.5}, {4.0, 2.0}}));
  const std::optional<DetourReport> same_side = Search();
  ASSERT_TRUE(same_side);
  EXPECT_LT(HighestY(same_side->detour), 2.2);
}

TEST_F(DetourSearchTest, WhereItsSideIsClosedItTakesAnother) {
  Occupy(2.5, 3.0, 0.0, 2.2);
  search_.KeepSide(PathOf({{1.0, 2.0}, {2.3, 1.5}, {3.2, 1.5}, {4.0, 2.0}}));
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  EXPECT_GT(HighestY(detour->detour), 2.2);
}

TEST_F(DetourSearchTest, ItPlansWithMoreRoomThanItInsistsOnWhereThereIs) {
  Occupy(2.5, 3.0, 1.5, 2.5);
  const PlannerView view(map_, planner_.GetLocalMapObstacle());
  const std::optional<DetourReport> detour = Search();
  ASSERT_TRUE(detour);
  for (const geometry_msgs::PoseStamped& pose : detour->detour.poses) {
    EXPECT_FALSE(view.IsWithinMargin(pose.pose.position, 0.1));
  }
  Occupy(2.5, 3.0, 0.0, 4.0);
  Occupy(2.4, 3.1, 2.5, 2.6, costmap_2d::FREE_SPACE);  // two cells wide
  EXPECT_TRUE(Search());
}

TEST_F(DetourSearchTest, ALostRobotIsToldOncePerReason) {
  search_.Lost({}, "the robot is not on its local map");
  search_.Lost({}, "the robot is not on its local map");
  search_.Lost({}, "the path ahead is not on the local map");
  EXPECT_THAT(recorder_.Told("lost"), ElementsAre("the robot is not on its local map: waiting",
                                                  "the path ahead is not on the local map: waiting"));
  EXPECT_EQ(Waiting(), "the path ahead is not on the local map");
  search_.PathIsFree({});
  EXPECT_EQ(recorder_.Told("free").size(), 1u);
}

TEST_F(DetourSearchTest, ADetourThatIsTooNarrowIsWaitedForUntilItIsDriven) {
  search_.DetourIsTooNarrow({});
  search_.DetourIsTooNarrow({});
  EXPECT_THAT(recorder_.Told("blocked"), ElementsAre("the detour is too narrow to be driven here"));
  ASSERT_TRUE(search_.hindrance());
  EXPECT_EQ(search_.hindrance()->state, DriveState::kBlocked);
  EXPECT_FALSE(search_.hindrance()->refusal);
  search_.DetourIsDriven();
  EXPECT_FALSE(search_.hindrance());
}

TEST_F(DetourSearchTest, ADetourThatIsDrivenLeavesOtherHindrancesAsTheyAre) {
  Occupy(2.5, 3.0, 0.0, 4.0);
  Search();
  search_.DetourIsTooNarrow({});
  search_.DetourIsDriven();
  ASSERT_TRUE(search_.hindrance());
  EXPECT_EQ(search_.hindrance()->refusal, Refusal::kNoPath);
}

TEST_F(DetourSearchTest, TheWidthsAreParameters) {
  parameters_.corridor_widths = {0.8};
  Occupy(2.5, 3.0, 1.5, 2.5);
  ASSERT_TRUE(Search());
  EXPECT_THAT(recorder_.Told("corridor").back(), HasSubstr("(0.80 m)"));
}

TEST_F(DetourSearchTest, WhatItWaitsForHasACauseAndABeginning) {
  Occupy(2.5, 3.0, 0.0, 4.0);
  Search();
  SetNow(ros::Time(507.0));
  Search();
  ASSERT_TRUE(search_.hindrance());
  EXPECT_EQ(search_.hindrance()->state, DriveState::kBlocked);
  EXPECT_EQ(search_.hindrance()->refusal, Refusal::kNoPath);
  EXPECT_EQ(search_.hindrance()->since, ros::Time(500.0));
  search_.Lost({}, "the robot is not on its local map");
  EXPECT_EQ(search_.hindrance()->state, DriveState::kLost);
  EXPECT_EQ(search_.hindrance()->since, ros::Time(507.0));
  EXPECT_FALSE(search_.hindrance()->refusal);
}

}  // namespace
}  // namespace controller_base::follower
