#include <gmock/gmock.h>
#include <nav_msgs/OccupancyGrid.h>
#include <ros/this_node.h>

#include "controller_base/local_planner.h"
#include "controller_base/path_map_filler.h"
#include "test/support/maps.h"
#include "test/support/received.h"
#include "test/support/ros_environment.h"
#include "test/support/ros_graph.h"

namespace controller_base_test {
namespace {

TEST(LocalPlanInANamespace, TopicsStayWhereTheyAre) {
  ASSERT_EQ(ros::this_node::getNamespace(), "/robot1");
  const nav_controller::LocalPlanner planner(true);
  nav_controller::PathMapFiller filler(3);
  EXPECT_THAT(AdvertisedTopics(),
              testing::ElementsAre("/DWB/limit_map", "/DWB/local_plan", "/nav_controller/local_map_obstacles"));

  Received<nav_msgs::OccupancyGrid> grids("/DWB/limit_map");
  const costmap_2d::Costmap2D map(5, 5, 0.05, 0.0, 0.0);
  filler.prepare(1, &map, nav_msgs::Path());
  EXPECT_EQ(grids.AtLeast(1).size(), 1U);
}

}  // namespace
}  // namespace controller_base_test

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::AddGlobalTestEnvironment(new controller_base_test::RosEnvironment(ros::M_string{{"__ns", "/robot1"}}));
  return RUN_ALL_TESTS();
}
