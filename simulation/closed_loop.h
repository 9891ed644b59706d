#ifndef CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_
#define CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_

#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "demo/programs/exit_status.h"
#include "demo/scenario/scenario.h"
#include "follower/command.h"
#include "follower/follower_report.h"
#include "follower/geometry.h"
#include "simulation/drive_observer.h"
#include "simulation/progress.h"

namespace controller_base_demo {

// One control cycle.
struct TrajectorySample {
  double time;  // s since the drive began, whatever the robot's clock says
  Pose2d pose;
  Command motion;         // what the wheels did
  std::uint64_t index;    // on the path
  double deviation;       // m from the path
  std::string state;      // what the follower was doing
  double distance_ratio;  // driven over the path's length
  double time_ratio;      // time over the path's budget
};

// All that is known of a drive when it is over.
struct DriveRecord {
  nav_msgs::Path path;
  std::vector<TrajectorySample> trajectory;
  std::vector<Event> events;
  std::vector<DetourReport> detours;
  std::vector<VirtualBox> boxes;
  int contacts = 0;            // times that the bumper was pressed anew
  int touched_seen = 0;        // of these, against something on the map or seen by the laser
  double driven = 0.0;         // m
  double goal_distance = 0.0;  // m, where the robot stopped
  ExitStatus status = ExitStatus::kNotReached;
  std::string verdict;  // one line
};

// The drive's clock starts here.
constexpr double kStartTime = 100.0;  // s

// Seconds since the drive began.
inline double DriveTime(const ros::Time& stamp) { return (stamp - ros::Time(kStartTime)).toSec(); }

// A scenario that cannot be driven.
class DriveError : public std::runtime_error {
 public:
  DriveError(ExitStatus status, const std::string& what) : std::runtime_error(what), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

constexpr double kLongestDrive = 10'000.0;  // m; a drive of six hours or more

// Checks start and goal, and searches the path or takes the drawn one. Throws DriveError when the map's cells are far
// too small or large to drive on, when the start is off the map or in a wall, when the goal is off the map, when there
// is no way from one to the other, and when the path is longer than kLongestDrive.
nav_msgs::Path PlanDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const Progress& progress = {});

// Drives along `path` through the scenario's world on `map`, 20 cycles a second of the ROS clock, which it sets,
// watched by `observers`. Ends early when `stop` becomes true, with the status kInterrupted. `interaction` may be null;
// without it the same arguments give the same record. What people put off the map is refused, with an event. Needs what
// PathFollower needs.
DriveRecord RunDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const nav_msgs::Path& path,
                     const std::vector<DriveObserver*>& observers, const std::atomic<bool>& stop,
                     Interaction* interaction = nullptr);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_
