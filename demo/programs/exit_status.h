#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_EXIT_STATUS_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_EXIT_STATUS_H_

#include "demo/judge/verdict.h"
#include "simulation/drive_plan.h"

namespace controller_base::demo {

// What the demo program leaves to the shell; demo_usage.txt says the same to the user.
enum class ExitStatus : int {
  kReached = 0,        // the goal was reached, and nothing that the laser had seen was touched
  kInternalError = 1,  // something that should not happen
  kBadArguments = 2,   // the command line
  kBadMap = 3,         // the map is missing or broken
  kBadStart = 4,       // the start is off the map or in a wall
  kBadGoal = 5,        // the goal is off the map
  kUnreachable = 6,    // there is no way to the goal
  kUnwritable = 7,     // the output folder or the bag
  kNoMaster = 8,       // no ROS master answers and none can be started
  kNoRviz = 9,         // RViz cannot be opened
  kNotReached = 10,    // the robot gave up: no progress
  kAborted = 11,       // the robot gave up: too many contacts
  kTouched = 12,       // the goal was reached, but something that the laser had seen was touched
  kUnexpected = 13,    // the drive did not go as its scenario file says
  kFellShort = 14,     // of many runs, one did what it should not
  kInterrupted = 130,  // Ctrl-C, or asked to end
};

ExitStatus StatusOf(DriveOutcome outcome);
ExitStatus StatusOf(simulation::DriveProblem problem);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_EXIT_STATUS_H_
