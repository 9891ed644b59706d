#include "follower/refusal.h"

#include <cstdio>

#include "controller_base/local_plan/plan_ends.h"

namespace controller_base::follower {
namespace {

using nav_controller::internal::FindPlanEnds;
using nav_controller::internal::PlanCheck;
using nav_controller::internal::PlanEnds;

bool IsInBox(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map, const AStar::Vec2& cell) {
  geometry_msgs::Point center;
  map.mapToWorld(cell.x, cell.y, center.x, center.y);
  return planner.GetLocalMapObstacle().IsInObstacle(center);
}

}  // namespace

Refusal WhyRefused(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map,
                   const geometry_msgs::PoseStamped& start, const nav_msgs::Path& path) {
  const PlanEnds ends = FindPlanEnds(map, start.pose.position, path);
  switch (ends.check) {
    case PlanCheck::kStartOffMap:
      return Refusal::kStartOffMap;
    case PlanCheck::kStartOccupied:
      return Refusal::kStartOccupied;
    case PlanCheck::kEmptyPath:
    case PlanCheck::kGoalOffMap:
      return Refusal::kGoalOffMap;
    case PlanCheck::kFallbackTooNear:
      return Refusal::kFallBackTooNear;
    case PlanCheck::kNoFallback:
      return Refusal::kNowhereToFallBack;
    case PlanCheck::kFreeGoal:
      if (IsInBox(planner, map, ends.goal)) {
        return Refusal::kGoalInBox;
      }
      break;
    case PlanCheck::kFallback:
      break;
  }
  return IsInBox(planner, map, ends.start) ? Refusal::kStartInBox : Refusal::kNoPath;
}

std::string Explain(Refusal refusal, const std::string& goal, double corridor_width) {
  switch (refusal) {
    case Refusal::kStartOffMap:
      return "no detour: the robot is not on its local map";
    case Refusal::kStartOccupied:
      return "no detour: the robot stands too near to an obstacle";
    case Refusal::kStartInBox:
      return "no detour: the robot stands in a virtual box";
    case Refusal::kGoalOffMap:
      return "no detour: the stretch to rejoin ends off the local map";
    case Refusal::kGoalInBox:
      return "no detour: the stretch to rejoin ends in a virtual box";
    case Refusal::kFallBackTooNear:
      return "no detour: " + goal + " is occupied, and the free place before it is within " +
             std::to_string(nav_controller::internal::kNearestFallback) + " cells";
    case Refusal::kNowhereToFallBack:
      return "no detour: " + goal + " is occupied, and the path has no free place to fall back to";
    case Refusal::kNoPath:
      break;
  }
  char text[96];
  std::snprintf(text, sizeof(text), "no detour: no way around within %.2f m of the path", corridor_width);
  return text;
}

}  // namespace controller_base::follower
