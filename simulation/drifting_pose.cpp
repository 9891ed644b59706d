#include "simulation/drifting_pose.h"

#include <cmath>

namespace controller_base::simulation {

follower::Pose2d DriftingPose::Estimate(const follower::Pose2d& truth, double time) {
  if (!truth_ || time - corrected_at_ >= drift_.correction) {
    truth_ = estimated_ = truth;
    corrected_at_ = time;
    return estimated_;
  }
  const double driven = follower::Distance(*truth_, truth);
  const double direction = estimated_.yaw + follower::NormalizeAngle(follower::Direction(*truth_, truth) - truth_->yaw);
  estimated_.x += (1.0 + drift_.scale) * driven * std::cos(direction);
  estimated_.y += (1.0 + drift_.scale) * driven * std::sin(direction);
  estimated_.yaw = follower::NormalizeAngle(estimated_.yaw + follower::NormalizeAngle(truth.yaw - truth_->yaw) +
                                            drift_.turn * driven);
  truth_ = truth;
  return estimated_;
}

}  // namespace controller_base::simulation
