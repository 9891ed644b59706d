#ifndef CONTROLLER_BASE_SIMULATION_FAULTY_ROBOT_H_
#define CONTROLLER_BASE_SIMULATION_FAULTY_ROBOT_H_

#include <ros/time.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/follower/command.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/drifting_pose.h"
#include "simulation/faults.h"
#include "simulation/random_source.h"

namespace controller_base::simulation {

// Seconds that the robot's clock is ahead of the drive's time.
double ClockShift(const Faults& faults, double time);

// Stands between the simulated robot and its follower, and falsifies what they hear of each other. Times are seconds
// since the drive began. The same faults and seed falsify in the same way.
class FaultyRobot {
 public:
  FaultyRobot(const Faults& faults, std::uint32_t seed) : faults_(faults), random_(seed), drifting_(faults.drift) {}

  // What the robot's clock says.
  ros::Time Clock(const ros::Time& start, double time) const;
  // The pose that the localisation estimates. Draws noise and counts the distance: once per cycle.
  follower::Pose2d Estimate(const follower::Pose2d& truth, double time);
  // The command that reaches the wheels now, of those given so far and the one given at `time`.
  follower::Command Delayed(const follower::Command& command, double time);
  // The command, as fast as the wheels can.
  follower::Command Limited(const follower::Command& command) const;
  StuckWheels Stuck(double time) const;
  // How far somebody pushes the robot from `time` until `time + seconds`.
  nav_core::math::Vec2d PushedBy(double time, double seconds) const;
  // The bumper bits that are reported where `bits` are pressed, in cycle number `cycle`.
  std::uint8_t Bumper(std::uint8_t bits, double time, std::int64_t cycle) const;
  // Takes the contacts of one cycle and returns those that arrive now.
  std::vector<nav_controller::CollisionEvent> Deliver(const std::vector<nav_controller::CollisionEvent>& contacts,
                                                      double time);

 private:
  struct Pending {
    double due;
    nav_controller::CollisionEvent contact;
  };

  struct PendingCommand {
    double due;
    follower::Command command;
  };

  Faults faults_;
  RandomSource random_;
  DriftingPose drifting_;
  std::deque<PendingCommand> pending_commands_;
  follower::Command command_;  // that reached the wheels last
  std::deque<Pending> pending_;
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_FAULTY_ROBOT_H_
