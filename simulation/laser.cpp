#include "simulation/laser.h"

#include <cmath>

#include "follower/ray_walk.h"

namespace controller_base::simulation {
namespace {

constexpr int kRays = 360;

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

}  // namespace controller_base::simulation
