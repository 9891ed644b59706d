#ifndef CONTROLLER_BASE_ROBOT_INPUT_WATCH_H_
#define CONTROLLER_BASE_ROBOT_INPUT_WATCH_H_

#include <ros/time.h>

#include <optional>
#include <string>
#include <utility>

namespace controller_base::robot {

// Whether an input still comes, and is usable.
class InputWatch {
 public:
  // `timeout` seconds without a usable message are too many; a message that is more than `longest_delay` seconds old
  // when it arrives is not usable.
  InputWatch(std::string name, double timeout, double longest_delay)
      : name_(std::move(name)), timeout_(timeout), longest_delay_(longest_delay) {}

  // A message arrived `now`. One whose stamp is not newer than the last one's tells nothing new and does not count.
  void Receive(const ros::Time& stamp, const ros::Time& now);

  // A message arrived, and is of no use for that reason.
  void Reject(const std::string& reason) { reason_ = reason; }

  // What is wrong with the input: its name, since when nothing usable came, and why where that is known. No value when
  // all is well. A clock that was set back makes the input begin anew.
  std::optional<std::string> Problem(const ros::Time& now) const;

 private:
  std::string name_;
  double timeout_;        // s
  double longest_delay_;  // s
  ros::Time last_stamp_;
  ros::Time last_arrival_;  // zero: nothing usable came yet
  std::string reason_;      // why the last message was of no use; empty when it was
};

// Whether the ROS clock goes on, by the clock on the wall.
class ClockWatch {
 public:
  explicit ClockWatch(double timeout) : timeout_(timeout) {}

  // Call it often. What is wrong with the clock; no value when it goes on.
  std::optional<std::string> Problem(const ros::Time& now, const ros::SteadyTime& wall);

 private:
  double timeout_;  // s
  ros::Time last_time_;
  std::optional<ros::SteadyTime> last_step_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_INPUT_WATCH_H_
