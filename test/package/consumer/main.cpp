// A user's program: how far along the path is the robot, and is the way ahead blocked?
#include <controller_base/obstacle_blocking_analyzer.h>
#include <controller_base/trajectory_analyzer.h>

#include <cstdio>

int main() {
  ros::Time::init();    // for the log; ros::init does it in a node
  nav_msgs::Path path;  // one metre straight ahead
  path.header.frame_id = "map";
  path.poses.resize(2);
  path.poses.back().pose.position.x = 1.0;
  geometry_msgs::PoseStamped robot;  // half a metre off the path, which the library warns of
  robot.pose.position.y = 0.5;
  nav_controller::LocalMap map(40, 20, 0.05, -0.5, -0.5);
  map.setCost(20, 10, costmap_2d::LETHAL_OBSTACLE);

  nav_controller::TrajectoryAnalyzer analyzer(path);
  analyzer.UpdateIndex(robot);
  const bool blocked = nav_controller::IsBlockingPathInflateObstacle(&map, analyzer.PathTransformToLocalMap(&map));
  std::printf("index %d, %s\n", static_cast<int>(analyzer.GetCurrentIndex()), blocked ? "blocked" : "free");
}
