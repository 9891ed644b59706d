#ifndef TEST_SUPPORT_PATHS_H_
#define TEST_SUPPORT_PATHS_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Quaternion.h>
#include <nav_msgs/Path.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

namespace controller_base_test {

struct Xy {
  double x;
  double y;
};

inline std::ostream& operator<<(std::ostream& out, const Xy& point) {
  return out << "{" << point.x << ", " << point.y << "}";
}

inline geometry_msgs::Point PointAt(double x, double y, double z = 0.0) {
  geometry_msgs::Point point;
  point.x = x;
  point.y = y;
  point.z = z;
  return point;
}

inline geometry_msgs::Quaternion QuaternionOf(double x, double y, double z, double w) {
  geometry_msgs::Quaternion quaternion;
  quaternion.x = x;
  quaternion.y = y;
  quaternion.z = z;
  quaternion.w = w;
  return quaternion;
}

// `yaw` in radians.
inline geometry_msgs::Quaternion Heading(double yaw) {
  return QuaternionOf(0.0, 0.0, std::sin(yaw / 2), std::cos(yaw / 2));
}

// A pose in `frame`, stamped zero.
inline geometry_msgs::PoseStamped PoseAt(double x, double y, double yaw = 0.0, const std::string& frame = "map") {
  geometry_msgs::PoseStamped pose;
  pose.header.frame_id = frame;
  pose.pose.position = PointAt(x, y);
  pose.pose.orientation = Heading(yaw);
  return pose;
}

// A path in `frame` through these points, every pose heading along x.
inline nav_msgs::Path PathOf(const std::vector<Xy>& points, const std::string& frame = "map") {
  nav_msgs::Path path;
  path.header.frame_id = frame;
  for (const Xy& point : points) {
    path.poses.push_back(PoseAt(point.x, point.y, 0.0, frame));
  }
  return path;
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_PATHS_H_
