#include "robot/input_watch.h"

#include <cstdio>

namespace controller_base::robot {
namespace {

double Seconds(const ros::Time& from, const ros::Time& to) { return to.toSec() - from.toSec(); }

std::string Format(const char* format, double first, double second) {
  char text[128];
  std::snprintf(text, sizeof(text), format, first, second);
  return text;
}

}  // namespace

void InputWatch::Receive(const ros::Time& stamp, const ros::Time& now) {
  if (Seconds(last_arrival_, now) < 0.0) {
    last_stamp_ = ros::Time();  // the clock was set back
  }
  if (Seconds(stamp, now) > longest_delay_) {
    Reject(Format("it came %.2f s after its stamp; %.2f s are allowed", Seconds(stamp, now), longest_delay_));
  } else if (Seconds(now, stamp) > longest_delay_) {
    Reject(Format("its stamp lies %.2f s in the future; %.2f s are allowed", Seconds(now, stamp), longest_delay_));
  } else if (stamp <= last_stamp_) {
    Reject("its stamp stands still");
  } else {
    last_stamp_ = stamp;
    last_arrival_ = now;
    reason_.clear();
  }
}

std::optional<std::string> InputWatch::Problem(const ros::Time& now) const {
  const double age = Seconds(last_arrival_, now);
  if (!last_arrival_.isZero() && age >= 0.0 && age <= timeout_) {
    return std::nullopt;
  }
  std::string problem = last_arrival_.isZero()
                            ? name_ + ": none yet"
                            : name_ + Format(": none for %.2f s, since %.3f", age, last_arrival_.toSec());
  if (!reason_.empty()) {
    problem += "; the last one was of no use: " + reason_;
  }
  return problem;
}

std::optional<std::string> ClockWatch::Problem(const ros::Time& now, const ros::SteadyTime& wall) {
  if (now != last_time_ || !last_step_) {
    last_time_ = now;
    last_step_ = wall;
  }
  const double standing = (wall - *last_step_).toSec();
  if (now.isZero()) {
    return "clock: none yet";
  }
  if (standing <= timeout_) {
    return std::nullopt;
  }
  return Format("clock: stands still for %.2f s, at %.3f", standing, now.toSec());
}

}  // namespace controller_base::robot
