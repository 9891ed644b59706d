#ifndef BENCHMARK_WINDING_PATH_H_
#define BENCHMARK_WINDING_PATH_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cmath>
#include <cstdint>

namespace controller_base_benchmark {

constexpr double kResampleSpacing = 0.05;  // metres, as the analyzer uses

// A winding path of `poses` poses, at least two, that is resampled to about `dense` poses.
inline nav_msgs::Path WindingPath(std::int64_t poses, std::int64_t dense) {
  const double step = kResampleSpacing * (static_cast<double>(dense) / static_cast<double>(poses - 1) - 0.5);
  nav_msgs::Path path;
  path.header.frame_id = "map";
  double x = 0.0;
  double y = 0.0;
  for (std::int64_t i = 0; i < poses; ++i) {
    const double heading = std::sin(static_cast<double>(i) * 0.1);
    geometry_msgs::PoseStamped& pose = path.poses.emplace_back();
    pose.header.frame_id = "map";
    pose.pose.position.x = x;
    pose.pose.position.y = y;
    pose.pose.orientation.z = std::sin(heading / 2);
    pose.pose.orientation.w = std::cos(heading / 2);
    x += step * std::cos(heading);
    y += step * std::sin(heading);
  }
  return path;
}

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_WINDING_PATH_H_
