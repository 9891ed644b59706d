// Hands the robot's map to the library.
#include <controller_base/obstacle_blocking_analyzer.h>
// Then the robot's:
#include <costmap_2d/costmap_2d_ros.h>

bool IsBlocked(costmap_2d::Costmap2DROS& robot, const nav_msgs::Path& path) {
  return nav_controller::IsBlockingPathInflateObstacle(robot.getCostmap(), path);
}
