#ifndef CONTROLLER_BASE_SIMULATION_DRIFTING_POSE_H_
#define CONTROLLER_BASE_SIMULATION_DRIFTING_POSE_H_

#include <optional>

#include "follower/geometry.h"

namespace controller_base::simulation {

// Odometry that counts wrong, and how often a localisation corrects it.
struct Drift {
  double scale = 0.0;       // share of the distance that is counted too much
  double turn = 0.0;        // rad that the heading drifts for each metre driven
  double correction = 0.0;  // s; after that time the pose jumps to where the robot is

  bool IsNone() const { return scale == 0.0 && turn == 0.0; }
};

// The pose that a robot estimates from the turns of its wheels.
class DriftingPose {
 public:
  explicit DriftingPose(const Drift& drift) : drift_(drift) {}

  // `truth` is where the robot stands at `time`, seconds since the drive began. Call it in the order of the times.
  follower::Pose2d Estimate(const follower::Pose2d& truth, double time);

 private:
  Drift drift_;
  std::optional<follower::Pose2d> truth_;  // in the last call
  follower::Pose2d estimated_;
  double corrected_at_ = 0.0;  // s
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_DRIFTING_POSE_H_
