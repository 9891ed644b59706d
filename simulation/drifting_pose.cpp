#include "simulation/drifting_pose.h"

#include <cmath>

namespace controller_base::simulation {

follower::Pose2d DriftingPose::Believe(const follower::Pose2d& truth, double time) {
  if (!truth_ || time - corrected_at_ >= drift_.correction) {
    truth_ = believed_ = truth;
    corrected_at_ = time;
    return believed_;
  }
  const double way = follower::Distance(*truth_, truth);
  const double direction = believed_.yaw + follower::NormalizeAngle(follower::Direction(*truth_, truth) - truth_->yaw);
  believed_.x += (1.0 + drift_.scale) * way * std::cos(direction);
  believed_.y += (1.0 + drift_.scale) * way * std::sin(direction);
  believed_.yaw =
      follower::NormalizeAngle(believed_.yaw + follower::NormalizeAngle(truth.yaw - truth_->yaw) + drift_.turn * way);
  truth_ = truth;
  return believed_;
}

}  // namespace controller_base::simulation
