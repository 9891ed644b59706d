#include "demo/messages/conversions.h"

#include <gtest/gtest.h>

#include <cmath>

#include "costmap_2d/cost_values.h"
#include "follower/geometry.h"

namespace controller_base::demo {
namespace {

nav_msgs::Path PathOf(const std::vector<std::pair<double, double>>& places) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (const auto& [x, y] : places) {
    path.poses.emplace_back();
    path.poses.back().pose.position.x = x;
    path.poses.back().pose.position.y = y;
  }
  return path;
}

double YawOf(const geometry_msgs::PoseStamped& pose) {
  return 2.0 * std::atan2(pose.pose.orientation.z, pose.pose.orientation.w);
}

TEST(CostGrid, KeepsPlacesAndTranslatesCosts) {
  costmap_2d::Costmap2D map(4, 3, 0.05, 1.0, -2.0);
  map.setCost(1, 0, 1);
  map.setCost(2, 0, 127);
  map.setCost(3, 0, costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  map.setCost(0, 2, costmap_2d::LETHAL_OBSTACLE);
  map.setCost(3, 2, costmap_2d::NO_INFORMATION);
  const nav_msgs::OccupancyGrid grid = CostGrid(map, ros::Time(7.0));
  EXPECT_EQ(grid.header.frame_id, "map");
  EXPECT_EQ(grid.header.stamp, ros::Time(7.0));
  EXPECT_EQ(grid.info.width, 4u);
  EXPECT_EQ(grid.info.height, 3u);
  EXPECT_FLOAT_EQ(grid.info.resolution, 0.05F);
  EXPECT_EQ(grid.info.origin.position.x, 1.0);
  EXPECT_EQ(grid.info.origin.position.y, -2.0);
  EXPECT_EQ(grid.info.origin.orientation.w, 1.0);
  EXPECT_EQ(grid.data, (std::vector<std::int8_t>{0, 1, 98, 99, 0, 0, 0, 0, 100, 0, 0, -1}));
}

TEST(CostGrid, GrowsWithTheCost) {
  costmap_2d::Costmap2D map(127, 1, 0.05, 0.0, 0.0);
  for (unsigned int mx = 0; mx < 127; ++mx) {
    map.setCost(mx, 0, static_cast<unsigned char>(mx + 1));
  }
  const nav_msgs::OccupancyGrid grid = CostGrid(map, ros::Time(7.0));
  EXPECT_TRUE(std::is_sorted(grid.data.begin(), grid.data.end()));
  EXPECT_EQ(grid.data.front(), 1);
  EXPECT_EQ(grid.data.back(), 98);
}

TEST(CorridorCells, AreTheCentresOfTheFreeCells) {
  nav_msgs::OccupancyGrid corridor;
  corridor.header.frame_id = "map";
  corridor.info.resolution = 0.5F;
  corridor.info.width = 3;
  corridor.info.height = 2;
  corridor.info.origin.position.x = 10.0;
  corridor.info.origin.position.y = 20.0;
  corridor.data = {100, 0, 100, 100, 100, 0};
  const nav_msgs::GridCells cells = CorridorCells(corridor);
  EXPECT_EQ(cells.header.frame_id, "map");
  EXPECT_EQ(cells.cell_width, 0.5F);
  EXPECT_EQ(cells.cell_height, 0.5F);
  ASSERT_EQ(cells.cells.size(), 2u);
  EXPECT_EQ(cells.cells[0].x, 10.75);
  EXPECT_EQ(cells.cells[0].y, 20.25);
  EXPECT_EQ(cells.cells[1].x, 11.25);
  EXPECT_EQ(cells.cells[1].y, 20.75);
}

TEST(WithHeadings, EachPoseLooksAtTheNextAndTheLastWhereTheOneBeforeItLooks) {
  const nav_msgs::Path path = WithHeadings(PathOf({{0, 0}, {1, 0}, {1, 2}}));
  ASSERT_EQ(path.poses.size(), 3u);
  EXPECT_NEAR(YawOf(path.poses[0]), 0.0, 1e-12);
  EXPECT_NEAR(YawOf(path.poses[1]), 0.5 * follower::kPi, 1e-12);
  EXPECT_NEAR(YawOf(path.poses[2]), 0.5 * follower::kPi, 1e-12);
}

TEST(WithHeadings, LookPastPosesInTheSamePlace) {
  const nav_msgs::Path path = WithHeadings(PathOf({{0, 0}, {0, 0}, {0, -1}, {0, -1}}));
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    EXPECT_NEAR(YawOf(pose), -0.5 * follower::kPi, 1e-12);
  }
}

TEST(WithHeadings, EveryOrientationIsOne) {
  for (const nav_msgs::Path& path : {WithHeadings(PathOf({{3, 4}})), WithHeadings(PathOf({{3, 4}, {3, 4}})),
                                     WithHeadings(PathOf({{0, 0}, {-1, 0}, {0, 0}}))}) {
    for (const geometry_msgs::PoseStamped& pose : path.poses) {
      const geometry_msgs::Quaternion& q = pose.pose.orientation;
      EXPECT_NEAR(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w, 1.0, 1e-12);
      EXPECT_EQ(pose.header.frame_id, "map");
    }
  }
  EXPECT_TRUE(WithHeadings(nav_msgs::Path()).poses.empty());
}

TEST(RobotTransform, IsThePose) {
  geometry_msgs::PoseStamped robot;
  robot.header.frame_id = "map";
  robot.header.stamp = ros::Time(101.5);
  robot.pose.position.x = 1.0;
  robot.pose.position.y = 2.0;
  robot.pose.orientation.z = 0.6;
  robot.pose.orientation.w = 0.8;
  const tf2_msgs::TFMessage message = RobotTransform(robot);
  ASSERT_EQ(message.transforms.size(), 1u);
  const geometry_msgs::TransformStamped& transform = message.transforms[0];
  EXPECT_EQ(transform.header.frame_id, "map");
  EXPECT_EQ(transform.child_frame_id, "base_link");
  EXPECT_EQ(transform.header.stamp, ros::Time(101.5));
  EXPECT_EQ(transform.transform.translation.x, 1.0);
  EXPECT_EQ(transform.transform.translation.y, 2.0);
  EXPECT_EQ(transform.transform.rotation.z, 0.6);
  EXPECT_EQ(transform.transform.rotation.w, 0.8);
}

}  // namespace
}  // namespace controller_base::demo
