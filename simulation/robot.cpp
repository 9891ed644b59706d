#include "simulation/robot.h"

#include <algorithm>
#include <cmath>

#include "follower/inflation.h"

namespace controller_base::simulation {
namespace {

constexpr double kLongestStep = 0.005;                       // m
constexpr double kFrontBumper = 30.0 * follower::kPi / 180;  // rad to either side
constexpr double kBumperEnd = 90.0 * follower::kPi / 180;    // rad to either side

double Approach(double value, double target, double largest_change) {
  return value + std::clamp(target - value, -largest_change, largest_change);
}

// Of two wheels that would give `motor`, those that are stuck give nothing.
follower::Command WithStuckWheels(const follower::Command& motor, const StuckWheels& stuck) {
  if (!stuck.left && !stuck.right) {
    return motor;
  }
  const double left = stuck.left ? 0.0 : motor.speed - 0.5 * kTrackWidth * motor.turn_rate;
  const double right = stuck.right ? 0.0 : motor.speed + 0.5 * kTrackWidth * motor.turn_rate;
  return {0.5 * (left + right), (right - left) / kTrackWidth};
}

// The solid cells that a body at `to` overlaps and that it comes nearer to on the way from `from`: a body that
// something solid has appeared in may still leave it.
std::vector<World::Overlap> InTheWay(const World& world, const follower::Pose2d& from,
                                     const nav_core::math::Vec2d& to) {
  std::vector<World::Overlap> overlaps = world.Overlaps(to, follower::kRobotRadius);
  const auto is_left_behind = [&](const World::Overlap& overlap) {
    return follower::Distance(to, overlap.nearest) >= Distance(from, overlap.nearest);
  };
  overlaps.erase(std::remove_if(overlaps.begin(), overlaps.end(), is_left_behind), overlaps.end());
  return overlaps;
}

}  // namespace

// In steps that no wall fits between; the map's edge is one, so that the loop ends however long the push is.
void Robot::Push(const nav_core::math::Vec2d& shift, const World& world) {
  const nav_core::math::Vec2d end(pose_.x + shift.x, pose_.y + shift.y);
  const double length = std::hypot(shift.x, shift.y);
  follower::Pose2d from = pose_;
  double done = follower::kRobotRadius;
  while (done < length) {
    const double share = done / length;
    const nav_core::math::Vec2d next(pose_.x + share * shift.x, pose_.y + share * shift.y);
    if (!InTheWay(world, from, next).empty()) {
      return;
    }
    from = {next.x, next.y, pose_.yaw};
    done += follower::kRobotRadius;
  }
  if (InTheWay(world, from, end).empty()) {
    pose_.x = end.x;
    pose_.y = end.y;
  }
}

std::vector<World::Overlap> Robot::Drive(const follower::Command& command, double seconds, const World& world,
                                         const StuckWheels& stuck) {
  motor_.speed = Approach(motor_.speed, std::clamp(command.speed, -kMaxSpeed, kMaxSpeed), kMaxAcceleration * seconds);
  motor_.turn_rate = Approach(motor_.turn_rate, std::clamp(command.turn_rate, -kMaxTurnRate, kMaxTurnRate),
                              kMaxTurnAcceleration * seconds);
  motion_ = WithStuckWheels(motor_, stuck);
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(motion_.speed) * seconds / kLongestStep)));
  std::vector<World::Overlap> contacts;
  for (int step = 0; step < steps; ++step) {
    const double turn = motion_.turn_rate * seconds / steps;
    if (contacts.empty()) {
      const double distance = motion_.speed * seconds / steps;
      const double direction = pose_.yaw + 0.5 * turn;
      const nav_core::math::Vec2d next(pose_.x + distance * std::cos(direction),
                                       pose_.y + distance * std::sin(direction));
      contacts = InTheWay(world, pose_, next);
      if (contacts.empty()) {
        pose_.x = next.x;
        pose_.y = next.y;
      }
    }
    pose_.yaw = follower::NormalizeAngle(pose_.yaw + turn);
  }
  if (!contacts.empty()) {
    motion_.speed = 0.0;
    motor_.speed = brakes_ ? motor_.speed : 0.0;
  }
  return contacts;
}

std::uint8_t BumperBits(const follower::Pose2d& pose, const std::vector<World::Overlap>& contacts) {
  unsigned int bits = 0;
  for (const World::Overlap& contact : contacts) {
    const double bearing = follower::NormalizeAngle(Direction(pose, contact.nearest) - pose.yaw);
    if (std::abs(bearing) <= kFrontBumper) {
      bits |= kBumperFront;
    } else if (std::abs(bearing) <= kBumperEnd) {
      bits |= bearing > 0.0 ? kBumperLeft : kBumperRight;
    }
  }
  return static_cast<std::uint8_t>(bits);
}

}  // namespace controller_base::simulation
