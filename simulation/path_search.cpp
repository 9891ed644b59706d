#include "simulation/path_search.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "nav_core/math/box2d.h"
#include "simulation/place.h"

namespace controller_base::simulation {
namespace {

using nav_core::math::Vec2d;

struct NearObstacle {
  double distance;  // m from the place to the cell's edge; 0 within the cell
  bool is_seen;     // by the laser; otherwise it is a wall
};

// Nothing where there is none within `reach`.
std::optional<NearObstacle> NearestObstacle(const costmap_2d::Costmap2D& around, const Vec2d& place, double reach) {
  const double half = 0.5 * around.getResolution();
  std::optional<NearObstacle> nearest;
  for (unsigned int my = 0; my < around.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < around.getSizeInCellsX(); ++mx) {
      if (around.getCost(mx, my) != costmap_2d::LETHAL_OBSTACLE) {
        continue;
      }
      Vec2d center;
      around.mapToWorld(mx, my, center.x, center.y);
      const double distance = std::hypot(std::max(0.0, std::abs(place.x - center.x) - half),
                                         std::max(0.0, std::abs(place.y - center.y) - half));
      if (distance <= reach && (!nearest || distance < nearest->distance)) {
        nearest = NearObstacle{distance, around.IsLaserObstacle(mx, my)};
      }
    }
  }
  return nearest;
}

// Makes the cells lethal whose centres lie in the box. The planner of detours avoids boxes in the same way.
void Close(const follower::VirtualBox& box, costmap_2d::Costmap2D* map) {
  constexpr double kLength = 0.2;  // m along the heading, and
  constexpr double kWidth = 0.1;   // m across it
  const nav_core::math::Box2d area({box.center.x, box.center.y}, box.heading, kLength, kWidth);
  const int cells = static_cast<int>(std::ceil(kLength / map->getResolution()));
  const auto cell_of = [&](double value, double origin) {
    return static_cast<int>(std::floor((value - origin) / map->getResolution()));
  };
  const int middle_mx = cell_of(box.center.x, map->getOriginX());
  const int middle_my = cell_of(box.center.y, map->getOriginY());
  for (int my = middle_my - cells; my <= middle_my + cells; ++my) {
    for (int mx = middle_mx - cells; mx <= middle_mx + cells; ++mx) {
      Vec2d center;
      map->mapToWorld(static_cast<unsigned int>(mx), static_cast<unsigned int>(my), center.x, center.y);
      if (map->IsInmap(mx, my) && area.IsPointIn(center)) {
        map->setCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my), costmap_2d::LETHAL_OBSTACLE);
      }
    }
  }
}

}  // namespace

std::string WhyNobodyStandsAt(const KnownMap& known, const Vec2d& place) {
  const costmap_2d::Costmap2D around = known.LocalMapAround(place);
  if (follower::HasFreeCellNear(around, place)) {
    return "";
  }
  const follower::Inflation inflation(around.getResolution());
  const std::optional<NearObstacle> obstacle = NearestObstacle(around, place, inflation.radius());
  if (!obstacle) {
    return "";
  }
  const std::string name = obstacle->is_seen ? "an obstacle" : "a wall";
  if (obstacle->distance < kTouching) {
    return "it is in " + name;
  }
  return follower::Format("it is %.2f m from %s, and the robot's centre keeps %.2f m", obstacle->distance, name.c_str(),
                          inflation.inscribed_distance() - 0.5 * around.getResolution());
}

nav_msgs::Path SearchPath(const KnownMap& known, const Vec2d& start, const Vec2d& goal, const Progress& progress,
                          const std::vector<follower::VirtualBox>& boxes) {
  costmap_2d::Costmap2D inflated = known.WholeMap(progress);
  for (const follower::VirtualBox& box : boxes) {
    Close(box, &inflated);
  }
  return follower::SearchPath({inflated, [&](int mx, int my) { return known.IsUnknown(mx, my); }, progress}, start,
                              goal);
}

}  // namespace controller_base::simulation
