#ifndef CONTROLLER_BASE_DEMO_JUDGE_VERDICT_H_
#define CONTROLLER_BASE_DEMO_JUDGE_VERDICT_H_

#include <string>

#include "simulation/drive_record.h"

namespace controller_base::demo {

// What became of a drive.
enum class DriveOutcome {
  kReached,      // the goal, and nothing was touched that the laser had seen
  kTouched,      // the goal, but something was touched that the laser had seen or the map shows
  kNotReached,   // the robot stopped short of the goal
  kAborted,      // the robot gave up after too many contacts
  kInterrupted,  // somebody ended the drive
};

struct Verdict {
  DriveOutcome outcome;
  std::string text;  // one line
};

Verdict Judge(const simulation::DriveRecord& drive);

// Whether the follower could name what stopped it: a refusal of the planner, or a contact. A stall, a used-up budget, a
// clock that stands still and a local map without the robot are no such reason.
bool IsExplained(const follower::Outcome& outcome);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_VERDICT_H_
