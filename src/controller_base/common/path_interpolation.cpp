#include "controller_base/path_interpolation.h"

#include <geometry_msgs/PoseStamped.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "controller_base/internal/planar_distance.h"

namespace nav_core::math {
namespace {

using geometry_msgs::PoseStamped;

double Blend(double a, double b, double t) { return (1.0 - t) * a + t * b; }

// How many poses go between `a` and `b`. A quotient that no 32-bit count holds, NaN included, gives none.
std::int32_t InsertionCount(const PoseStamped& a, const PoseStamped& b, double spacing) {
  const double quotient = nav_controller::internal::PlanarDistance(a.pose.position, b.pose.position) / spacing;
  constexpr double kCountEnd = std::numeric_limits<std::int32_t>::max() + 1.0;
  return quotient < kCountEnd ? static_cast<std::int32_t>(quotient) : 0;
}

void AppendBetween(const PoseStamped& a, const PoseStamped& b, std::int32_t count, nav_msgs::Path& path) {
  const geometry_msgs::Point& from = a.pose.position;
  const geometry_msgs::Point& to = b.pose.position;
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double dz = to.z - from.z;
  for (std::int32_t j = 1; j <= count; ++j) {
    const double t = j / (count + 1.0);
    geometry_msgs::Pose& pose = path.poses.emplace_back(a).pose;  // with a's header
    pose.position.x = from.x + t * dx;
    pose.position.y = from.y + t * dy;
    pose.position.z = from.z + t * dz;
    pose.orientation = InterpolateOrientation(a.pose.orientation, b.pose.orientation, t);
  }
}

}  // namespace

nav_msgs::Path LinearInterpolation(const nav_msgs::Path& path, double spacing) {
  if (path.poses.size() < 2 || !std::isfinite(spacing) || spacing <= 0.0) {
    return path;
  }
  std::size_t size = path.poses.size();
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    size += static_cast<std::size_t>(InsertionCount(path.poses[i - 1], path.poses[i], spacing));
  }

  nav_msgs::Path dense;
  dense.header = path.header;
  dense.poses.reserve(size);
  dense.poses.push_back(path.poses.front());
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    const PoseStamped& a = path.poses[i - 1];
    const PoseStamped& b = path.poses[i];
    AppendBetween(a, b, InsertionCount(a, b, spacing), dense);
    dense.poses.push_back(b);
  }
  return dense;
}

geometry_msgs::Quaternion InterpolateOrientation(const geometry_msgs::Quaternion& q0,
                                                 const geometry_msgs::Quaternion& q1, double t) {
  geometry_msgs::Quaternion q;
  q.x = Blend(q0.x, q1.x, t);
  q.y = Blend(q0.y, q1.y, t);
  q.z = Blend(q0.z, q1.z, t);
  q.w = Blend(q0.w, q1.w, t);
  const double norm = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  if (norm > 0.0) {
    q.x /= norm;
    q.y /= norm;
    q.z /= norm;
    q.w /= norm;
  }
  return q;
}

}  // namespace nav_core::math
