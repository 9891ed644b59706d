#ifndef CONTROLLER_BASE_FOLLOWER_COMMAND_H_
#define CONTROLLER_BASE_FOLLOWER_COMMAND_H_

namespace controller_base::follower {

// What the wheels are told.
struct Command {
  double speed = 0.0;      // m/s, negative: backwards
  double turn_rate = 0.0;  // rad/s, positive: counter-clockwise
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_COMMAND_H_
