#include "simulation/faulty_robot.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace controller_base::simulation {
namespace {

constexpr double kPushDuration = 1.0;  // s

}  // namespace

double ClockShift(const Faults& faults, double time) {
  double shift = 0.0;
  for (const ClockJump& jump : faults.clock_jumps) {
    shift += time >= jump.at ? jump.by : 0.0;
  }
  for (const ClockStop& stop : faults.clock_stops) {
    shift -= std::clamp(time - stop.at, 0.0, stop.duration);
  }
  return shift;
}

ros::Time FaultyRobot::Clock(const ros::Time& start, double time) const {
  return start + ros::Duration(time + ClockShift(faults_, time));
}

follower::Pose2d FaultyRobot::Estimate(const follower::Pose2d& truth, double time) {
  follower::Pose2d pose = faults_.drift.IsNone() ? truth : drifting_.Estimate(truth, time);
  for (const PoseJump& jump : faults_.pose_jumps) {
    if (time >= jump.at) {
      pose.x += jump.by.x;
      pose.y += jump.by.y;
      pose.yaw += jump.turn;
    }
  }
  pose.x += random_.Normal(faults_.pose_noise.position);
  pose.y += random_.Normal(faults_.pose_noise.position);
  pose.yaw = follower::NormalizeAngle(pose.yaw + random_.Normal(faults_.pose_noise.heading));
  return pose;
}

follower::Command FaultyRobot::Delayed(const follower::Command& command, double time) {
  constexpr double kRounding = 1e-9;  // s; times are sums of cycles
  pending_commands_.push_back({time + faults_.command_delay, command});
  while (!pending_commands_.empty() && pending_commands_.front().due <= time + kRounding) {
    command_ = pending_commands_.front().command;
    pending_commands_.pop_front();
  }
  return command_;
}

follower::Command FaultyRobot::Limited(const follower::Command& command) const {
  follower::Command result = command;
  if (faults_.speed_limit) {
    result.speed = std::clamp(result.speed, -*faults_.speed_limit, *faults_.speed_limit);
  }
  return result;
}

StuckWheels FaultyRobot::Stuck(double time) const {
  const auto& fault = faults_.stuck_wheels;
  return fault && fault->when.Contains(time) ? fault->wheels : StuckWheels();
}

nav_core::math::Vec2d FaultyRobot::PushedBy(double time, double seconds) const {
  nav_core::math::Vec2d shift;
  for (const Push& push : faults_.pushes) {
    if (TimeSpan{push.at, push.at + kPushDuration}.Contains(time)) {
      shift.x += push.by.x * seconds / kPushDuration;
      shift.y += push.by.y * seconds / kPushDuration;
    }
  }
  return shift;
}

std::uint8_t FaultyRobot::Bumper(std::uint8_t bits, double time, std::int64_t cycle) const {
  unsigned int reported = bits;
  for (const FalseBumper& bumper : faults_.false_bumpers) {
    if (bumper.when.Contains(time) && (!bumper.bounces || cycle % 2 == 0)) {
      reported |= bumper.bits;
    }
  }
  return static_cast<std::uint8_t>(reported);
}

std::vector<nav_controller::CollisionEvent> FaultyRobot::Deliver(
    const std::vector<nav_controller::CollisionEvent>& contacts, double time) {
  for (const nav_controller::CollisionEvent& contact : contacts) {
    pending_.push_back({time + faults_.contact_delivery.delay, contact});
  }
  std::vector<nav_controller::CollisionEvent> arrived;
  if (faults_.contact_delivery.is_swapped) {
    while (pending_.size() >= 2 && pending_[1].due <= time) {
      arrived.push_back(pending_[1].contact);
      arrived.push_back(pending_[0].contact);
      pending_.erase(pending_.begin(), pending_.begin() + 2);
    }
    return arrived;
  }
  while (!pending_.empty() && pending_.front().due <= time) {
    arrived.push_back(pending_.front().contact);
    pending_.pop_front();
  }
  return arrived;
}

}  // namespace controller_base::simulation
