#include "follower/command_limiter.h"

#include <algorithm>
#include <utility>

namespace controller_base::follower {
namespace {

constexpr double kUsualCycle = 0.05;  // s; where the clock does not tell how long the last one was

// `wanted` within `limit`, at most `step` from `last`.
double Approach(double wanted, double last, double step, double limit) {
  return std::clamp(std::clamp(wanted, -limit, limit), last - step, last + step);
}

}  // namespace

void CommandLimiter::Stop() {
  last_ = {};
  last_time_.reset();
}

Command CommandLimiter::Limit(const Command& wanted) {
  const double seconds = SecondsSinceLast();
  last_ = {
      Approach(wanted.speed, last_.speed, parameters_.acceleration * seconds, parameters_.cruise_speed),
      Approach(wanted.turn_rate, last_.turn_rate, parameters_.turn_acceleration * seconds, parameters_.max_turn_rate)};
  return last_;
}

double CommandLimiter::SecondsSinceLast() {
  const ros::Time now = ros::Time::now();
  const std::optional<ros::Time> before = std::exchange(last_time_, now);
  const double seconds = before ? (now - *before).toSec() : kUsualCycle;
  const bool is_jump = seconds < 0.0 || seconds > parameters_.longest_clock_step;
  return is_jump ? kUsualCycle : seconds;
}

}  // namespace controller_base::follower
