#ifndef CONTROLLER_BASE_ROBOT_PATH_FOLLOWER_NODE_H_
#define CONTROLLER_BASE_ROBOT_PATH_FOLLOWER_NODE_H_

#include <diagnostic_updater/diagnostic_updater.h>
#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/publisher.h>
#include <ros/service_server.h>
#include <ros/subscriber.h>
#include <std_msgs/UInt8.h>
#include <std_srvs/Trigger.h>
#include <tf2_ros/transform_listener.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "robot/bumper.h"
#include "robot/drive_recorder.h"
#include "robot/follower_drive.h"
#include "robot/goal_drive.h"
#include "robot/node_inputs.h"
#include "robot/node_options.h"

namespace controller_base::robot {

// The follower as a node; docs/robot.md says what it takes and gives. Everything happens on the thread that calls Run,
// whose cycles go by the clock on the wall as well as by ROS's: a ROS clock that stops does not keep the robot moving.
class PathFollowerNode {
 public:
  // Throws std::invalid_argument for a parameter that cannot be.
  PathFollowerNode();

  // Until the node is shut down.
  void Run();

 private:
  void Record();
  void Subscribe();
  void Advertise();
  void OnGoal(const geometry_msgs::PoseStamped& goal);
  void OnPlan(const nav_msgs::Path& plan);
  void OnBumper(const std_msgs::UInt8& bumper);
  void OnContactPoint(const geometry_msgs::PointStamped& point);
  bool Cancel(std_srvs::Trigger::Response* response);
  bool Reset(std_srvs::Trigger::Response* response);

  void TickRecorder() const;
  bool IsCycleDue(const ros::Time& now);
  void Cycle(const ros::Time& now);
  void Drive(const ros::Time& now);
  void Stand();
  void PublishMap();
  void Diagnose();
  void Report(const std::string& input, diagnostic_updater::DiagnosticStatusWrapper* status) const;

  ros::NodeHandle topics_;
  ros::NodeHandle private_{"~"};
  NodeOptions options_;
  NodeInputs inputs_;
  FollowerDrive drive_;
  std::optional<DriveRecorder> recorder_;
  GoalDrive goal_drive_;
  BumperPresses presses_;
  BumperPresses point_presses_;
  std::unique_ptr<tf2_ros::TransformListener> listener_;
  diagnostic_updater::Updater diagnostics_;
  ros::Publisher command_;
  ros::Publisher local_map_;
  std::vector<ros::Subscriber> subscribers_;
  std::vector<ros::ServiceServer> services_;
  bool may_move_ = false;  // the last command was not to stand
  std::string problem_;    // as of the last cycle
  ros::Time last_cycle_;
  ros::WallTime last_wall_cycle_;
  ros::WallTime next_diagnosis_;
  ros::WallTime next_map_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_PATH_FOLLOWER_NODE_H_
