#include "follower/path_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "astar/astar.h"
#include "astar/block_allocator.h"
#include "costmap_2d/cost_values.h"
#include "follower/format.h"
#include "follower/geometry.h"
#include "follower/inflation.h"

namespace controller_base::follower {
namespace {

using nav_core::math::Vec2d;

constexpr std::uint16_t kUnknownExtraCost = 1000;  // 100 straight steps: a way around is worth that much
constexpr int kSmoothingRounds = 60;               // averages over about half a metre of cells

// The free cell whose centre is nearest to the point; nothing when none is within kSnapDistance.
std::optional<AStar::Vec2> NearestFreeCell(const costmap_2d::Costmap2D& map, const Vec2d& point) {
  const double reach = std::max(kSnapDistance, map.getResolution());
  const auto first = [&](double value, double origin, unsigned int size) {
    return static_cast<int>(
        std::clamp(std::floor((value - reach - origin) / map.getResolution()), 0.0, static_cast<double>(size)));
  };
  std::optional<AStar::Vec2> nearest;
  double nearest_distance = reach;
  const int cells = 2 * static_cast<int>(std::ceil(reach / map.getResolution())) + 1;
  const int first_mx = first(point.x, map.getOriginX(), map.getSizeInCellsX());
  const int first_my = first(point.y, map.getOriginY(), map.getSizeInCellsY());
  for (int my = first_my; my < first_my + cells; ++my) {
    for (int mx = first_mx; mx < first_mx + cells; ++mx) {
      if (!map.IsInmap(mx, my) || map.IsLethalObstacle(static_cast<unsigned int>(mx), static_cast<unsigned int>(my))) {
        continue;
      }
      Vec2d center;
      map.mapToWorld(static_cast<unsigned int>(mx), static_cast<unsigned int>(my), center.x, center.y);
      if (Distance(point, center) < nearest_distance) {
        nearest_distance = Distance(point, center);
        nearest = AStar::Vec2{static_cast<std::uint16_t>(mx), static_cast<std::uint16_t>(my)};
      }
    }
  }
  return nearest;
}

// Tells how many cells a search has asked for.
class AskedCells {
 public:
  explicit AskedCells(const SearchGround& ground) : ground_(ground) {}

  void Count() {
    constexpr std::int64_t kAtATime = 100'000;
    if (++count_ % kAtATime == 0 && ground_.tell) {
      ground_.tell(Format("planning the path: %.1f million cells seen", static_cast<double>(count_) / 1e6));
    }
  }

 private:
  const SearchGround& ground_;
  std::int64_t count_ = 0;
};

std::vector<Vec2d> SearchCells(const SearchGround& ground, const AStar::Vec2& start, const AStar::Vec2& goal) {
  const costmap_2d::Costmap2D& map = ground.costs;
  AStar::Params request;
  request.allow_diagonal = true;
  request.width = static_cast<std::uint16_t>(map.getSizeInCellsX());
  request.height = static_cast<std::uint16_t>(map.getSizeInCellsY());
  request.start = start;
  request.goal = goal;
  AskedCells asked(ground);
  request.is_passable = [&](const AStar::Vec2& cell) {
    asked.Count();
    return !map.IsLethalObstacle(cell.x, cell.y);
  };
  request.extra_cost = [&](const AStar::Vec2& cell) {
    return ground.is_unknown(cell.x, cell.y) ? kUnknownExtraCost
                                             : static_cast<std::uint16_t>(map.getCost(cell.x, cell.y) / 2);
  };
  BlockAllocator allocator;
  std::vector<Vec2d> points;
  for (const AStar::Vec2& cell : AStar(&allocator).Find(request)) {
    Vec2d& point = points.emplace_back();
    map.mapToWorld(cell.x, cell.y, point.x, point.y);
  }
  return points;
}

int CostAt(const costmap_2d::Costmap2D& map, const Vec2d& point) {
  unsigned int mx = 0;
  unsigned int my = 0;
  return map.worldToMap(point.x, point.y, mx, my) ? map.getCost(mx, my) : costmap_2d::LETHAL_OBSTACLE;
}

// Pulls every point towards the middle of its neighbours, unless that brings it into the ring around an obstacle, or
// nearer to the obstacle inside of it.
void Smooth(const SearchGround& ground, std::vector<Vec2d>* points) {
  for (int round = 0; round < kSmoothingRounds; ++round) {
    if (ground.tell) {
      ground.tell(Format("smoothing the path: %d %%", 100 * round / kSmoothingRounds));
    }
    for (std::size_t i = 1; i + 1 < points->size(); ++i) {
      const Vec2d& before = (*points)[i - 1];
      const Vec2d& after = (*points)[i + 1];
      const Vec2d pulled(0.5 * (before.x + after.x), 0.5 * (before.y + after.y));
      if (CostAt(ground.costs, pulled) <=
          std::max(CostAt(ground.costs, (*points)[i]), Inflation::kLowestRingCost - 1)) {
        (*points)[i] = pulled;
      }
    }
  }
}

bool IsFree(const costmap_2d::Costmap2D& map, const Vec2d& point) {
  unsigned int mx = 0;
  unsigned int my = 0;
  return map.worldToMap(point.x, point.y, mx, my) && !map.IsLethalObstacle(mx, my);
}

}  // namespace

nav_msgs::Path ToPath(const std::vector<Vec2d>& points) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::size_t from = std::min(i, points.size() - 2);
    const double heading = Direction(points[from], points[from + 1]);
    geometry_msgs::PoseStamped& pose = path.poses.emplace_back();
    pose.header.frame_id = "map";
    pose.pose.position.x = points[i].x;
    pose.pose.position.y = points[i].y;
    pose.pose.orientation.z = std::sin(0.5 * heading);
    pose.pose.orientation.w = std::cos(0.5 * heading);
  }
  return path;
}

bool HasFreeCellNear(const costmap_2d::Costmap2D& costs, const Vec2d& place) {
  return NearestFreeCell(costs, place).has_value();
}

nav_msgs::Path SearchPath(const SearchGround& ground, const Vec2d& start, const Vec2d& goal) {
  const std::optional<AStar::Vec2> start_cell = NearestFreeCell(ground.costs, start);
  const std::optional<AStar::Vec2> goal_cell = NearestFreeCell(ground.costs, goal);
  if (!start_cell || !goal_cell) {
    return {};
  }
  std::vector<Vec2d> points = SearchCells(ground, *start_cell, *goal_cell);
  if (points.empty()) {
    return {};
  }
  points.insert(points.begin(), start);
  if (IsFree(ground.costs, goal)) {
    points.push_back(goal);
  }
  Smooth(ground, &points);
  return ToPath(points);
}

}  // namespace controller_base::follower
