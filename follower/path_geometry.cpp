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
  double way = 0.0;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    if (!beginning.poses.empty()) {
      way += Distance(beginning.poses.back().pose.position, pose.pose.position);
    }
    if (way > length) {
      break;
    }
    beginning.poses.push_back(pose);
  }
  return beginning;
}

geometry_msgs::Point TargetOn(const nav_msgs::Path& way, const Pose2d& robot, double distance) {
  const auto is_far = [&](const geometry_msgs::PoseStamped& pose) {
    return Distance(robot, pose.pose.position) >= distance;
  };
  const auto second = way.poses.begin() + (way.poses.size() > 1 ? 1 : 0);
  const auto target = std::find_if(second, way.poses.end(), is_far);
  return (target != way.poses.end() ? *target : way.poses.back()).pose.position;
}

geometry_msgs::Point TargetAlong(const nav_msgs::Path& way, double distance) {
  const nav_msgs::Path nearer = Beginning(way, distance);
  return way.poses[std::min(nearer.poses.size(), way.poses.size() - 1)].pose.position;
}

bool TurnsBack(const nav_msgs::Path& way) {
  const nav_msgs::Path near = Beginning(way, kTurnBackHorizon);
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

nav_msgs::Path WayBack(const geometry_msgs::PoseStamped& robot, const nav_msgs::Path& stretch) {
  nav_msgs::Path way = stretch;
  if (!stretch.poses.empty()) {
    way.poses.insert(way.poses.begin(), robot);
  }
  return nav_core::math::LinearInterpolation(way, kTrackingSpacing);
}

}  // namespace controller_base::follower
