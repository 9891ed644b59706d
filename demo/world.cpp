#include "world.h"

#include <algorithm>
#include <cmath>

#include "costmap_2d/cost_values.h"
#include "geometry.h"
#include "nav_core/math/box2d.h"

namespace controller_base_demo {
namespace {

enum CellFlag : unsigned char { kSolid = 1, kVisible = 2 };

}  // namespace

World::World(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles)
    : map_(map), cells_(static_cast<std::size_t>(map.getSizeInCellsX()) * map.getSizeInCellsY()) {
  std::transform(map.getCharMap(), map.getCharMap() + cells_.size(), cells_.begin(), [](unsigned char cost) {
    return static_cast<unsigned char>(cost == costmap_2d::LETHAL_OBSTACLE ? kSolid | kVisible : 0);
  });
  for (const Obstacle& obstacle : obstacles) {
    Add(obstacle);
  }
}

void World::Add(const Obstacle& obstacle) {
  obstacles_.push_back(obstacle);
  const nav_core::math::Box2d box(obstacle.center, obstacle.yaw, obstacle.length, obstacle.width);
  const auto flags = static_cast<unsigned char>(obstacle.low ? kSolid : kSolid | kVisible);
  for (unsigned int my = 0; my < map_.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map_.getSizeInCellsX(); ++mx) {
      nav_core::math::Vec2d point;
      map_.mapToWorld(mx, my, point.x, point.y);
      if (box.IsPointIn(point)) {
        cells_[static_cast<std::size_t>(my) * map_.getSizeInCellsX() + mx] |= flags;
      }
    }
  }
}

bool World::IsSolid(int mx, int my) const {
  return !map_.IsInmap(mx, my) ||
         (cells_[static_cast<std::size_t>(my) * map_.getSizeInCellsX() + static_cast<std::size_t>(mx)] & kSolid) != 0;
}

bool World::StopsLaser(int mx, int my) const {
  return map_.IsInmap(mx, my) &&
         (cells_[static_cast<std::size_t>(my) * map_.getSizeInCellsX() + static_cast<std::size_t>(mx)] & kVisible) != 0;
}

std::vector<World::Overlap> World::Overlaps(const nav_core::math::Vec2d& center, double radius) const {
  const double resolution = map_.getResolution();
  const auto column = [&](double x) { return static_cast<int>(std::floor((x - map_.getOriginX()) / resolution)); };
  const auto row = [&](double y) { return static_cast<int>(std::floor((y - map_.getOriginY()) / resolution)); };
  std::vector<Overlap> overlaps;
  for (int my = row(center.y - radius); my <= row(center.y + radius); ++my) {
    for (int mx = column(center.x - radius); mx <= column(center.x + radius); ++mx) {
      if (!IsSolid(mx, my)) {
        continue;
      }
      const double left = map_.getOriginX() + mx * resolution;
      const double bottom = map_.getOriginY() + my * resolution;
      const nav_core::math::Vec2d nearest(std::clamp(center.x, left, left + resolution),
                                          std::clamp(center.y, bottom, bottom + resolution));
      if (Distance(center, nearest) < radius) {
        overlaps.push_back({mx, my, nearest});
      }
    }
  }
  return overlaps;
}

}  // namespace controller_base_demo
