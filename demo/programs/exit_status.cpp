#include "demo/programs/exit_status.h"

namespace controller_base::demo {

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

ExitStatus StatusOf(simulation::DriveProblem problem) {
  switch (problem) {
    case simulation::DriveProblem::kMap:
      return ExitStatus::kBadMap;
    case simulation::DriveProblem::kStart:
      return ExitStatus::kBadStart;
    case simulation::DriveProblem::kGoal:
      return ExitStatus::kBadGoal;
    case simulation::DriveProblem::kUnreachable:
      return ExitStatus::kUnreachable;
  }
  return ExitStatus::kInternalError;
}

}  // namespace controller_base::demo
