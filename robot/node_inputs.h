#ifndef CONTROLLER_BASE_ROBOT_NODE_INPUTS_H_
#define CONTROLLER_BASE_ROBOT_NODE_INPUTS_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Odometry.h>
#include <ros/time.h>
#include <sensor_msgs/LaserScan.h>
#include <tf2/buffer_core.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "robot/input_watch.h"
#include "robot/node_options.h"
#include "robot/robot_map.h"

namespace controller_base::robot {

// What the node knows from its inputs, and whether each of them still comes. No topic, no clock: times are the
// caller's.
class NodeInputs {
 public:
  // Metres: the robot's radius.
  NodeInputs(const NodeOptions& options, double robot_radius);

  // The buffer that receives all transforms.
  tf2::BufferCore* frames() { return &frames_; }

  // An unusable map is reported by Problem and changes nothing.
  void OnMap(const nav_msgs::OccupancyGrid& map);
  void OnScan(const sensor_msgs::LaserScan& scan);
  // Only with pose_source "odometry": where base_frame is in global_frame, whatever the message calls them.
  void OnOdometry(const nav_msgs::Odometry& odometry);
  void OnBumper(const ros::Time& now);

  // Before each cycle: marks the scans whose frames are known by now, and asks where the robot is.
  void Update(const ros::Time& now, const ros::SteadyTime& wall);

  // What is wrong with an input and since when; empty: all is well. As of the last Update.
  struct Health {
    std::string input;
    std::string problem;
  };
  const std::vector<Health>& health() const { return health_; }
  // What is wrong with the first one that has a problem; empty: all is well.
  std::string Problem() const;

  // What the laser saw is forgotten.
  void Forget();

  // Null until there is a map.
  RobotMap* map() { return map_.get(); }
  // In global_frame, upright; meaningful while there is no problem.
  const geometry_msgs::PoseStamped& robot() const { return robot_; }

 private:
  void MarkScans(const ros::Time& now);
  void LocateRobot(const ros::Time& now);
  std::string MapProblem() const;

  NodeOptions options_;
  double robot_radius_;
  tf2::BufferCore frames_;
  std::unique_ptr<RobotMap> map_;
  std::string map_error_;
  std::deque<sensor_msgs::LaserScan> scans_;  // that wait for their frames
  geometry_msgs::PoseStamped robot_;
  InputWatch scan_watch_;
  InputWatch pose_watch_;
  InputWatch bumper_watch_;
  ClockWatch clock_watch_;
  std::vector<Health> health_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_NODE_INPUTS_H_
