#include "demo/judge/verdict.h"

#include "follower/format.h"

namespace controller_base::demo {
namespace {

constexpr double kGoalTolerance = 0.25;  // m; the path may end kSnapDistance short of the goal

std::string GoalDistance(const simulation::DriveRecord& drive) {
  return follower::Format("%.2f m from the goal", drive.goal_distance);
}

}  // namespace

Verdict Judge(const simulation::DriveRecord& drive) {
  if (!IsOver(drive.outcome.state)) {
    return {DriveOutcome::kInterrupted, "interrupted"};
  }
  if (drive.outcome.state == follower::DriveState::kAborted) {
    return {DriveOutcome::kAborted, "given up " + GoalDistance(drive) + ": " + drive.outcome.reason};
  }
  if (drive.outcome.state != follower::DriveState::kReached || drive.goal_distance > kGoalTolerance) {
    return {DriveOutcome::kNotReached,
            "goal not reached, stopped " + GoalDistance(drive) + ": " + drive.outcome.reason};
  }
  if (drive.touched_seen > 0) {
    return {DriveOutcome::kTouched, "goal reached, but something was touched that the laser had seen or the map shows"};
  }
  return {DriveOutcome::kReached, "goal reached, nothing touched that the laser had seen"};
}

bool IsExplained(const follower::Outcome& outcome) {
  return outcome.cause == follower::StopCause::kRefused || outcome.cause == follower::StopCause::kContact;
}

}  // namespace controller_base::demo
