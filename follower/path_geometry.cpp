#include "follower/path_geometry.h"

#include <algorithm>
#include <cmath>

#include "controller_base/path_interpolation.h"

namespace controller_base::follower {
namespace {

constexpr double kTurnBack = 120 * kPi / 180;  // rad
constexpr double kTurnBackHorizon = 0.6;       // m
constexpr std::size_t kTurnArm = 3;            // poses before and after a turn

}  // namespace

double PathLength(const nav_msgs::Path& path) {
  double length = 0.0;
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    length += Distance(path.poses[i - 1].pose.position, path.poses[i].pose.position);
  }
  return length;
}

nav_msgs::Path Beginning(const nav_msgs::Path& path, double length) {
  nav_msgs::Path beginning;
  beginning.header = path.header;
  double driven = 0.0;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    if (!beginning.poses.empty()) {
      driven += Distance(beginning.poses.back().pose.position, pose.pose.position);
    }
    if (driven > length) {
      break;
    }
    beginning.poses.push_back(pose);
  }
  return beginning;
}

geometry_msgs::Point TargetOn(const nav_msgs::Path& path, const Pose2d& robot, double distance) {
  const auto is_far = [&](const geometry_msgs::PoseStamped& pose) {
    return Distance(robot, pose.pose.position) >= distance;
  };
  const auto second = path.poses.begin() + (path.poses.size() > 1 ? 1 : 0);
  const auto target = std::find_if(second, path.poses.end(), is_far);
  return (target != path.poses.end() ? *target : path.poses.back()).pose.position;
}

geometry_msgs::Point TargetAlong(const nav_msgs::Path& path, double distance) {
  const nav_msgs::Path nearer = Beginning(path, distance);
  return path.poses[std::min(nearer.poses.size(), path.poses.size() - 1)].pose.position;
}

bool TurnsBack(const nav_msgs::Path& path) {
  const nav_msgs::Path near = Beginning(path, kTurnBackHorizon);
  for (std::size_t i = kTurnArm; i + kTurnArm < near.poses.size(); ++i) {
    const double before = Direction(near.poses[i - kTurnArm + 1].pose.position, near.poses[i].pose.position);
    const double after = Direction(near.poses[i].pose.position, near.poses[i + kTurnArm].pose.position);
    if (std::abs(NormalizeAngle(after - before)) > kTurnBack) {
      return true;
    }
  }
  return false;
}

std::ptrdiff_t IndexOf(const nav_msgs::Path& path, const geometry_msgs::PoseStamped& pose) {
  const auto is_same = [&](const geometry_msgs::PoseStamped& other) {
    return Distance(pose.pose.position, other.pose.position) == 0.0;
  };
  return std::find_if(path.poses.begin(), path.poses.end(), is_same) - path.poses.begin();
}

nav_msgs::Path PathFromRobot(const geometry_msgs::PoseStamped& robot, const nav_msgs::Path& stretch) {
  nav_msgs::Path path = stretch;
  if (!stretch.poses.empty()) {
    path.poses.insert(path.poses.begin(), robot);
  }
  return nav_core::math::LinearInterpolation(path, kTrackingSpacing);
}

}  // namespace controller_base::follower
