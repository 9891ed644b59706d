#ifndef CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_
#define CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseStamped.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/subscriber.h>

#include <functional>
#include <optional>
#include <string>

#include "nav_core/math/vec2d.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// What people do with RViz's tools while the robot drives:
//
//   "2D Nav Goal"    /move_base_simple/goal   drive there instead
//   "Publish Point"  /clicked_point           a box of 0.3 m x 0.3 m appears there
//
// Every node at the ROS master can send these. Of more goals than one in kGoalPause the last counts; more boxes than
// one in kBoxPause, or than kMostBoxes, are ignored, and so is what is not in frame "map", with a warning in
// kWarningPause at most. Belongs to one thread, the drive's.
class OperatorInput : public simulation::Interaction {
 public:
  static constexpr double kBoxSide = 0.3;       // m
  static constexpr double kGoalPause = 0.5;     // s of the wall's clock, as the others
  static constexpr double kBoxPause = 0.1;      // s
  static constexpr double kWarningPause = 1.0;  // s
  static constexpr int kMostBoxes = 200;        // in a drive

  // The robot waits for goals as long as `is_watched` says so.
  explicit OperatorInput(std::function<bool()> is_watched) : is_watched_(std::move(is_watched)) {}

  // Until then, nobody's goals and boxes are taken.
  void Listen();

  simulation::Interventions Take() override;
  bool WaitsForGoals() const override { return is_watched_(); }

 private:
  // Lets something happen once in a while.
  class Pause {
   public:
    explicit Pause(double seconds) : length_(seconds) {}
    // True at most once in its length.
    bool IsOver();

   private:
    ros::WallDuration length_;
    ros::WallTime end_;
  };

  void OnGoal(const geometry_msgs::PoseStamped& goal);
  void OnPoint(const geometry_msgs::PointStamped& point);
  bool IsPlace(const std_msgs::Header& header, const geometry_msgs::Point& place, const std::string& what);
  void Ignore(const std::string& what, const std::string& why);

  std::function<bool()> is_watched_;
  ros::CallbackQueue messages_;  // that wait for Take
  ros::NodeHandle node_;
  ros::Subscriber goals_;
  ros::Subscriber points_;
  simulation::Interventions gathered_;
  std::optional<nav_core::math::Vec2d> goal_;  // the last one, until it may be taken
  int boxes_ = 0;
  int ignored_ = 0;  // without a warning
  Pause goal_pause_{kGoalPause};
  Pause box_pause_{kBoxPause};
  Pause warning_pause_{kWarningPause};
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_OPERATOR_INPUT_H_
