#ifndef CONTROLLER_BASE_MOVE_BASE_LOCAL_PLANNER_PLUGIN_H_
#define CONTROLLER_BASE_MOVE_BASE_LOCAL_PLANNER_PLUGIN_H_

#include <costmap_2d/costmap_2d_ros.h>
#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_core/base_local_planner.h>
#include <ros/node_handle.h>
#include <ros/subscriber.h>
#include <std_msgs/UInt8.h>
#include <tf2_ros/buffer.h>

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "move_base/update_watch.h"
#include "robot/bumper.h"
#include "robot/follower_drive.h"
#include "robot/grid.h"

namespace controller_base::move_base_plugin {

// The follower as a local planner of move_base; docs/move_base.md says how to configure it. It works in the frame of
// the global plan; a local costmap in another frame is turned into that one. Includes the stock navigation stack's
// headers and none that includes this library's classes of the same names.
class LocalPlannerPlugin : public nav_core::BaseLocalPlanner {
 public:
  // Throws std::invalid_argument for a parameter that cannot be, which ends move_base with that text.
  void initialize(std::string name, tf2_ros::Buffer* tf, costmap_2d::Costmap2DROS* costmap) override;

  // False for a plan without poses or with a number that is not finite.
  bool setPlan(const std::vector<geometry_msgs::PoseStamped>& plan) override;

  bool isGoalReached() override;

  // False, with no motion, while the path stays blocked for longer than `blocked_timeout`, when the follower gave up,
  // and when pose or costmap are not usable; move_base then plans anew or recovers.
  bool computeVelocityCommands(geometry_msgs::Twist& command) override;

 private:
  void OnBumper(const std_msgs::UInt8& message);
  void WatchUpdates();
  bool CostmapIsUsable();
  robot::GridBytes LaserMarks() const;
  bool Refuse(const std::string& why);

  tf2_ros::Buffer* tf_ = nullptr;
  costmap_2d::Costmap2DROS* costmap_ = nullptr;
  std::unique_ptr<robot::FollowerDrive> drive_;
  robot::BumperPresses presses_;
  ros::Subscriber bumper_;
  std::string plan_frame_;
  boost::shared_ptr<UpdateWatch> updates_;  // of the local costmap
  double blocked_timeout_ = 2.0;            // s
  double costmap_timeout_ = 1.0;            // s
};

}  // namespace controller_base::move_base_plugin

#endif  // CONTROLLER_BASE_MOVE_BASE_LOCAL_PLANNER_PLUGIN_H_
