#include "controller_base/path_interpolation.h"

#include <geometry_msgs/PoseStamped.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "controller_base/common/planar_distance.h"
#include "controller_base/common/resample.h"

namespace {

using geometry_msgs::PoseStamped;
using geometry_msgs::Quaternion;
using nav_controller::internal::Orientations;

constexpr double kUprightW = 1.0;

double Blend(double a, double b, double t) { return (1.0 - t) * a + t * b; }

Quaternion Blend(const Quaternion& q0, const Quaternion& q1, double t) {
  Quaternion q;
  q.x = Blend(q0.x, q1.x, t);
  q.y = Blend(q0.y, q1.y, t);
  q.z = Blend(q0.z, q1.z, t);
  q.w = Blend(q0.w, q1.w, t);
  return q;
}

// What `q` is divided by to normalise it: its length, or 1 where that is zero.
double Divisor(const Quaternion& q) {
  const double length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  return length > 0.0 ? length : 1.0;
}

Quaternion Quotient(const Quaternion& q, double divisor) {
  Quaternion quotient;
  quotient.x = q.x / divisor;
  quotient.y = q.y / divisor;
  quotient.z = q.z / divisor;
  quotient.w = q.w / divisor;
  return quotient;
}

// How many poses go between `a` and `b`: none where the quotient is NaN or does not fit into 32 bits.
std::int32_t InsertionCount(const PoseStamped& a, const PoseStamped& b, double spacing) {
  const double quotient = nav_controller::internal::PlanarDistance(a.pose.position, b.pose.position) / spacing;
  constexpr double kCountEnd = std::numeric_limits<std::int32_t>::max() + 1.0;
  return quotient < kCountEnd ? static_cast<std::int32_t>(quotient) : 0;
}

Quaternion OrientationOf(const PoseStamped& pose, Orientations orientations) {
  Quaternion orientation = pose.pose.orientation;
  if (orientations == Orientations::kUpright) {
    orientation.w = kUprightW;
  }
  return orientation;
}

void Append(const PoseStamped& pose, Orientations orientations, nav_msgs::Path& path) {
  path.poses.push_back(pose);
  if (orientations == Orientations::kUpright) {
    path.poses.back().pose.orientation.w = kUprightW;
  }
}

// Appends `count` poses between `a` and `b`. Roots and divisions run in batches so that the compiler can vectorise
// them.
void AppendBetween(const PoseStamped& a, const PoseStamped& b, std::int32_t count, Orientations orientations,
                   nav_msgs::Path& path) {
  constexpr std::int32_t kBatch = 8;
  double along[kBatch];
  double divisors[kBatch];
  const geometry_msgs::Point from = a.pose.position;
  const double dx = b.pose.position.x - from.x;
  const double dy = b.pose.position.y - from.y;
  const double dz = b.pose.position.z - from.z;
  const Quaternion q0 = OrientationOf(a, orientations);
  const Quaternion q1 = OrientationOf(b, orientations);
  for (std::int32_t first = 1; first <= count; first += kBatch) {
    const std::int32_t batch = std::min(kBatch, count - first + 1);
    for (std::int32_t i = 0; i < batch; ++i) {
      along[i] = (first + i) / (count + 1.0);
      divisors[i] = Divisor(Blend(q0, q1, along[i]));
    }
    for (std::int32_t i = 0; i < batch; ++i) {
      geometry_msgs::Pose& pose = path.poses.emplace_back(a).pose;  // with a's header
      pose.position.x = from.x + along[i] * dx;
      pose.position.y = from.y + along[i] * dy;
      pose.position.z = from.z + along[i] * dz;
      pose.orientation = Quotient(Blend(q0, q1, along[i]), divisors[i]);
    }
  }
}

}  // namespace

nav_msgs::Path nav_controller::internal::Resample(const nav_msgs::Path& path, double spacing,
                                                  Orientations orientations) {
  std::vector<std::int32_t> counts(path.poses.size());  // of new poses before each pose
  if (std::isfinite(spacing) && spacing > 0.0) {
    for (std::size_t i = 1; i < counts.size(); ++i) {
      counts[i] = InsertionCount(path.poses[i - 1], path.poses[i], spacing);
    }
  }
  nav_msgs::Path dense;
  dense.header = path.header;
  dense.poses.reserve(std::accumulate(counts.begin(), counts.end(), counts.size()));
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] > 0) {
      AppendBetween(path.poses[i - 1], path.poses[i], counts[i], orientations, dense);
    }
    Append(path.poses[i], orientations, dense);
  }
  return dense;
}

namespace nav_core::math {

nav_msgs::Path LinearInterpolation(const nav_msgs::Path& path, double spacing) {
  return nav_controller::internal::Resample(path, spacing, Orientations::kAsGiven);
}

geometry_msgs::Quaternion InterpolateOrientation(const geometry_msgs::Quaternion& q0,
                                                 const geometry_msgs::Quaternion& q1, double t) {
  const Quaternion blend = Blend(q0, q1, t);
  return Quotient(blend, Divisor(blend));
}

}  // namespace nav_core::math
