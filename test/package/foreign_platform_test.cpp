// The library and its bundled platform beside a robot's library that defines classes of the same names. Built twice:
// linked to the robot's library, which is then searched for symbols before ours, and only loading it, which puts it
// behind ours.

#include <controller_base/local_planner.h>
#include <controller_base/obstacle_blocking_analyzer.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ros/time.h>

#include "test/support/paths.h"

namespace controller_base_test {
namespace {

class ForeignPlatform : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(robot_, nullptr) << dlerror(); }

  // What the robot's library's function `name` returns.
  int AskRobot(const char* name) const { return reinterpret_cast<int (*)()>(dlsym(robot_, name))(); }

 private:
  void* robot_ = dlopen(CONTROLLER_BASE_FOREIGN_PLATFORM, RTLD_NOW | RTLD_GLOBAL);
};

TEST_F(ForeignPlatform, TheLibraryUsesItsOwnMap) {
  costmap_2d::Costmap2D map(40, 20, 0.05, 0.0, 0.0);
  map.setCost(20, 10, costmap_2d::LETHAL_OBSTACLE);
  EXPECT_TRUE(nav_controller::IsBlockingPathInflateObstacle(&map, PathOf({{0.125, 0.525}, {1.025, 0.525}})));
  EXPECT_FALSE(nav_controller::IsBlockingPathInflateObstacle(&map, PathOf({{0.125, 0.125}, {1.025, 0.125}})));
}

TEST_F(ForeignPlatform, TheLibraryUsesItsOwnSearchAndBoxes) {
  ros::Time::init();
  costmap_2d::Costmap2D map(40, 20, 0.05, 0.0, 0.0);
  nav_controller::LocalPlanner planner(false);
  geometry_msgs::Point center;
  center.x = 1.0;
  center.y = 0.5;
  planner.CreateBoxObstacle(center, 0.0);
  EXPECT_TRUE(planner.GetLocalMapObstacle().IsInObstacle(center));

  const AStar::Vec2 start{2, 10};
  const AStar::Vec2 goal{38, 10};
  const nav_msgs::Path detour = planner.Plan(&map, nullptr, start, goal, false);
  ASSERT_EQ(detour.poses.size(), 37U);  // one pose a column: the box is passed diagonally
  for (const geometry_msgs::PoseStamped& pose : detour.poses) {
    EXPECT_FALSE(planner.GetLocalMapObstacle().IsInObstacle(pose.pose.position));
  }
}

TEST_F(ForeignPlatform, TheRobotsLibraryUsesItsOwnClasses) {
  EXPECT_EQ(AskRobot("CostOfForeignMap"), 42);
  EXPECT_EQ(AskRobot("LengthOfForeignPath"), 7);
  EXPECT_EQ(AskRobot("IsFarPointInForeignBox"), 1);
}

}  // namespace
}  // namespace controller_base_test
