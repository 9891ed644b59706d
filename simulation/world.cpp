#include "simulation/world.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "costmap_2d/cost_values.h"
#include "follower/geometry.h"
#include "follower/ray_walk.h"
#include "nav_core/math/box2d.h"
#include "simulation/obstacle_surface.h"

namespace controller_base::simulation {
namespace {

enum CellFlag : unsigned char { kSolid = 1, kVisible = 2 };

}  // namespace

nav_core::math::Vec2d Obstacle::CenterAt(double time) const {
  const double driven = std::max(0.0, time - moves_at) * speed;
  if (!destination || driven == 0.0) {
    return center;
  }
  const double distance = follower::Distance(center, *destination);
  const double share = distance > driven ? driven / distance : 1.0;
  return {center.x + share * (destination->x - center.x), center.y + share * (destination->y - center.y)};
}

double Obstacle::Reach() const { return radius > 0.0 ? radius : 0.5 * std::hypot(length, width); }

bool Obstacle::Covers(const nav_core::math::Vec2d& point, double time) const {
  const nav_core::math::Vec2d now = CenterAt(time);
  return radius > 0.0 ? follower::Distance(now, point) <= radius
                      : nav_core::math::Box2d(now, yaw, length, width).IsPointIn(point);
}

World::World(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles, Shapes shapes)
    : map_(map),
      obstacles_(obstacles),
      shapes_(shapes),
      cells_(static_cast<std::size_t>(map.getSizeInCellsX()) * map.getSizeInCellsY()) {
  DrawAll();
}

void World::Add(const Obstacle& obstacle) {
  obstacles_.push_back(obstacle);
  Draw(obstacle);
}

void World::SetTime(double time) {
  const auto changes = [&](const Obstacle& obstacle) {
    return obstacle.IsThere(time) != obstacle.IsThere(time_) ||
           (obstacle.IsThere(time) && follower::Distance(obstacle.CenterAt(time), obstacle.CenterAt(time_)) > 0.0);
  };
  const bool is_changed = std::any_of(obstacles_.begin(), obstacles_.end(), changes);
  time_ = time;
  if (is_changed) {
    DrawAll();
  }
}

void World::DrawAll() {
  std::transform(map_.getCharMap(), map_.getCharMap() + cells_.size(), cells_.begin(), [](unsigned char cost) {
    return static_cast<unsigned char>(cost == costmap_2d::LETHAL_OBSTACLE ? kSolid | kVisible : 0);
  });
  for (const Obstacle& obstacle : obstacles_) {
    Draw(obstacle);
  }
}

void World::Draw(const Obstacle& obstacle) {
  if (!obstacle.IsThere(time_) || shapes_ == Shapes::kTrue) {
    return;
  }
  const nav_core::math::Vec2d center = obstacle.CenterAt(time_);
  const double reach = obstacle.Reach() + map_.getResolution();
  const auto first = [&](double lowest, double origin, unsigned int size) {
    return static_cast<unsigned int>(
        std::clamp(std::floor((lowest - origin) / map_.getResolution()), 0.0, static_cast<double>(size)));
  };
  const auto end = [&](double highest, double origin, unsigned int size) {
    return static_cast<unsigned int>(
        std::clamp(std::ceil((highest - origin) / map_.getResolution()), 0.0, static_cast<double>(size)));
  };
  const unsigned int end_x = end(center.x + reach, map_.getOriginX(), map_.getSizeInCellsX());
  const unsigned int end_y = end(center.y + reach, map_.getOriginY(), map_.getSizeInCellsY());
  for (unsigned int my = first(center.y - reach, map_.getOriginY(), map_.getSizeInCellsY()); my < end_y; ++my) {
    for (unsigned int mx = first(center.x - reach, map_.getOriginX(), map_.getSizeInCellsX()); mx < end_x; ++mx) {
      nav_core::math::Vec2d point;
      map_.mapToWorld(mx, my, point.x, point.y);
      if (obstacle.Covers(point, time_)) {
        cells_[static_cast<std::size_t>(my) * map_.getSizeInCellsX() + mx] |=
            static_cast<unsigned char>(obstacle.low ? kSolid : kSolid | kVisible);
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

double World::RangeAlong(const follower::Pose2d& ray, double reach) const {
  double range = std::numeric_limits<double>::infinity();
  for (follower::RayWalk walk(map_, ray); walk.distance() <= reach && map_.IsInmap(walk.mx(), walk.my()); walk.Step()) {
    if (StopsLaser(walk.mx(), walk.my())) {
      range = walk.distance();
      break;
    }
  }
  for (const Obstacle& obstacle : obstacles_) {
    if (HasTrueShape(obstacle) && !obstacle.low) {
      range = std::min(range, RangeTo(obstacle, ray, time_));
    }
  }
  return range <= reach ? range : std::numeric_limits<double>::infinity();
}

std::vector<World::Overlap> World::Overlaps(const nav_core::math::Vec2d& center, double radius) const {
  std::vector<Overlap> overlaps = CellOverlaps(center, radius);
  for (std::size_t i = 0; i < obstacles_.size(); ++i) {
    if (!HasTrueShape(obstacles_[i])) {
      continue;
    }
    const nav_core::math::Vec2d nearest = NearestPointOf(obstacles_[i], center, time_);
    if (follower::Distance(center, nearest) < radius) {
      const auto cell = [&](double value, double origin) {
        return static_cast<int>(std::floor((value - origin) / map_.getResolution()));
      };
      overlaps.push_back(
          {cell(nearest.x, map_.getOriginX()), cell(nearest.y, map_.getOriginY()), nearest, static_cast<int>(i)});
    }
  }
  return overlaps;
}

std::vector<World::Overlap> World::CellOverlaps(const nav_core::math::Vec2d& center, double radius) const {
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
      if (follower::Distance(center, nearest) < radius) {
        overlaps.push_back({mx, my, nearest, -1});
      }
    }
  }
  return overlaps;
}

}  // namespace controller_base::simulation
