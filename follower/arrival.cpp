#include "follower/arrival.h"

#include <cmath>

namespace controller_base::follower {

bool Arrival::IsGoal(const geometry_msgs::Pose& goal) const {
  const Pose2d other = ToPose2d(goal);
  return goal_ && Distance(*goal_, other) <= parameters_.goal_tolerance && LeftToTurn(other) == 0.0;
}

void Arrival::SetGoal(const geometry_msgs::Pose& goal) {
  goal_ = ToPose2d(goal);
  has_heading_ = goal.orientation.z != 0.0 || goal.orientation.w != 0.0;
  Release();
}

double Arrival::LeftToTurn(const Pose2d& robot) const {
  if (!has_heading_ || parameters_.goal_heading_tolerance >= kPi) {
    return 0.0;
  }
  const double left = NormalizeAngle(goal_->yaw - robot.yaw);
  return std::abs(left) <= parameters_.goal_heading_tolerance ? 0.0 : left;
}

}  // namespace controller_base::follower
