#ifndef TEST_FOLLOWER_FOLLOWER_ALONE_H_
#define TEST_FOLLOWER_FOLLOWER_ALONE_H_

#include <geometry_msgs/PoseStamped.h>
#include <gtest/gtest.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "controller_base/follower/path_follower.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/local_map.h"
#include "test/follower/recorder.h"

namespace controller_base_test {

using controller_base::follower::Command;
using controller_base::follower::Parameters;
using controller_base::follower::PathFollower;
using controller_base::follower::Pose2d;
using controller_base::follower::ToLocalMapData;

inline geometry_msgs::PoseStamped Stamped(const Pose2d& pose) {
  geometry_msgs::PoseStamped stamped;
  stamped.header.frame_id = "map";
  stamped.pose.position.x = pose.x;
  stamped.pose.position.y = pose.y;
  stamped.pose.orientation.z = std::sin(0.5 * pose.yaw);
  stamped.pose.orientation.w = std::cos(0.5 * pose.yaw);
  return stamped;
}

// A follower alone, on an empty local map.
class FollowerAlone : public testing::Test {
 protected:
  explicit FollowerAlone(const Parameters& parameters = {})
      : map_(120, 120, 0.05, -3.0, -3.0), follower_(&recorder_, parameters) {
    ros::Time::setNow(ros::Time(500.0));
    robot_ = Stamped(pose_);
    path_.header.frame_id = "map";
    path_.poses.resize(2, robot_);
    path_.poses.back().pose.position.x = 2.0;
    follower_.SetPath(path_);
  }

  // Cycles for so long, each too short for a jump of the clock. Returns the command of the last.
  Command CycleAfter(double seconds) {
    constexpr double kCycle = 0.5;  // s
    for (; seconds > kCycle; seconds -= kCycle) {
      OneCycle(kCycle);
    }
    return OneCycle(seconds);
  }

  Command OneCycle(double seconds) {
    ros::Time::setNow(ros::Time::now() + ros::Duration(seconds));
    return follower_.Cycle(robot_, ToLocalMapData(map_).View());
  }

  void Touch(std::int8_t type) {
    nav_controller::CollisionEvent event;
    event.collided = true;
    event.stamp = ros::Time::now();
    event.type = type;
    follower_.AddContact(event);
  }

  // So many cycles at 20 Hz of a robot that follows each command at once. Returns the lowest speed commanded.
  double Drive(int cycles) {
    constexpr double kCycle = 0.05;  // s
    double slowest = std::numeric_limits<double>::infinity();
    for (int cycle = 0; cycle < cycles && !IsOver(follower_.outcome().state); ++cycle) {
      const Command command = OneCycle(kCycle);
      pose_.yaw += kCycle * command.turn_rate;
      pose_.x += kCycle * command.speed * std::cos(pose_.yaw);
      pose_.y += kCycle * command.speed * std::sin(pose_.yaw);
      robot_ = Stamped(pose_);
      slowest = std::min(slowest, command.speed);
    }
    return slowest;
  }

  // Drives until the follower's activity is this one; false when it is not within a bounded number of cycles.
  bool DriveUntil(const std::string& activity) {
    for (int cycle = 0; cycle < 1000 && follower_.activity() != activity; ++cycle) {
      Drive(1);
    }
    return follower_.activity() == activity;
  }

  costmap_2d::Costmap2D map_;
  nav_msgs::Path path_;  // 2 m along the x axis
  Recorder recorder_;
  PathFollower follower_;
  geometry_msgs::PoseStamped robot_;
  Pose2d pose_;  // of the robot, while it is driven by Drive
};

}  // namespace controller_base_test

#endif  // TEST_FOLLOWER_FOLLOWER_ALONE_H_
