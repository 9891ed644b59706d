#ifndef CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_
#define CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_

#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseStamped.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/subscriber.h>

#include <functional>

#include "simulation/drive_observer.h"

namespace controller_base_demo {

// What people do with RViz's tools while the robot drives:
//
//   "2D Nav Goal"    /move_base_simple/goal   drive there instead
//   "Publish Point"  /clicked_point           a box of 0.3 m x 0.3 m appears there
//
// Messages in another frame than "map" are ignored with a warning. Belongs to one thread, the drive's.
class OperatorInput : public Interaction {
 public:
  static constexpr double kBoxSide = 0.3;  // m

  // The robot waits for goals as long as `is_watched` says so.
  explicit OperatorInput(std::function<bool()> is_watched);

  Interventions Take() override;
  bool WaitsForGoals() const override { return is_watched_(); }

 private:
  void OnGoal(const geometry_msgs::PoseStamped& goal);
  void OnPoint(const geometry_msgs::PointStamped& point);

  std::function<bool()> is_watched_;
  ros::CallbackQueue messages_;  // that wait for Take
  ros::NodeHandle node_;
  ros::Subscriber goals_;
  ros::Subscriber points_;
  Interventions gathered_;
  int boxes_ = 0;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_
