#ifndef CONTROLLER_BASE_TRAJECTORY_ANALYZER_H_
#define CONTROLLER_BASE_TRAJECTORY_ANALYZER_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/Pose.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstdint>

#include "controller_base/control_progress.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller {

using LocalMap = costmap_2d::Costmap2D;

// Holds the path that the robot follows, resampled to less than 0.05 m between poses, and tracks where the robot is
// along it.
//
//   TrajectoryAnalyzer analyzer(path);              // or InitializePath(path) when a new one arrives
//   ControlProgress progress;
//   analyzer.GenerateControllProgress(&progress);   // once per path, for ControllerProgressChecker::Reset
//   analyzer.UpdateIndex(robot_pose);               // every cycle
//   nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&local_map);
//
// Distances are planar metres in the path's frame; z is carried, never measured. One analyzer belongs to one thread.
class TrajectoryAnalyzer {
 public:
  explicit TrajectoryAnalyzer(const nav_msgs::Path& path);

  // Replaces the stored path by the resampled `path` and starts tracking at index 0. A path without poses is ignored:
  // the stored path and the tracking stay as they are.
  //
  // Deliberately odd: the w of every orientation is set to 1 before resampling while x, y and z stay, so stored
  // orientations are only meaningful for inputs that agree with that.
  void InitializePath(const nav_msgs::Path& path);

  // Whether a path with at least one pose is stored.
  bool IsPathInitialized() const { return !path_.poses.empty(); }

  // Number of stored poses, counted after resampling.
  std::uint64_t GetPathSize() const { return path_.poses.size(); }

  // Index of the first pose of the segment nearest to the robot, as of the last UpdateIndex; never the path's last pose
  // when there are two or more.
  std::uint64_t GetCurrentIndex() const { return current_index_; }

  // Moves the current index to the nearest of the segments within 10 poses behind and ahead of it; of equals the
  // earlier wins. The index therefore cannot jump to a later part of the path that passes close by; a robot that moved
  // farther is followed by at most 10 poses a call. Logs one WARN when the robot comes farther than 0.3 m from the
  // path, the next only after it was back. A path of one pose has no segment and counts as infinitely far. Without a
  // path nothing happens.
  void UpdateIndex(const geometry_msgs::PoseStamped& robot_pose);

  // Planar distance in metres (never negative) from `p` to the closed segment a-b; z is ignored. Ends nearer to each
  // other than 1e-6 m count as the one point `a`. Any frame will do, as long as all three share it.
  double DistanceToPathSegment(const geometry_msgs::Point& p, const geometry_msgs::Pose& a,
                               const geometry_msgs::Pose& b) const;

  // The first pose's position (not the perpendicular's foot) of the segment nearest to `p` on the whole path; of equals
  // the earlier wins. Requires a stored path; costs one distance per segment.
  geometry_msgs::Point QueryNearestPoint(const geometry_msgs::Point& p) const;

  // Reserved: both compute nothing and return (0, 0, 0).
  geometry_msgs::Point QueryNearestTarget(double, double, double) const;
  geometry_msgs::Point QueryNearestTarget(const geometry_msgs::PoseStamped&, double) const;

  // Writes the stored path's length to `total_distance` and the time it may take at 0.12 m/s, but at least that of one
  // metre, to `total_time`; leaves the other fields alone. Requires a stored path.
  void GenerateControllProgress(ControlProgress* progress);

  // The stored poses from the current index on that lie on the map, up to an arc length of half the map's longer side +
  // 0.15 m; poses off the map are left out but their length counts. The header is the path's, stamped with the current
  // time. A path whose frame is not exactly "map" gives an entirely empty path and an ERROR line.
  nav_msgs::Path PathTransformToLocalMap(const LocalMap* map) const;

 private:
  struct NearestSegment {
    std::uint64_t index;  // of the segment's first pose
    double distance;      // metres
  };

  // Looks at the segments first .. last - 1; of equals the earlier wins. Nothing to look at: {otherwise, largest
  // double}.
  NearestSegment Nearest(const geometry_msgs::Point& p, std::uint64_t first, std::uint64_t last,
                         std::uint64_t otherwise) const;

  std::uint64_t current_index_ = 0;
  double deviation_threshold_ = 0.3;  // metres
  std::uint64_t search_range_ = 10;   // poses behind and ahead of the current index
  bool is_deviated_ = false;          // makes the warning fire once per excursion
  nav_msgs::Path path_;               // resampled
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_TRAJECTORY_ANALYZER_H_
