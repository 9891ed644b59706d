#ifndef CONTROLLER_BASE_FOLLOWER_INPUT_WATCHDOG_H_
#define CONTROLLER_BASE_FOLLOWER_INPUT_WATCHDOG_H_

#include <ros/time.h>

#include <optional>
#include <string>

#include "controller_base/follower/parameters.h"
#include "follower/geometry.h"
#include "follower/reporter.h"

namespace controller_base::follower {

// Notices when the clock or the robot's pose jumps or the clock stands still. What was measured across such a jump is
// wrong.
class InputWatchdog {
 public:
  // `parameters` and `reporter` must outlive the watchdog.
  InputWatchdog(const Parameters& parameters, const Reporter& reporter)
      : parameters_(parameters), reporter_(reporter) {}

  // The clock runs from now on, and the next pose is the first.
  void Reset();

  enum class Clock {
    kRuns,
    kJumped,         // by more than a cycle, or it goes on after it stood still
    kStandsStill,    // for a second at 20 Hz: nothing can be measured
    kHasStoodStill,  // for half a minute at 20 Hz: it is not coming back
  };
  // Reads the clock, once a cycle; reports when the result changes.
  Clock WatchClock(const Pose2d& robot);

  // Whether the pose jumped since the cycle before; tells so. Not after a clock that jumped.
  bool WatchPose(const Pose2d& robot);

  bool IsClockStill() const;
  // Cycles during which the clock has stood still.
  int still_cycles() const { return still_cycles_; }

 private:
  const Parameters& parameters_;
  const Reporter& reporter_;
  ros::Time last_clock_;  // in the cycle before
  int still_cycles_ = 0;
  std::optional<Pose2d> last_pose_;  // in the cycle before
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_INPUT_WATCHDOG_H_
