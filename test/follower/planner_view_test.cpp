#include "follower/planner_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test/support/maps.h"
#include "test/support/paths.h"

namespace controller_base::follower {
namespace {

using controller_base_test::MapFromText;
using controller_base_test::PathOf;
using controller_base_test::PointAt;
using costmap_2d::Costmap2D;

constexpr char kFreeRow[] = "..........";

class PlannerViewTest : public testing::Test {
 protected:
  // Cells of 0.1 m; the top line is the highest y.
  void SetMap(const std::vector<std::string>& rows) { map_ = MapFromText(rows, 0.1); }
  PlannerView View() const { return {map_, boxes_}; }

  Costmap2D map_{10, 10, 0.1, 0.0, 0.0};
  nav_controller::LocalMapObstacle boxes_;
};

TEST_F(PlannerViewTest, ACellIsBlockedByTheMapOrByABoxAroundItsCentre) {
  SetMap({"..#i?h"});
  boxes_.CreateNewBox(PointAt(0.15, 0.05), 0.0);  // 0.2 m x 0.1 m: covers the centres of the two left cells
  EXPECT_TRUE(View().IsBlocked(PointAt(0.01, 0.05)));
  EXPECT_TRUE(View().IsBlocked(PointAt(0.15, 0.05)));
  EXPECT_TRUE(View().IsBlocked(PointAt(0.25, 0.05)));
  EXPECT_TRUE(View().IsBlocked(PointAt(0.35, 0.05)));
  EXPECT_FALSE(View().IsBlocked(PointAt(0.45, 0.05)));  // unknown
  EXPECT_FALSE(View().IsBlocked(PointAt(0.55, 0.05)));
  EXPECT_FALSE(View().IsBlocked(PointAt(-0.05, 0.05)));  // off the map
}

TEST_F(PlannerViewTest, APointIsInABoxByItself) {
  boxes_.CreateNewBox(PointAt(0.5, 0.5), 0.0);
  EXPECT_TRUE(View().IsInBox(PointAt(0.59, 0.54)));
  EXPECT_FALSE(View().IsInBox(PointAt(0.61, 0.5)));
}

TEST_F(PlannerViewTest, ALineIsBlockedByCellsAndByBoxesOnItsWay) {
  SetMap({kFreeRow, "....#.....", kFreeRow});
  EXPECT_TRUE(View().IsLineBlocked(PointAt(0.05, 0.15), PointAt(0.95, 0.15)));
  EXPECT_FALSE(View().IsLineBlocked(PointAt(0.05, 0.25), PointAt(0.95, 0.25)));
  EXPECT_FALSE(View().IsLineBlocked(PointAt(0.55, 0.15), PointAt(0.55, 0.15)));
  boxes_.CreateNewBox(PointAt(0.45, 0.25), 0.0);
  EXPECT_TRUE(View().IsLineBlocked(PointAt(0.05, 0.25), PointAt(0.95, 0.25)));
}

// From (0.05, 0.01) to (0.95, 0.19) the line passes the upper left corner of the lethal cell, which spans 0.4 to 0.5.
TEST_F(PlannerViewTest, ACornerIsCutByALineHoweverLittleOfItLiesInTheCell) {
  SetMap({kFreeRow, ".....#...."});
  EXPECT_TRUE(View().CutsCorner(PointAt(0.41, 0.15), PointAt(0.51, 0.09)));
  EXPECT_FALSE(View().CutsCorner(PointAt(0.41, 0.15), PointAt(0.51, 0.11)));
  EXPECT_TRUE(View().CutsCorner(PointAt(0.55, 0.05), PointAt(0.55, 0.05)));  // it stands in the cell
  EXPECT_FALSE(View().CutsCorner(PointAt(-1.0, 0.15), PointAt(2.0, 0.15)));  // beyond the map nothing is lethal
}

TEST_F(PlannerViewTest, ALinePassesCloseToACellWithinItsClearance) {
  SetMap({kFreeRow, ".....#...."});  // the cell's upper edge is y = 0.1
  const geometry_msgs::Point from = PointAt(0.05, 0.115);
  const geometry_msgs::Point to = PointAt(0.95, 0.115);
  EXPECT_TRUE(View().PassesClose(from, to, 0.02));
  EXPECT_TRUE(View().PassesClose(to, from, 0.02));  // the line passes on the other side of the edge
  EXPECT_FALSE(View().PassesClose(from, to, 0.01));
}

TEST_F(PlannerViewTest, AMarginReachesToTheEdgeOfALethalCell) {
  SetMap({kFreeRow, ".....#....", kFreeRow});  // the cell spans 0.5 to 0.6 and 0.1 to 0.2
  EXPECT_TRUE(View().IsWithinMargin(PointAt(0.55, 0.15), 0.0001));
  EXPECT_TRUE(View().IsWithinMargin(PointAt(0.46, 0.15), 0.05));
  EXPECT_FALSE(View().IsWithinMargin(PointAt(0.46, 0.15), 0.03));
  EXPECT_TRUE(View().IsWithinMargin(PointAt(0.47, 0.07), 0.05));  // 0.042 m from its corner
  EXPECT_FALSE(View().IsWithinMargin(PointAt(0.47, 0.07), 0.04));
  EXPECT_FALSE(View().IsWithinMargin(PointAt(-0.01, 0.15), 0.05));  // beyond the map nothing is lethal
}

nav_msgs::Path AlongRow(int first, int last) {
  nav_msgs::Path path = PathOf({});
  for (int mx = first; mx <= last; ++mx) {
    path.poses.push_back(controller_base_test::PoseAt(0.05 + 0.1 * mx, 0.05));
  }
  return path;
}

TEST_F(PlannerViewTest, TheBlockedRunIsTheFirstOneOfMapAndBoxes) {
  SetMap({"......##.#"});
  const nav_msgs::Path path = AlongRow(0, 9);
  ASSERT_EQ(View().BlockedRun(path).poses.size(), 2u);
  EXPECT_DOUBLE_EQ(View().BlockedRun(path).poses.front().pose.position.x, 0.65);
  boxes_.CreateNewBox(PointAt(0.3, 0.05), 0.0);  // cells 2 and 3
  ASSERT_EQ(View().BlockedRun(path).poses.size(), 2u);
  EXPECT_DOUBLE_EQ(View().BlockedRun(path).poses.front().pose.position.x, 0.25);
  EXPECT_EQ(View().BlockedRun(path).header.frame_id, "map");
}

TEST_F(PlannerViewTest, ABoxBehindTheMapsObstacleDoesNotReplaceIt) {
  SetMap({"..##......"});
  boxes_.CreateNewBox(PointAt(0.7, 0.05), 0.0);
  EXPECT_DOUBLE_EQ(View().BlockedRun(AlongRow(0, 9)).poses.front().pose.position.x, 0.25);
  EXPECT_TRUE(View().BlockedRun(AlongRow(0, 1)).poses.empty());
  EXPECT_TRUE(View().BlockedRun({}).poses.empty());
}

TEST_F(PlannerViewTest, AShortBlockedBeginningDoesNotCount) {
  SetMap({"#........."});
  EXPECT_EQ(View().WithoutBlockedStart(AlongRow(0, 9)).poses.size(), 9u);
  SetMap({"##........"});
  EXPECT_EQ(View().WithoutBlockedStart(AlongRow(0, 9)).poses.size(), 10u);  // 0.2 m to the first free pose
  SetMap({"##########"});
  EXPECT_EQ(View().WithoutBlockedStart(AlongRow(0, 9)).poses.size(), 10u);
}

TEST_F(PlannerViewTest, TheNearestFreeCellLiesWithinReachAndOutOfBoxes) {
  SetMap({"####......"});
  const Pose2d robot{0.05, 0.05, 0.0};
  EXPECT_FALSE(View().NearestFreeCell(robot, 0.4));
  ASSERT_TRUE(View().NearestFreeCell(robot, 0.41));
  EXPECT_DOUBLE_EQ(View().NearestFreeCell(robot, 0.41)->x, 0.45);
  boxes_.CreateNewBox(PointAt(0.45, 0.05), 0.0);
  EXPECT_DOUBLE_EQ(View().NearestFreeCell(robot, 5.0)->x, 0.65);
}

TEST_F(PlannerViewTest, TheFreeNeighbourNearestToAPlace) {
  SetMap({"...",  //
          "..#",  //
          "..."});
  const Pose2d robot{0.15, 0.15, 0.0};
  const auto neighbour = View().FreeNeighbour(robot, PointAt(0.5, 0.16));  // to the right is a wall
  ASSERT_TRUE(neighbour);
  EXPECT_DOUBLE_EQ(neighbour->x, 0.15);
  EXPECT_DOUBLE_EQ(neighbour->y, 0.25);
  SetMap({"###", "#.#", "###"});
  EXPECT_FALSE(View().FreeNeighbour(robot, PointAt(0.5, 0.16)));
  SetMap({"."});
  EXPECT_FALSE(View().FreeNeighbour({0.05, 0.05, 0.0}, PointAt(0.5, 0.05)));  // nothing beside it on the map
}

}  // namespace
}  // namespace controller_base::follower
