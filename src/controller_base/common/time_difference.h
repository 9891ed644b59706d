#ifndef CONTROLLER_BASE_COMMON_TIME_DIFFERENCE_H_
#define CONTROLLER_BASE_COMMON_TIME_DIFFERENCE_H_

#include <ros/time.h>

#include <cstdint>

namespace nav_controller::internal {

// later - earlier in nanoseconds, negative when the order is the other way round. Holds for every pair of times, where
// the difference of two ros::Time throws from 2^31 seconds on.
inline std::int64_t NanosecondsBetween(const ros::Time& earlier, const ros::Time& later) {
  return static_cast<std::int64_t>(later.toNSec()) - static_cast<std::int64_t>(earlier.toNSec());
}

// The same in seconds, summed like a ros::Duration: whole seconds, rounded down, + nanoseconds * 1e-9.
inline double SecondsBetween(const ros::Time& earlier, const ros::Time& later) {
  constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
  const std::int64_t difference = NanosecondsBetween(earlier, later);
  std::int64_t seconds = difference / kNanosecondsPerSecond;
  std::int64_t nanoseconds = difference % kNanosecondsPerSecond;
  if (nanoseconds < 0) {
    nanoseconds += kNanosecondsPerSecond;
    --seconds;
  }
  return static_cast<double>(seconds) + static_cast<double>(nanoseconds) * 1e-9;
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_COMMON_TIME_DIFFERENCE_H_
