#ifndef CONTROLLER_BASE_FOLLOWER_COMMAND_LIMITER_H_
#define CONTROLLER_BASE_FOLLOWER_COMMAND_LIMITER_H_

#include <ros/time.h>

#include <optional>

#include "controller_base/follower/command.h"
#include "controller_base/follower/parameters.h"

namespace controller_base::follower {

// Keeps commands within the limits of speed, turn rate and their accelerations. The two are limited each by itself, as
// most robots' motor controllers do.
class CommandLimiter {
 public:
  // `parameters` must outlive the limiter.
  explicit CommandLimiter(const Parameters& parameters) : parameters_(parameters) {}

  // The robot is stopped, whatever it was told before.
  void Stop();

  // What comes nearest to `wanted` now, from the command before. A clock that stands still leaves that as it is.
  Command Limit(const Command& wanted);

  // Whether the command before was to stand still.
  bool IsStanding() const { return last_.speed == 0.0 && last_.turn_rate == 0.0; }

 private:
  double SecondsSinceLast();

  const Parameters& parameters_;
  Command last_;
  std::optional<ros::Time> last_time_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_COMMAND_LIMITER_H_
