#include "follower/input_watchdog.h"

#include <utility>

#include "follower/format.h"

namespace controller_base::follower {
namespace {

// Cycles with the same time.
constexpr int kStillCycles = 20;      // the clock stands still
constexpr int kLastStillCycle = 600;  // it is given up

}  // namespace

void InputWatchdog::Reset() {
  last_clock_ = ros::Time::now();
  still_cycles_ = 0;
  last_pose_.reset();
}

bool InputWatchdog::IsClockStill() const { return still_cycles_ >= kStillCycles; }

InputWatchdog::Clock InputWatchdog::WatchClock(const Pose2d& robot) {
  const ros::Duration step = ros::Time::now() - last_clock_;
  last_clock_ = ros::Time::now();
  if (step.isZero()) {
    ++still_cycles_;
    if (still_cycles_ == kStillCycles) {
      reporter_.Tell(EventKind::kClock, robot, "the clock stands still: waiting for it");
    }
    return still_cycles_ >= kLastStillCycle ? Clock::kHasStoodStill
           : IsClockStill()                 ? Clock::kStandsStill
                                            : Clock::kRuns;
  }
  const bool has_stood_still = std::exchange(still_cycles_, 0) >= kStillCycles;
  if (has_stood_still || step < ros::Duration(0.0) || step > ros::Duration(parameters_.longest_clock_step)) {
    reporter_.Tell(EventKind::kClock, robot,
                   has_stood_still
                       ? "the clock goes on: contacts and progress start over"
                       : Format("the clock jumped by %+.2f s: contacts and progress start over", step.toSec()));
    last_pose_.reset();
    return Clock::kJumped;
  }
  return Clock::kRuns;
}

bool InputWatchdog::WatchPose(const Pose2d& robot) {
  const std::optional<Pose2d> before = std::exchange(last_pose_, robot);
  const double step = before ? Distance(*before, robot) : 0.0;
  if (!(step > parameters_.longest_pose_step)) {
    return false;
  }
  reporter_.Tell(EventKind::kPose, robot, Format("the pose jumped by %.2f m: back to the path from there", step));
  return true;
}

}  // namespace controller_base::follower
