#include "controller_base/local_planner.h"

#include <ros/node_handle.h>
#include <ros/time.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "controller_base/internal/logging.h"
#include "controller_base/internal/signed_cost.h"
#include "controller_base/local_plan/boxed_cells.h"
#include "controller_base/local_plan/shortcuts.h"
#include "controller_base/platform/block_allocator.h"

namespace nav_controller {
namespace {

using costmap_2d::Costmap2D;

constexpr char kPathTopic[] = "/DWB/local_plan";
constexpr std::uint32_t kPathQueueSize = 1;
constexpr unsigned int kLongestSide = std::numeric_limits<std::uint16_t>::max();  // cells, what a search cell can hold
constexpr int kNearestFallback = 30;  // cells, Manhattan; a nearer fallback goal is not worth a detour
constexpr int kFreeCost = 94;         // as a signed byte; one more than the smoother's highest free cost, on purpose
constexpr double kExtraCostSlope = 20.0;  // extra cost per cost step above kFreeCost

AStar::Vec2 ToSearchCell(unsigned int mx, unsigned int my) {
  AStar::Vec2 cell;
  cell.x = static_cast<std::uint16_t>(mx);
  cell.y = static_cast<std::uint16_t>(my);
  return cell;
}

geometry_msgs::Point CellCenter(const Costmap2D& costmap, const AStar::Vec2& cell) {
  geometry_msgs::Point center;
  costmap.mapToWorld(cell.x, cell.y, center.x, center.y);
  return center;
}

bool IsPassable(const Costmap2D& costmap, internal::BoxedCells& boxed, const PathMapFiller* corridor,
                const AStar::Vec2& cell) {
  return (corridor == nullptr || !corridor->IsLethalObstacle(cell.x, cell.y)) &&
         !costmap.IsLethalObstacle(cell.x, cell.y) && !boxed.Contains(cell.x, cell.y);
}

std::uint16_t ExtraCost(const Costmap2D& costmap, const AStar::Params& params, const AStar::Vec2& cell) {
  if (cell.x == 0 || cell.x >= params.width - 1 || cell.y == 0 || cell.y >= params.height - 1) {
    return 0;
  }
  const int cost = internal::SignedCost(costmap.getCost(cell.x, cell.y));
  return cost <= kFreeCost ? std::uint16_t{0} : static_cast<std::uint16_t>((cost - kFreeCost) * kExtraCostSlope);
}

bool FitsSearch(const Costmap2D& costmap) {
  return costmap.getSizeInCellsX() <= kLongestSide && costmap.getSizeInCellsY() <= kLongestSide;
}

nav_msgs::Path ToPath(const Costmap2D& costmap, const std::vector<AStar::Vec2>& cells) {
  nav_msgs::Path path;
  path.header.stamp = ros::Time::now();
  path.header.frame_id = "map";
  path.poses.resize(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    path.poses[i].pose.position = CellCenter(costmap, cells[i]);
  }
  return path;
}

int ManhattanDistance(const AStar::Vec2& a, const AStar::Vec2& b) { return std::abs(a.x - b.x) + std::abs(a.y - b.y); }

}  // namespace

LocalPlanner::LocalPlanner(bool publish) : publish_(publish) {
  if (publish_) {
    path_publisher_ = ros::NodeHandle().advertise<nav_msgs::Path>(kPathTopic, kPathQueueSize);
  }
}

void LocalPlanner::CreateBoxObstacle(const geometry_msgs::Point& center, double heading) {
  obstacles_.CreateNewBox(center, heading);
  NAV_CONTROLLER_INFO("Create new box obstacle: (%f, %f), heading: %f, nums: %zu", center.x, center.y, heading,
                      obstacles_.GetObstacleNum());
}

std::optional<AStar::Vec2> LocalPlanner::GetValidGoal(const Costmap2D* costmap, const nav_msgs::Path& path) const {
  for (auto pose = path.poses.rbegin(); pose != path.poses.rend(); ++pose) {
    unsigned int mx = 0;
    unsigned int my = 0;
    if (costmap->worldToMap(pose->pose.position.x, pose->pose.position.y, mx, my) &&
        !costmap->IsLethalObstacle(mx, my)) {
      return ToSearchCell(mx, my);
    }
  }
  return std::nullopt;
}

void LocalPlanner::PublishPath(const nav_msgs::Path& path) {
  if (publish_) {
    path_publisher_.publish(path);
  }
}

nav_msgs::Path LocalPlanner::Plan(const Costmap2D* costmap, const std::shared_ptr<PathMapFiller>& filler,
                                  const AStar::Vec2& start, const AStar::Vec2& goal, bool smooth) {
  params_.allow_diagonal = true;
  params_.height = static_cast<std::uint16_t>(costmap->getSizeInCellsY());
  params_.width = static_cast<std::uint16_t>(costmap->getSizeInCellsX());
  params_.start = start;
  params_.goal = goal;
  internal::BoxedCells boxed(*costmap, obstacles_.GetBoxes());
  params_.is_passable = [costmap, &boxed, corridor = filler.get()](const AStar::Vec2& cell) {
    return IsPassable(*costmap, boxed, corridor, cell);
  };
  params_.extra_cost = [this, costmap](const AStar::Vec2& cell) { return ExtraCost(*costmap, params_, cell); };

  std::vector<AStar::Vec2> cells;
  if (FitsSearch(*costmap)) {
    BlockAllocator allocator;
    cells = AStar(&allocator).Find(params_);
  }
  nav_msgs::Path path = ToPath(*costmap, cells);
  return smooth ? internal::TakeShortcuts(path, *costmap, boxed) : path;
}

std::optional<nav_msgs::Path> LocalPlanner::CreatePlan(const Costmap2D* costmap,
                                                       const std::shared_ptr<PathMapFiller>& filler,
                                                       const geometry_msgs::PoseStamped& start,
                                                       const nav_msgs::Path& path, bool smooth) {
  const std::optional<AStar::Vec2> start_cell = StartCell(*costmap, start.pose.position);  // logs why not
  if (!start_cell) {
    return std::nullopt;
  }
  const std::optional<AStar::Vec2> goal_cell = GoalCell(*costmap, path, *start_cell);  // falls back along the path
  if (!goal_cell) {
    return std::nullopt;
  }
  nav_msgs::Path detour = Plan(costmap, filler, *start_cell, *goal_cell, smooth);
  if (detour.poses.empty()) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Cannot get a path.(%d,%d), (%d,%d)", start_cell->x, start_cell->y, goal_cell->x,
                        goal_cell->y);
    return std::nullopt;
  }
  PublishPath(detour);
  return detour;
}

std::optional<AStar::Vec2> LocalPlanner::StartCell(const Costmap2D& costmap, const geometry_msgs::Point& start) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!costmap.worldToMap(start.x, start.y, mx, my)) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Start is out map: (%f, %f)", start.x, start.y);
    return std::nullopt;
  }
  if (costmap.IsLethalObstacle(mx, my)) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Start is occupied:(%f, %f)", start.x, start.y);
    return std::nullopt;
  }
  return ToSearchCell(mx, my);
}

std::optional<AStar::Vec2> LocalPlanner::GoalCell(const Costmap2D& costmap, const nav_msgs::Path& path,
                                                  const AStar::Vec2& start) const {
  if (path.poses.empty()) {
    return std::nullopt;
  }
  const geometry_msgs::Point& goal = path.poses.back().pose.position;
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!costmap.worldToMap(goal.x, goal.y, mx, my)) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Goal is out map: (%f, %f)", goal.x, goal.y);
    return std::nullopt;
  }
  if (!costmap.IsLethalObstacle(mx, my)) {
    return ToSearchCell(mx, my);
  }
  NAV_CONTROLLER_WARN("[LocalPlanner] Goal is occupied:(%f, %f)", goal.x, goal.y);
  const std::optional<AStar::Vec2> fallback = GetValidGoal(&costmap, path);
  if (!fallback) {
    return ToSearchCell(mx, my);  // the search refuses it
  }
  if (ManhattanDistance(*fallback, start) <= kNearestFallback) {
    return std::nullopt;
  }
  NAV_CONTROLLER_INFO("[LocalPlanner] use new vaild goal: (%d,%d)", fallback->x, fallback->y);
  return fallback;
}

}  // namespace nav_controller
