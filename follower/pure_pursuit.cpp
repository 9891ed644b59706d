#include "follower/pure_pursuit.h"

#include <algorithm>
#include <cmath>

namespace controller_base_demo {
namespace {

constexpr double kTurnGain = 2.5;           // 1/s
constexpr double kDeceleration = 0.4;       // m/s^2
constexpr double kCreepSpeed = 0.03;        // m/s; so that the last centimetres end
constexpr double kComfortableTurnRate = 1;  // rad/s

}  // namespace

Command PurePursuit(const Pose2d& robot, const geometry_msgs::Point& target, double room, double max_speed,
                    double turn_on_spot) {
  if (room <= 0.0) {
    return {};
  }
  const double bearing = NormalizeAngle(Direction(robot, target) - robot.yaw);
  if (std::abs(bearing) > turn_on_spot) {
    return {0.0, kTurnGain * bearing};
  }
  const double curvature = 2.0 * std::sin(bearing) / std::max(Distance(robot, target), 1e-3);
  double speed = std::min(max_speed, std::max(std::sqrt(2.0 * kDeceleration * room) - kCreepSpeed, kCreepSpeed));
  if (std::abs(curvature) * speed > kComfortableTurnRate) {
    speed = kComfortableTurnRate / std::abs(curvature);
  }
  return {speed, speed * curvature};
}

}  // namespace controller_base_demo
