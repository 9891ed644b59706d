// The follower on a grid of its own: a box stands on a path of 4 m, and a robot that does at once what it is told
// drives around it, in simulated time. Needs a ROS master.
#include <controller_base/follower/inflate.h>
#include <controller_base/follower/path_follower.h>
#include <ros/ros.h>

#include <cmath>
#include <cstdio>

namespace follower = controller_base::follower;

geometry_msgs::PoseStamped PoseAt(double x, double y, double yaw) {
  geometry_msgs::PoseStamped pose;
  pose.header.frame_id = "map";
  pose.pose.position.x = x;
  pose.pose.position.y = y;
  pose.pose.orientation.z = std::sin(0.5 * yaw);
  pose.pose.orientation.w = std::cos(0.5 * yaw);
  return pose;
}

// 6 m x 4 m in cells of 5 cm, with a box of 0.3 m x 0.6 m in its middle, which the laser sees.
follower::LocalMapData MakeGrid(double robot_radius) {
  follower::LocalMapData grid;
  grid.size_x = 120;
  grid.size_y = 80;
  grid.resolution = 0.05;
  grid.costs.assign(120 * 80, 0);
  for (int row = 34; row < 46; ++row) {
    for (int column = 57; column < 63; ++column) grid.costs[row * 120 + column] = 254;
  }
  grid.laser_marks = grid.costs;
  follower::Inflate(&grid, robot_radius);
  return grid;
}

int main(int argc, char** argv) {
  ros::init(argc, argv, "follower_on_a_grid");
  const ros::NodeHandle node;
  ros::Time::setNow(ros::Time(1.0));
  const follower::Parameters parameters;
  const follower::LocalMapData grid = MakeGrid(parameters.robot_radius);
  follower::PathFollower path_follower(nullptr, parameters);
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.poses = {PoseAt(1.0, 2.0, 0.0), PoseAt(5.0, 2.0, 0.0)};
  path_follower.SetPath(path);
  for (double x = 1.0, y = 2.0, yaw = 0.0; !IsOver(path_follower.outcome().state);) {
    const follower::Command command = path_follower.Cycle(PoseAt(x, y, yaw), grid.View());
    yaw += command.turn_rate * 0.05;
    x += command.speed * 0.05 * std::cos(yaw);
    y += command.speed * 0.05 * std::sin(yaw);
    ros::Time::setNow(ros::Time::now() + ros::Duration(0.05));
  }
  std::printf("%s: %s\n", Name(path_follower.outcome().state), path_follower.outcome().reason.c_str());
}
