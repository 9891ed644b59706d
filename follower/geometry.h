#ifndef CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_
#define CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_

#include <cmath>
#include <cstddef>

namespace controller_base_demo {

constexpr double kPi = 3.14159265358979323846;

// Where the robot stands and looks: metres, and radians counter-clockwise from the x axis.
struct Pose2d {
  double x = 0.0;
  double y = 0.0;
  double yaw = 0.0;
};

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

// Metres along a nav_msgs::Path.
template <typename Path>
double PathLength(const Path& path) {
  double length = 0.0;
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    length += Distance(path.poses[i - 1].pose.position, path.poses[i].pose.position);
  }
  return length;
}

// The same angle within [-pi, pi].
inline double NormalizeAngle(double angle) { return std::remainder(angle, 2.0 * kPi); }

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_GEOMETRY_H_
