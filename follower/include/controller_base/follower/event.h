#ifndef CONTROLLER_BASE_FOLLOWER_EVENT_H_
#define CONTROLLER_BASE_FOLLOWER_EVENT_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace controller_base::follower {

// What happened.
enum class EventKind {
  kPath,       // a new path to follow
  kNoPath,     // there is no path to a goal; told by who plans, not by the follower
  kNoBox,      // a box that somebody drops is not taken; told likewise
  kProgress,   // where the robot is, now and then
  kDeviation,  // it came far from its path, or is back
  kBlocked,    // the path, or the detour, is blocked
  kFree,       // the path is free again
  kRefused,    // the planner gave no detour
  kCorridor,   // how wide the corridor of the detour is
  kRepair,     // the detour ends before an occupied local goal
  kDetour,     // a detour begins
  kRejoined,   // it is done
  kContact,    // the bumper was pressed
  kTurn,       // backed off, and turns now
  kBox,        // virtual boxes were dropped
  kForget,     // all of them were removed
  kLost,       // the local map does not show the robot or its path
  kPose,       // the localisation jumped
  kClock,      // the clock jumped or stands still
  kArrival,    // the goal is reached
  kStop,       // the drive ended short of it
};

// One or two words: "contact", "no path". No two kinds share a name.
const char* Name(EventKind kind);

// The kind of that name, if there is one.
std::optional<EventKind> EventKindOf(std::string_view name);

// The names of all kinds.
std::vector<std::string> EventKindNames();

// Something worth telling happened.
struct Event {
  ros::Time stamp;
  EventKind kind;
  geometry_msgs::Point position;  // where, map frame
  std::string text;               // one line
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_EVENT_H_
