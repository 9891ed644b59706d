#ifndef CONTROLLER_BASE_FOLLOWER_PATH_TRACKER_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_TRACKER_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstdint>

#include "controller_base/control_progress.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/trajectory_analyzer.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// Where the robot is on the path that it follows, what of it lies ahead, and whether that is the end.
class PathTracker {
 public:
  // `parameters` must outlive the tracker.
  explicit PathTracker(const Parameters& parameters) : parameters_(parameters), analyzer_(nav_msgs::Path()) {}

  // Tracks `path`, which has a pose, from its beginning.
  void Start(const nav_msgs::Path& path);

  // Tracks `path`, which has a pose, instead of the one before: from where the robot is on the beginning that both
  // share, be it all that is driven already or a part of it; from its beginning when they share none.
  void Continue(const nav_msgs::Path& path);

  // Whether the rest of the path passes within `distance` metres of `point`.
  bool LeadsPast(const geometry_msgs::Point& point, double distance) const;

  // The path's length and time budget; nothing driven yet.
  nav_controller::ControlProgress Budget();

  // One cycle. Returns the path's stretch ahead, as far as the local map reaches.
  nav_msgs::Path Track(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);

  // Walks the index along `stretch` as far as `end`, a cell's width off at most. The index looks only a few poses
  // ahead: where a detour cuts off a bend it would stay behind, and lead the robot back to the bend's beginning.
  void WalkAlong(const nav_msgs::Path& stretch, const geometry_msgs::Point& end, double cell);

  // Whether the robot stands on the path's last pose, `ahead` being the stretch to it. The goal may be near while the path
  // still leads around elsewhere: the rest of the path must be short as well.
  bool HasArrived(const Pose2d& robot, const nav_msgs::Path& ahead) const;

  // Whether the path's last pose belongs to `ahead`.
  bool EndsAtGoal(const nav_msgs::Path& ahead) const;

  const geometry_msgs::Point& goal() const { return goal_; }
  // On the resampled path.
  std::uint64_t index() const { return analyzer_.GetCurrentIndex(); }
  std::uint64_t size() const { return analyzer_.GetPathSize(); }
  // m, from the path.
  double deviation() const { return deviation_; }

 private:
  const Parameters& parameters_;
  nav_controller::TrajectoryAnalyzer analyzer_;
  nav_msgs::Path path_;        // as the analyzer resamples it: its indices are the analyzer's
  geometry_msgs::Point goal_;  // the path's last pose
  double deviation_ = 0.0;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_TRACKER_H_
