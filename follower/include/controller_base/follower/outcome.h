#ifndef CONTROLLER_BASE_FOLLOWER_OUTCOME_H_
#define CONTROLLER_BASE_FOLLOWER_OUTCOME_H_

#include <ros/time.h>

#include <optional>
#include <string>

namespace controller_base::follower {

// Why LocalPlanner::CreatePlan gave no detour. Some of these are worth another try and some are not.
enum class Refusal {
  kStartOffMap,        // the robot is not on its own local map: the localisation, or the map, is wrong
  kStartOccupied,      // the robot stands too near to an obstacle: it has to leave that first
  kStartInBox,         // likewise, in a virtual box
  kGoalOffMap,         // the stretch to rejoin is too long
  kGoalInBox,          // it ends in a virtual box, which is never repaired
  kFallBackTooNear,    // it ends on an obstacle, and the free place before that is within 30 cells of the robot
  kNowhereToFallBack,  // it ends on an obstacle, and no pose of it is free
  kNoPath,             // the search found nothing: the corridor is too narrow, or there is no path at all
};

// How a drive stands.
enum class DriveState {
  kIdle,     // there is no path yet
  kDriving,  // on its path, on a detour, or away from something that it touched
  kBlocked,  // the path is blocked and the planner refuses detours: the robot waits and tries again
  kLost,     // the local map does not show the robot or its path: the robot waits

  // The drive is over and the robot stands.
  kReached,       // on the path's last pose
  kStalled,       // it came no farther than 0.2 m in 20 s
  kOverBudget,    // it used up three times the path's length or time
  kAborted,       // ten contacts without getting away
  kClockStopped,  // the clock stood still
  kCancelled,     // by Cancel
};

// Whether the robot will not move again on this path.
constexpr bool IsOver(DriveState state) { return state >= DriveState::kReached; }

// What ended a drive: what kept the robot from getting on, as far as the follower knows it.
enum class StopCause {
  kNone,       // it is not over
  kArrived,    // nothing: the goal is reached
  kRefused,    // the path was blocked, and the planner refused detours
  kContact,    // something that was touched
  kLost,       // the local map did not show the robot or its path
  kStall,      // unknown; it did not move
  kBudget,     // unknown; distance or time ran out
  kClock,      // the clock stood still
  kCancelled,  // Cancel
};

// One or two words, "driving" or "over budget".
const char* Name(DriveState state);

// One word, such as "refused".
const char* Name(StopCause cause);

// What became of a drive so far.
struct Outcome {
  DriveState state = DriveState::kIdle;
  ros::Time since;                     // when the state began
  StopCause cause = StopCause::kNone;  // set when the drive is over
  std::optional<Refusal> refusal;      // the last one, while the robot waits for it and when that ended the drive
  std::string reason;                  // why the robot waits or the drive ended, one line; empty while driving
  std::string summary;                 // its beginning: what hindered the robot, without the progress checker's figures
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_OUTCOME_H_
