#ifndef CONTROLLER_BASE_FOLLOWER_ARRIVAL_H_
#define CONTROLLER_BASE_FOLLOWER_ARRIVAL_H_

#include <geometry_msgs/Pose.h>

#include <optional>

#include "controller_base/follower/parameters.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// The goal: where it is, its heading when one is asked for, and whether the robot has come to its place. A robot that
// has may be moved a little by turning to the heading: it does not drive back for that, unless the goal is not to be
// latched.
class Arrival {
 public:
  // `parameters` must outlive the arrival.
  explicit Arrival(const Parameters& parameters) : parameters_(parameters) {}

  // Whether `goal` is the goal already, within the tolerances.
  bool IsGoal(const geometry_msgs::Pose& goal) const;

  // A new goal, which the robot has not come to. An orientation of zeros, or a tolerance of half a turn, asks for no
  // heading.
  void SetGoal(const geometry_msgs::Pose& goal);

  // The robot has come to the goal's place, or was taken away from it.
  void Latch() { is_latched_ = true; }
  void Release() { is_latched_ = false; }
  bool IsLatched() const { return is_latched_; }

  // From the robot's heading to the goal's, rad; 0 within the tolerance and where none is asked for.
  double LeftToTurn(const Pose2d& robot) const;

 private:
  const Parameters& parameters_;
  std::optional<Pose2d> goal_;
  bool has_heading_ = false;
  bool is_latched_ = false;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_ARRIVAL_H_
