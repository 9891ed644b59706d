#ifndef CONTROLLER_BASE_SIMULATION_FAULTS_H_
#define CONTROLLER_BASE_SIMULATION_FAULTS_H_

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/drifting_pose.h"
#include "simulation/robot.h"

namespace controller_base::simulation {

// From one moment on and until before another, seconds since the drive began.
struct TimeSpan {
  double from = 0.0;
  double until = std::numeric_limits<double>::infinity();

  bool Contains(double time) const { return time >= from && time < until; }
};

struct StuckWheelsFault {
  StuckWheels wheels;
  TimeSpan when;
};

// A bumper that reports contacts although nothing is touched: held without end, or pressed anew every other cycle.
struct FalseBumper {
  std::uint8_t bits = 0;  // of robot.h
  bool bounces = false;
  TimeSpan when;
};

// How contacts reach the follower.
struct ContactDelivery {
  double delay = 0.0;       // s; the stamp still says when the bumper was pressed
  bool is_swapped = false;  // two by two, the later one first
};

struct PoseNoise {
  double position = 0.0;  // m, standard deviation along each axis
  double heading = 0.0;   // rad, standard deviation
};

// The localisation errs by this much from a moment on.
struct PoseJump {
  double at = 0.0;  // s
  nav_core::math::Vec2d by;
  double turn = 0.0;  // rad
};

// Somebody pushes the robot aside, within a second.
struct Push {
  double at = 0.0;  // s
  nav_core::math::Vec2d by;
};

struct ClockJump {
  double at = 0.0;  // s
  double by = 0.0;  // s, negative: back
};

// The clock stands still, and goes on from where it stood.
struct ClockStop {
  double at = 0.0;
  double duration = 0.0;  // s
};

// All that is wrong with a robot.
struct Faults {
  std::optional<double> speed_limit;  // m/s; the wheels give no more
  std::optional<StuckWheelsFault> stuck_wheels;
  std::vector<FalseBumper> false_bumpers;
  ContactDelivery contact_delivery;
  PoseNoise pose_noise;
  std::vector<PoseJump> pose_jumps;
  std::vector<Push> pushes;
  std::vector<ClockJump> clock_jumps;
  std::vector<ClockStop> clock_stops;
  double laser_noise = 0.0;    // m, standard deviation of a range
  bool lasting_press = false;  // the wheels brake while the bumper is pressed, and it is until the robot is clear again
  double command_delay = 0.0;  // s until a command reaches the wheels
  Drift drift;                 // of the odometry
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_FAULTS_H_
