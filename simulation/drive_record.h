#ifndef CONTROLLER_BASE_SIMULATION_DRIVE_RECORD_H_
#define CONTROLLER_BASE_SIMULATION_DRIVE_RECORD_H_

#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <cstdint>
#include <string>
#include <vector>

#include "controller_base/follower/command.h"
#include "controller_base/follower/outcome.h"
#include "controller_base/follower/report.h"
#include "follower/geometry.h"

namespace controller_base::simulation {

// The drive's clock starts here.
constexpr double kStartTime = 100.0;  // s

// Seconds since the drive began.
inline double DriveTime(const ros::Time& stamp) { return (stamp - ros::Time(kStartTime)).toSec(); }

// One control cycle.
struct TrajectorySample {
  double time;  // s since the drive began, whatever the robot's clock says
  follower::Pose2d pose;
  follower::Command motion;  // what the wheels did
  std::uint64_t index;       // on the path
  double deviation;          // m from the path
  std::string state;         // what the follower was doing
  double distance_ratio;     // driven over the path's length
  double time_ratio;         // time over the path's budget
};

// All that is known of a drive when it is over.
struct DriveRecord {
  nav_msgs::Path path;
  std::vector<TrajectorySample> trajectory;
  std::vector<follower::Event> events;
  std::vector<follower::DetourReport> detours;
  std::vector<follower::VirtualBox> boxes;
  int contacts = 0;            // times that the bumper was pressed anew
  int touched_seen = 0;        // of these, against something on the map or seen by the laser
  double driven = 0.0;         // m
  double goal_distance = 0.0;  // m, where the robot stopped
  follower::Outcome outcome;   // the follower's; one that is not over was interrupted
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_DRIVE_RECORD_H_
