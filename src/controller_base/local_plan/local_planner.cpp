#include "controller_base/local_planner.h"

#include <ros/node_handle.h>
#include <ros/time.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "controller_base/internal/logging.h"
#include "controller_base/internal/signed_cost.h"
#include "controller_base/local_plan/boxed_cells.h"
#include "controller_base/local_plan/plan_ends.h"
#include "controller_base/local_plan/shortcuts.h"
#include "controller_base/platform/block_allocator.h"

namespace nav_controller {
namespace {

using costmap_2d::Costmap2D;

constexpr char kPathTopic[] = "/DWB/local_plan";
constexpr std::uint32_t kPathQueueSize = 1;
constexpr unsigned int kLongestSide = std::numeric_limits<std::uint16_t>::max();  // cells, what a search cell can hold
constexpr int kFreeCost = 94;  // as a signed byte; one more than the smoother's highest free cost, on purpose
constexpr double kExtraCostSlope = 20.0;  // extra cost per cost step above kFreeCost

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

// Of a goal that is off the map or occupied.
void LogGoal(const internal::PlanEnds& ends, const geometry_msgs::Point& goal) {
  if (ends.check == internal::PlanCheck::kGoalOffMap) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Goal is out map: (%f, %f)", goal.x, goal.y);
    return;
  }
  NAV_CONTROLLER_WARN("[LocalPlanner] Goal is occupied:(%f, %f)", goal.x, goal.y);
  if (ends.check == internal::PlanCheck::kFallback) {
    NAV_CONTROLLER_INFO("[LocalPlanner] use new vaild goal: (%d,%d)", ends.goal.x, ends.goal.y);
  }
}

void LogPlanEnds(const internal::PlanEnds& ends, const geometry_msgs::Point& start, const nav_msgs::Path& path) {
  switch (ends.check) {
    case internal::PlanCheck::kStartOffMap:
      NAV_CONTROLLER_WARN("[LocalPlanner] Start is out map: (%f, %f)", start.x, start.y);
      return;
    case internal::PlanCheck::kStartOccupied:
      NAV_CONTROLLER_WARN("[LocalPlanner] Start is occupied:(%f, %f)", start.x, start.y);
      return;
    case internal::PlanCheck::kEmptyPath:
    case internal::PlanCheck::kFreeGoal:
      return;
    default:
      LogGoal(ends, path.poses.back().pose.position);
  }
}

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
  return internal::LastFreeCell(*costmap, path);
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
  const internal::PlanEnds ends = internal::FindPlanEnds(*costmap, start.pose.position, path);
  LogPlanEnds(ends, start.pose.position, path);
  if (!ends.IsSearchable()) {
    return std::nullopt;
  }
  nav_msgs::Path detour = Plan(costmap, filler, ends.start, ends.goal, smooth);
  if (detour.poses.empty()) {
    NAV_CONTROLLER_WARN("[LocalPlanner] Cannot get a path.(%d,%d), (%d,%d)", ends.start.x, ends.start.y, ends.goal.x,
                        ends.goal.y);
    return std::nullopt;
  }
  PublishPath(detour);
  return detour;
}

}  // namespace nav_controller
