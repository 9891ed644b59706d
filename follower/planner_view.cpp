#include "follower/planner_view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "controller_base/obstacle_blocking_analyzer.h"
#include "follower/path_geometry.h"
#include "follower/ray_walk.h"

namespace controller_base::follower {
namespace {

constexpr double kBlockedStart = 0.15;  // m; so short a stretch past an obstacle does not touch it

geometry_msgs::Point CellCenter(const costmap_2d::Costmap2D& map, unsigned int mx, unsigned int my) {
  geometry_msgs::Point center;
  map.mapToWorld(mx, my, center.x, center.y);
  return center;
}

}  // namespace

bool PlannerView::IsBlocked(const geometry_msgs::Point& point) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  return map_.worldToMap(point.x, point.y, mx, my) &&
         (map_.IsLethalObstacle(mx, my) || boxes_.IsInObstacle(CellCenter(map_, mx, my)));
}

nav_core::math::Vec2d PlannerView::CellCenterAt(const Pose2d& place) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  nav_core::math::Vec2d center;
  if (map_.worldToMap(place.x, place.y, mx, my)) {
    map_.mapToWorld(mx, my, center.x, center.y);
  }
  return center;
}

bool PlannerView::IsLineBlocked(const geometry_msgs::Point& from, const geometry_msgs::Point& to) const {
  const int steps = std::max(1, static_cast<int>(std::ceil(Distance(from, to) / (0.5 * map_.getResolution()))));
  for (int step = 0; step <= steps; ++step) {
    geometry_msgs::Point point;
    point.x = from.x + (to.x - from.x) * step / steps;
    point.y = from.y + (to.y - from.y) * step / steps;
    if (IsBlocked(point)) {
      return true;
    }
  }
  return nav_controller::IsBlockingBetweenPoints(&map_, from, to) || CutsCorner(from, to);
}

bool PlannerView::CutsCorner(const geometry_msgs::Point& from, const geometry_msgs::Point& to) const {
  const double length = Distance(from, to);
  for (RayWalk walk(map_, {from.x, from.y, Direction(from, to)}); walk.distance() <= length; walk.Step()) {
    if (map_.IsInmap(walk.mx(), walk.my()) &&
        map_.IsLethalObstacle(static_cast<unsigned int>(walk.mx()), static_cast<unsigned int>(walk.my()))) {
      return true;
    }
  }
  return false;
}

bool PlannerView::PassesClose(const geometry_msgs::Point& from, const geometry_msgs::Point& to,
                              double clearance) const {
  const double aside = Direction(from, to) + 0.5 * kPi;
  const auto cuts_corner = [&](double distance) {
    return CutsCorner(PointAt(from, aside, distance), PointAt(to, aside, distance));
  };
  return cuts_corner(clearance) || cuts_corner(-clearance);
}

bool PlannerView::IsWithinMargin(const geometry_msgs::Point& point, double margin) const {
  const double cell = map_.getResolution();
  const auto first = [&](double value, double origin) { return static_cast<int>(std::floor((value - origin) / cell)); };
  for (int my = first(point.y - margin, map_.getOriginY()); my <= first(point.y + margin, map_.getOriginY()); ++my) {
    for (int mx = first(point.x - margin, map_.getOriginX()); mx <= first(point.x + margin, map_.getOriginX()); ++mx) {
      if (!map_.IsInmap(mx, my) ||
          !map_.IsLethalObstacle(static_cast<unsigned int>(mx), static_cast<unsigned int>(my))) {
        continue;
      }
      const geometry_msgs::Point center =
          CellCenter(map_, static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
      const double dx = std::max(0.0, std::abs(point.x - center.x) - 0.5 * cell);
      const double dy = std::max(0.0, std::abs(point.y - center.y) - 0.5 * cell);
      if (std::hypot(dx, dy) < margin) {
        return true;
      }
    }
  }
  return false;
}

// The library's questions know the map; the boxes before the obstacle that it finds are asked about pose by pose.
nav_msgs::Path PlannerView::BlockedRun(const nav_msgs::Path& path) const {
  nav_msgs::Path on_map;
  if (nav_controller::IsBlockingPathInflateObstacle(&map_, path)) {
    on_map = nav_controller::FindObstacleSegment(&map_, path);
  }
  const auto end = on_map.poses.empty() ? path.poses.end() : path.poses.begin() + IndexOf(path, on_map.poses.front());
  const auto is_blocked = [&](const geometry_msgs::PoseStamped& pose) { return IsBlocked(pose.pose.position); };
  nav_msgs::Path in_boxes;
  in_boxes.header = path.header;
  const auto first = std::find_if(path.poses.begin(), end, is_blocked);
  in_boxes.poses.assign(first, std::find_if_not(first, end, is_blocked));
  return in_boxes.poses.empty() ? on_map : in_boxes;
}

nav_msgs::Path PlannerView::WithoutBlockedStart(nav_msgs::Path path) const {
  const auto is_free = [&](const geometry_msgs::PoseStamped& pose) { return !IsBlocked(pose.pose.position); };
  const auto first_free = std::find_if(path.poses.begin(), path.poses.end(), is_free);
  if (first_free != path.poses.end() &&
      Distance(path.poses.front().pose.position, first_free->pose.position) < kBlockedStart) {
    path.poses.erase(path.poses.begin(), first_free);
  }
  return path;
}

std::optional<geometry_msgs::Point> PlannerView::NearestFreeCell(const Pose2d& from, double reach) const {
  std::optional<geometry_msgs::Point> nearest;
  for (unsigned int my = 0; my < map_.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map_.getSizeInCellsX(); ++mx) {
      const geometry_msgs::Point center = CellCenter(map_, mx, my);
      if (Distance(from, center) < (nearest ? Distance(from, *nearest) : reach) && !IsBlocked(center)) {
        nearest = center;
      }
    }
  }
  return nearest;
}

std::optional<geometry_msgs::Point> PlannerView::FreeNeighbour(const Pose2d& from,
                                                               const geometry_msgs::Point& to) const {
  const double step = map_.getResolution();
  std::optional<geometry_msgs::Point> best;
  for (const auto& [dx, dy] : {std::pair{step, 0.0}, {-step, 0.0}, {0.0, step}, {0.0, -step}}) {
    unsigned int mx = 0;
    unsigned int my = 0;
    if (!map_.worldToMap(from.x + dx, from.y + dy, mx, my)) {
      continue;
    }
    const geometry_msgs::Point center = CellCenter(map_, mx, my);
    const bool is_nearer = !best || Distance(center, to) < Distance(*best, to);
    if (is_nearer && !IsBlocked(center)) {
      best = center;
    }
  }
  return best;
}

}  // namespace controller_base::follower
