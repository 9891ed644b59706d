#ifndef CONTROLLER_BASE_FOLLOWER_REPORT_H_
#define CONTROLLER_BASE_FOLLOWER_REPORT_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <vector>

#include "controller_base/follower/event.h"
#include "controller_base/follower/local_map_view.h"
#include "controller_base/follower/pose2d.h"

namespace controller_base::follower {

// A virtual box: 0.2 m along its heading, 0.1 m across it.
struct VirtualBox {
  geometry_msgs::Point center;
  double heading = 0.0;  // rad
};

// The run of a path's poses that is blocked, and the two points beside its middle that tell whether a side is open.
struct Blockage {
  nav_msgs::Path run;
  geometry_msgs::Point left;
  geometry_msgs::Point right;
  bool is_bilateral = false;  // no side is open
};

// All that led to a detour.
struct DetourReport {
  ros::Time stamp;
  Pose2d robot;
  LocalMapData map;                  // the local map at that moment
  nav_msgs::OccupancyGrid corridor;  // 0 inside, 100 outside; the local map's cells
  std::vector<VirtualBox> boxes;
  nav_msgs::Path path;     // the stretch ahead that the planner was given; its last pose is the local goal
  nav_msgs::Path blocked;  // the run of the path's poses that is blocked
  nav_msgs::Path detour;
  bool goal_repaired = false;  // the local goal is occupied, and the detour ends at an earlier pose of the path
  bool smoothed = false;
};

// Hears what a PathFollower does, on the follower's thread.
class FollowerObserver {
 public:
  virtual ~FollowerObserver() = default;
  virtual void OnEvent(const Event& event) = 0;
  virtual void OnDetour(const DetourReport& detour) = 0;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_REPORT_H_
