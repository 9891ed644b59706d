#include "follower/refusal.h"

#include <cstdio>
#include <cstdlib>

namespace controller_base::follower {
namespace {

bool IsInBox(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map, unsigned int mx,
             unsigned int my) {
  geometry_msgs::Point center;
  map.mapToWorld(mx, my, center.x, center.y);
  return planner.GetLocalMapObstacle().IsInObstacle(center);
}

}  // namespace

Refusal WhyRefused(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map,
                   const geometry_msgs::PoseStamped& start, const nav_msgs::Path& path) {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!map.worldToMap(start.pose.position.x, start.pose.position.y, mx, my)) {
    return Refusal::kStartOffMap;
  }
  if (map.IsLethalObstacle(mx, my)) {
    return Refusal::kStartOccupied;
  }
  const bool starts_in_box = IsInBox(planner, map, mx, my);
  const geometry_msgs::Point& goal = path.poses.back().pose.position;
  if (!map.worldToMap(goal.x, goal.y, mx, my)) {
    return Refusal::kGoalOffMap;
  }
  if (map.IsLethalObstacle(mx, my)) {
    const auto fall_back = planner.GetValidGoal(&map, path);
    if (!fall_back) {
      return Refusal::kNowhereToFallBack;
    }
    unsigned int start_mx = 0;
    unsigned int start_my = 0;
    map.worldToMap(start.pose.position.x, start.pose.position.y, start_mx, start_my);
    constexpr int kNearestFallBack = 30;  // cells, Manhattan distance
    const int distance = std::abs(static_cast<int>(fall_back->x) - static_cast<int>(start_mx)) +
                         std::abs(static_cast<int>(fall_back->y) - static_cast<int>(start_my));
    if (distance <= kNearestFallBack) {
      return Refusal::kFallBackTooNear;
    }
  } else if (IsInBox(planner, map, mx, my)) {
    return Refusal::kGoalInBox;
  }
  return starts_in_box ? Refusal::kStartInBox : Refusal::kNoWay;
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
      return "no detour: " + goal + " is occupied, and the free place before it is within 30 cells";
    case Refusal::kNowhereToFallBack:
      return "no detour: " + goal + " is occupied, and the path has no free place to fall back to";
    case Refusal::kNoWay:
      break;
  }
  char text[96];
  std::snprintf(text, sizeof(text), "no detour: no way around within %.2f m of the path", corridor_width);
  return text;
}

}  // namespace controller_base::follower
