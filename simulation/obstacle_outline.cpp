#include "simulation/obstacle_outline.h"

#include <cmath>

#include "follower/geometry.h"
#include "nav_core/math/box2d.h"

namespace controller_base::simulation {
namespace {

using nav_core::math::Vec2d;

std::vector<Vec2d> DiscOutline(const Vec2d& center, double radius) {
  constexpr int kCorners = 24;
  std::vector<Vec2d> corners;
  for (int corner = 0; corner < kCorners; ++corner) {
    const double direction = corner * 2.0 * follower::kPi / kCorners;
    corners.emplace_back(center.x + radius * std::cos(direction), center.y + radius * std::sin(direction));
  }
  return corners;
}

}  // namespace

std::vector<Vec2d> OutlineAt(const Obstacle& obstacle, double time) {
  if (!obstacle.IsThere(time)) {
    return {};
  }
  const Vec2d center = obstacle.CenterAt(time);
  if (obstacle.radius > 0.0) {
    return DiscOutline(center, obstacle.radius);
  }
  return nav_core::math::Box2d(center, obstacle.yaw, obstacle.length, obstacle.width).GetAllCorners();
}

}  // namespace controller_base::simulation
