#include "benchmark/plain_smoother.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace controller_base_benchmark {
namespace {

using costmap_2d::Costmap2D;
using nav_core::math::Box2d;
using nav_core::math::Vec2d;

constexpr int kHighestFreeCost = 93;  // as a signed byte

bool IsFree(const Costmap2D& costmap, const std::vector<Box2d>& boxes, int x, int y) {
  if (!costmap.IsInmap(x, y)) {
    return false;
  }
  const auto mx = static_cast<unsigned int>(x);
  const auto my = static_cast<unsigned int>(y);
  if (static_cast<std::int8_t>(costmap.getCost(mx, my)) > kHighestFreeCost) {
    return false;
  }
  Vec2d center;
  costmap.mapToWorld(mx, my, center.x, center.y);
  return std::none_of(boxes.begin(), boxes.end(), [&](const Box2d& box) { return box.IsPointIn(center); });
}

bool IsLineFree(const Costmap2D& costmap, const std::vector<Box2d>& boxes, const geometry_msgs::Point& from,
                const geometry_msgs::Point& to) {
  unsigned int from_x = 0;
  unsigned int from_y = 0;
  unsigned int to_x = 0;
  unsigned int to_y = 0;
  if (!costmap.worldToMap(from.x, from.y, from_x, from_y) || !costmap.worldToMap(to.x, to.y, to_x, to_y)) {
    return false;
  }
  int x = static_cast<int>(from_x);
  int y = static_cast<int>(from_y);
  const int last_x = static_cast<int>(to_x);
  const int last_y = static_cast<int>(to_y);
  const int dx = std::abs(last_x - x);
  const int dy = std::abs(last_y - y);
  const int step_x = x < last_x ? 1 : -1;
  const int step_y = y < last_y ? 1 : -1;
  int error = dx - dy;
  while (IsFree(costmap, boxes, x, y)) {
    if (x == last_x && y == last_y) {
      return true;
    }
    const int twice = 2 * error;
    if (twice >= -dy) {
      error -= dy;
      x += step_x;
    }
    if (twice <= dx) {
      error += dx;
      y += step_y;
    }
  }
  return false;
}

}  // namespace

nav_msgs::Path SmoothPlainly(const nav_msgs::Path& path, const Costmap2D& costmap, const std::vector<Box2d>& boxes) {
  if (path.poses.size() <= 1) {
    return path;
  }
  nav_msgs::Path thinned;
  thinned.header = path.header;
  const std::size_t last = path.poses.size() - 1;
  for (std::size_t anchor = 0; anchor < last;) {
    thinned.poses.push_back(path.poses[anchor]);
    std::size_t next = last;
    while (next > anchor + 1 &&
           !IsLineFree(costmap, boxes, path.poses[anchor].pose.position, path.poses[next].pose.position)) {
      --next;
    }
    anchor = next;
  }
  thinned.poses.push_back(path.poses[last]);
  return thinned;
}

}  // namespace controller_base_benchmark
