#ifndef BENCHMARK_PLAIN_SMOOTHER_H_
#define BENCHMARK_PLAIN_SMOOTHER_H_

#include <costmap_2d/costmap_2d.h>
#include <nav_core/math/box2d.h>
#include <nav_msgs/Path.h>

#include <vector>

namespace controller_base_benchmark {

// The shortcut rule followed to the letter: from each kept pose every later one is tried, the farthest first, along a
// line whose every cell is looked up afresh and held against every box. What LocalPathSmoother::Process must return.
nav_msgs::Path SmoothPlainly(const nav_msgs::Path& path, const costmap_2d::Costmap2D& costmap,
                             const std::vector<nav_core::math::Box2d>& boxes);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_PLAIN_SMOOTHER_H_
