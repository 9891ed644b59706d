#include "demo/programs/exit_status.h"

namespace controller_base_demo {

ExitStatus StatusOf(DriveOutcome outcome) {
  switch (outcome) {
    case DriveOutcome::kReached:
      return ExitStatus::kReached;
    case DriveOutcome::kTouched:
      return ExitStatus::kTouched;
    case DriveOutcome::kNotReached:
      return ExitStatus::kNotReached;
    case DriveOutcome::kAborted:
      return ExitStatus::kAborted;
    case DriveOutcome::kInterrupted:
      return ExitStatus::kInterrupted;
  }
  return ExitStatus::kInternalError;
}

ExitStatus StatusOf(DriveProblem problem) {
  switch (problem) {
    case DriveProblem::kMap:
      return ExitStatus::kBadMap;
    case DriveProblem::kStart:
      return ExitStatus::kBadStart;
    case DriveProblem::kGoal:
      return ExitStatus::kBadGoal;
    case DriveProblem::kUnreachable:
      return ExitStatus::kUnreachable;
  }
  return ExitStatus::kInternalError;
}

}  // namespace controller_base_demo
