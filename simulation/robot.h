#ifndef CONTROLLER_BASE_SIMULATION_ROBOT_H_
#define CONTROLLER_BASE_SIMULATION_ROBOT_H_

#include <cstdint>
#include <vector>

#include "controller_base/follower/command.h"
#include "follower/geometry.h"
#include "simulation/world.h"

namespace controller_base::simulation {

constexpr double kMaxSpeed = 0.5;             // m/s
constexpr double kMaxTurnRate = 1.8;          // rad/s
constexpr double kMaxAcceleration = 1.0;      // m/s^2
constexpr double kMaxTurnAcceleration = 6.0;  // rad/s^2
constexpr double kTrackWidth = 0.18;          // m between the wheels

// Bits of the bumper, which reaches a right angle to either side of straight ahead; behind it the robot feels nothing.
constexpr std::uint8_t kBumperLeft = 1;
constexpr std::uint8_t kBumperRight = 2;
constexpr std::uint8_t kBumperFront = 4;

struct StuckWheels {
  bool left = false;
  bool right = false;
};

// A round robot of radius kRobotRadius on two driven wheels.
class Robot {
 public:
  // `brakes` robots are stopped by what they run into while their wheels take their time to stop; those of the others
  // stop at once.
  explicit Robot(const follower::Pose2d& pose, bool brakes = false) : pose_(pose), brakes_(brakes) {}

  const follower::Pose2d& pose() const { return pose_; }
  // What the wheels do, after the limits above, and those that are stuck.
  const follower::Command& motion() const { return motion_; }

  // Somebody pushes it, as far as nothing solid is in the way there.
  void Push(const nav_core::math::Vec2d& shift, const World& world);

  // Drives for `seconds`, in steps far shorter than a cell. Where the body would run into something solid the robot
  // goes no farther, but can still turn on the spot, and away from it. A stuck wheel stands still at once, and the
  // other one turns the robot around it. Returns what it ran into: empty when nothing was there.
  std::vector<World::Overlap> Drive(const follower::Command& command, double seconds, const World& world,
                                    const StuckWheels& stuck = {});

 private:
  follower::Pose2d pose_;
  bool brakes_;
  follower::Command motor_;  // what the motors give, after the limits above
  follower::Command motion_;
};

// The bumper bits for contacts with a robot that stands at `pose`: front within 30 degrees of straight ahead, beyond
// that left or right up to 90 degrees, nothing behind.
std::uint8_t BumperBits(const follower::Pose2d& pose, const std::vector<World::Overlap>& contacts);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_ROBOT_H_
