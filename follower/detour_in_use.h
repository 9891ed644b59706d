#ifndef CONTROLLER_BASE_FOLLOWER_DETOUR_IN_USE_H_
#define CONTROLLER_BASE_FOLLOWER_DETOUR_IN_USE_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <memory>
#include <optional>

#include "controller_base/follower/command.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/follower/report.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"
#include "follower/path_tracker.h"
#include "follower/reporter.h"

namespace controller_base::follower {

// The detour that the robot drives along, if it does: how far it has come on it, and since when it is blocked.
class DetourInUse {
 public:
  // The arguments must outlive the detour.
  DetourInUse(const Parameters& parameters, const Reporter& reporter)
      : parameters_(parameters), reporter_(reporter), tracker_(parameters) {}

  // Takes `detour`, from its beginning, and tells of it.
  void Start(const DetourReport& detour);
  void Drop() { report_.reset(); }

  bool IsDriven() const { return report_ != nullptr; }

  // Null unless a detour is driven; what follows may be asked only then.
  const std::shared_ptr<const DetourReport>& report() const { return report_; }
  // Where it leads back to the path.
  const geometry_msgs::Point& end() const { return tracker_.goal(); }

  // One cycle. Returns the detour's stretch ahead, as far as the local map reaches.
  nav_msgs::Path Track(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
    return tracker_.Track(robot, map);  // a detour is tracked like a path
  }

  // Whether the robot is back on its path, `ahead` being the stretch ahead of it.
  bool IsDone(const Pose2d& robot, const nav_msgs::Path& ahead) const;

  // Whether the detour has been blocked for longer than noise in the map would explain; `blocked` is the run of poses
  // that is blocked now, without a pose when none is. To be asked in each cycle.
  bool IsBlockedForLong(const nav_msgs::Path& blocked);

  // Whether the robot has done little more than turn for longer than a whole turn takes: noise opens and closes the line
  // to its next pose. One that does not even turn is stuck, which is no matter of the detour. To be asked in each cycle.
  bool GetsNowhere(const Pose2d& robot, const Command& command);

 private:
  void RestartHeadway();

  const Parameters& parameters_;
  const Reporter& reporter_;
  PathTracker tracker_;
  std::shared_ptr<const DetourReport> report_;
  std::optional<ros::Time> blocked_since_;
  ros::Time headway_since_;
  double headway_ = 0.0;  // m, as commanded since then
  double turned_ = 0.0;   // rad, to either side, since then
  ros::Time last_cycle_;
  double last_yaw_ = 0.0;  // rad
  bool gets_nowhere_ = false;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_DETOUR_IN_USE_H_
