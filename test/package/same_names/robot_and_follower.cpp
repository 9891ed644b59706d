// Uses the robot's map and the follower, whose headers show no map class.
#include <costmap_2d/costmap_2d_ros.h>
// Then the follower's:
#include <controller_base/follower/inflate.h>
#include <controller_base/follower/path_follower.h>

controller_base::follower::Command Cycle(controller_base::follower::PathFollower& follower,
                                         costmap_2d::Costmap2DROS& robot, const geometry_msgs::PoseStamped& pose) {
  controller_base::follower::LocalMapData map;
  map.size_x = robot.getCostmap() == nullptr ? 0 : 1;
  return follower.Cycle(pose, map.View());
}
