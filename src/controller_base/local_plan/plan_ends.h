#ifndef CONTROLLER_BASE_LOCAL_PLAN_PLAN_ENDS_H_
#define CONTROLLER_BASE_LOCAL_PLAN_PLAN_ENDS_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/Path.h>

#include <cstdint>
#include <cstdlib>
#include <optional>

#include "controller_base/internal/cell_at.h"
#include "controller_base/platform/astar.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller::internal {

constexpr int kNearestFallback = 30;  // cells, Manhattan; a nearer fallback goal is not worth a detour

// What is known of the two ends of a plan before the search, in the order of the checks. Boxes and corridor are left to
// the search.
enum class PlanCheck {
  // No search:
  kStartOffMap,
  kStartOccupied,
  kEmptyPath,
  kGoalOffMap,
  kFallbackTooNear,  // the goal is occupied, and the last free pose of the path is within kNearestFallback of the start

  // A search:
  kNoFallback,  // to the occupied goal, which the search refuses: no pose of the path is free
  kFallback,    // to the last free pose of the path: the goal is occupied
  kFreeGoal,
};

struct PlanEnds {
  PlanCheck check;
  AStar::Vec2 start;  // not with kStartOffMap
  AStar::Vec2 goal;   // from kFallbackTooNear on

  bool IsSearchable() const { return check >= PlanCheck::kNoFallback; }
};

inline AStar::Vec2 ToSearchCell(const GridCell& cell) {
  AStar::Vec2 search_cell;
  search_cell.x = static_cast<std::uint16_t>(cell.x);
  search_cell.y = static_cast<std::uint16_t>(cell.y);
  return search_cell;
}

inline bool IsOccupied(const costmap_2d::Costmap2D& costmap, const GridCell& cell) {
  return costmap.IsLethalObstacle(static_cast<unsigned int>(cell.x), static_cast<unsigned int>(cell.y));
}

inline int ManhattanDistance(const AStar::Vec2& a, const AStar::Vec2& b) {
  return std::abs(a.x - b.x) + std::abs(a.y - b.y);
}

// What LocalPlanner::GetValidGoal answers.
inline std::optional<AStar::Vec2> LastFreeCell(const costmap_2d::Costmap2D& costmap, const nav_msgs::Path& path) {
  for (auto pose = path.poses.rbegin(); pose != path.poses.rend(); ++pose) {
    const std::optional<GridCell> cell = CellAt(costmap, pose->pose.position);
    if (cell && !IsOccupied(costmap, *cell)) {
      return ToSearchCell(*cell);
    }
  }
  return std::nullopt;
}

// The cells between which LocalPlanner::CreatePlan searches, or why it does not. Logs nothing.
inline PlanEnds FindPlanEnds(const costmap_2d::Costmap2D& costmap, const geometry_msgs::Point& start,
                             const nav_msgs::Path& path) {
  const std::optional<GridCell> start_cell = CellAt(costmap, start);
  if (!start_cell) {
    return {PlanCheck::kStartOffMap, {}, {}};
  }
  const AStar::Vec2 from = ToSearchCell(*start_cell);
  if (IsOccupied(costmap, *start_cell)) {
    return {PlanCheck::kStartOccupied, from, {}};
  }
  if (path.poses.empty()) {
    return {PlanCheck::kEmptyPath, from, {}};
  }
  const std::optional<GridCell> goal_cell = CellAt(costmap, path.poses.back().pose.position);
  if (!goal_cell) {
    return {PlanCheck::kGoalOffMap, from, {}};
  }
  if (!IsOccupied(costmap, *goal_cell)) {
    return {PlanCheck::kFreeGoal, from, ToSearchCell(*goal_cell)};
  }
  const std::optional<AStar::Vec2> fallback = LastFreeCell(costmap, path);
  if (!fallback) {
    return {PlanCheck::kNoFallback, from, ToSearchCell(*goal_cell)};
  }
  const bool is_near = ManhattanDistance(*fallback, from) <= kNearestFallback;
  return {is_near ? PlanCheck::kFallbackTooNear : PlanCheck::kFallback, from, *fallback};
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_LOCAL_PLAN_PLAN_ENDS_H_
