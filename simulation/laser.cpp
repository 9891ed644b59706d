#include "simulation/laser.h"

#include <algorithm>
#include <cmath>

#include "follower/ray_walk.h"

namespace controller_base::simulation {
namespace {

using nav_core::math::Vec2d;

constexpr int kRays = 360;

void ClearAlong(const costmap_2d::Costmap2D& map, const follower::Pose2d& ray, double length, KnownMap* known) {
  for (follower::RayWalk walk(map, ray); walk.distance() <= length && map.IsInmap(walk.mx(), walk.my()); walk.Step()) {
    known->ClearSeen(walk.mx(), walk.my());
  }
}

}  // namespace

std::vector<nav_core::math::Vec2d> ScanWithLaser(const World& world, const follower::Pose2d& robot, KnownMap* known) {
  std::vector<nav_core::math::Vec2d> hits;
  for (int ray = 0; ray < kRays; ++ray) {
    const double direction = robot.yaw + ray * 2.0 * follower::kPi / kRays;
    follower::RayWalk walk(world.map(), {robot.x, robot.y, direction});
    while (walk.distance() <= kLaserRange && world.map().IsInmap(walk.mx(), walk.my())) {
      if (world.StopsLaser(walk.mx(), walk.my())) {
        known->MarkSeen(walk.mx(), walk.my());
        hits.emplace_back();
        world.map().mapToWorld(static_cast<unsigned int>(walk.mx()), static_cast<unsigned int>(walk.my()),
                               hits.back().x, hits.back().y);
        break;
      }
      known->ClearSeen(walk.mx(), walk.my());
      walk.Step();
    }
  }
  return hits;
}

std::vector<Vec2d> MeasureWithLaser(const World& world, const LaserPose& robot, double noise, RandomSource* random,
                                    KnownMap* known) {
  std::vector<Vec2d> hits;
  for (int ray = 0; ray < kRays; ++ray) {
    const double bearing = ray * 2.0 * follower::kPi / kRays;
    const double range = world.RangeAlong({robot.truth.x, robot.truth.y, robot.truth.yaw + bearing}, kLaserRange) +
                         random->Normal(noise);
    const follower::Pose2d estimated_ray{robot.estimated.x, robot.estimated.y, robot.estimated.yaw + bearing};
    ClearAlong(world.map(), estimated_ray, std::min(range, kLaserRange), known);
    if (std::isfinite(range)) {
      const geometry_msgs::Point end = follower::PointAt(estimated_ray, estimated_ray.yaw, range);
      hits.emplace_back(end.x, end.y);
    }
  }
  for (const Vec2d& hit : hits) {
    unsigned int mx = 0;
    unsigned int my = 0;
    if (world.map().worldToMap(hit.x, hit.y, mx, my)) {
      known->MarkSeen(static_cast<int>(mx), static_cast<int>(my));
    }
  }
  return hits;
}

}  // namespace controller_base::simulation
