#ifndef CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_
#define CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/Pose.h>

#include <cmath>

#include "controller_base/follower/pose2d.h"

namespace controller_base::follower {

constexpr double kPi = 3.14159265358979323846;

// The functions below take anything that has an x and a y.

template <typename A, typename B>
double Distance(const A& a, const B& b) {
  return std::hypot(b.x - a.x, b.y - a.y);
}

// The direction from `a` to `b`, radians in [-pi, pi].
template <typename A, typename B>
double Direction(const A& a, const B& b) {
  return std::atan2(b.y - a.y, b.x - a.x);
}

// The point `distance` metres from `from` in `direction` (radians); z = 0.
template <typename From>
geometry_msgs::Point PointAt(const From& from, double direction, double distance) {
  geometry_msgs::Point point;
  point.x = from.x + distance * std::cos(direction);
  point.y = from.y + distance * std::sin(direction);
  return point;
}

// The same angle within [-pi, pi].
inline double NormalizeAngle(double angle) { return std::remainder(angle, 2.0 * kPi); }

// The heading of a pose that is upright.
inline Pose2d ToPose2d(const geometry_msgs::Pose& pose) {
  return {pose.position.x, pose.position.y, 2.0 * std::atan2(pose.orientation.z, pose.orientation.w)};
}

inline geometry_msgs::Point PositionOf(const Pose2d& pose) {
  geometry_msgs::Point point;
  point.x = pose.x;
  point.y = pose.y;
  return point;
}

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_
