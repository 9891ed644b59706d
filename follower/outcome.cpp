#include "controller_base/follower/outcome.h"

namespace controller_base::follower {

const char* Name(DriveState state) {
  switch (state) {
    case DriveState::kIdle:
      return "idle";
    case DriveState::kDriving:
      return "driving";
    case DriveState::kBlocked:
      return "blocked";
    case DriveState::kLost:
      return "lost";
    case DriveState::kReached:
      return "reached";
    case DriveState::kStalled:
      return "stalled";
    case DriveState::kOverBudget:
      return "over budget";
    case DriveState::kAborted:
      return "aborted";
    case DriveState::kClockStopped:
      return "clock stopped";
    case DriveState::kCancelled:
      return "cancelled";
  }
  return "unknown";
}

const char* Name(StopCause cause) {
  switch (cause) {
    case StopCause::kNone:
      return "none";
    case StopCause::kArrived:
      return "arrived";
    case StopCause::kRefused:
      return "refused";
    case StopCause::kContact:
      return "contact";
    case StopCause::kLost:
      return "lost";
    case StopCause::kStall:
      return "stall";
    case StopCause::kBudget:
      return "budget";
    case StopCause::kClock:
      return "clock";
    case StopCause::kCancelled:
      return "cancelled";
  }
  return "unknown";
}

}  // namespace controller_base::follower
