#ifndef CONTROLLER_BASE_FOLLOWER_PATH_GEOMETRY_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_GEOMETRY_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstddef>

#include "follower/geometry.h"

namespace controller_base::follower {

// Questions about a path alone. Lengths are planar metres along its poses.

// TrajectoryAnalyzer resamples a path so, and its indices count those poses.
constexpr double kTrackingSpacing = 0.05;  // m

double PathLength(const nav_msgs::Path& path);

// The poses up to the one at which the length along the path exceeds `length`, without it. The first pose always belongs
// to it.
nav_msgs::Path Beginning(const nav_msgs::Path& path, double length);

// The first pose after the very first that is at least `distance` from `robot` in a straight line, or the last pose.
// Requires a pose.
geometry_msgs::Point TargetOn(const nav_msgs::Path& path, const Pose2d& robot, double distance);

// The first pose at which the length along the path exceeds `distance`, or the last pose. Requires a pose.
geometry_msgs::Point TargetAlong(const nav_msgs::Path& path, double distance);

// Whether the path turns by more than 120 degrees, and so leads back beside itself, within its first 0.6 m. A turn
// counts when three poses lie before and after it.
bool TurnsBack(const nav_msgs::Path& path);

// The index of the first pose of `path` at exactly the position of `pose`; the number of poses when there is none.
std::ptrdiff_t IndexOf(const nav_msgs::Path& path, const geometry_msgs::PoseStamped& pose);

// From the robot straight to the beginning of `stretch` and along it, in poses as close as kTrackingSpacing. Empty when
// the stretch is.
nav_msgs::Path PathFromRobot(const geometry_msgs::PoseStamped& robot, const nav_msgs::Path& stretch);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_GEOMETRY_H_
