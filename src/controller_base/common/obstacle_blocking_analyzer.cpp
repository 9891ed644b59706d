#include "controller_base/obstacle_blocking_analyzer.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "controller_base/internal/cell_at.h"
#include "controller_base/internal/grid_line.h"
#include "controller_base/internal/logging.h"
#include "controller_base/internal/signed_cost.h"

namespace nav_controller {
namespace {

using costmap_2d::Costmap2D;
using internal::CellAt;
using internal::GridCell;

constexpr double kSideDistance = 0.2;  // metres from the middle of a blocked run to the points beside it

// Every visited cell is read with getCost first: a robot's own map may count or refresh on that call.
bool IsLethalCell(const Costmap2D& costmap, const GridCell& cell) {
  static_cast<void>(costmap.getCost(cell.mx(), cell.my()));
  return costmap.IsLethalObstacle(cell.mx(), cell.my());
}

bool IsLethalPoint(const Costmap2D& costmap, const geometry_msgs::Point& point) {
  const std::optional<GridCell> cell = CellAt(costmap, point);
  return cell && IsLethalCell(costmap, *cell);
}

bool IsClosedPoint(const Costmap2D& costmap, const geometry_msgs::Point& point) {
  const std::optional<GridCell> cell = CellAt(costmap, point);
  return !cell || IsLethalCell(costmap, *cell);
}

// Whether `is_blocking(GridCell)` holds for a cell of the grid line from `start` to `end`; false when an end is off the
// map.
template <typename IsBlocking>
bool IsLineBlocked(const Costmap2D& costmap, const geometry_msgs::Point& start, const geometry_msgs::Point& end,
                   IsBlocking&& is_blocking) {
  const std::optional<GridCell> start_cell = CellAt(costmap, start);
  const std::optional<GridCell> end_cell = CellAt(costmap, end);
  if (!start_cell || !end_cell) {
    return false;
  }
  return internal::VisitGridLine(*start_cell, *end_cell, is_blocking);
}

}  // namespace

bool IsBlockingPathInflateObstacle(const Costmap2D* costmap, const nav_msgs::Path& path) {
  if (costmap == nullptr) {
    return false;
  }
  const bool blocked = std::any_of(path.poses.begin(), path.poses.end(), [&](const geometry_msgs::PoseStamped& pose) {
    return IsLethalPoint(*costmap, pose.pose.position);
  });
  if (blocked) {
    NAV_CONTROLLER_DEBUG("IsBlockingPathInflateObstacle: path check failed");
  }
  return blocked;
}

bool IsBlockingPathLaserObstacle(const Costmap2D* costmap, const nav_msgs::Path& path) {
  if (costmap == nullptr) {
    return false;
  }
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    const geometry_msgs::Point& previous = path.poses[i - 1].pose.position;
    const geometry_msgs::Point& current = path.poses[i].pose.position;
    if (IsLethalPoint(*costmap, current) && IsBlockingLaserBetweenPoints(costmap, previous, current)) {
      return true;
    }
  }
  return false;
}

bool IsBlockingLaserBetweenPoints(const Costmap2D* costmap, const geometry_msgs::Point& start,
                                  const geometry_msgs::Point& end) {
  const bool debug = internal::IsDebugLogged();
  std::string debug_str;
  const bool blocked = IsLineBlocked(*costmap, start, end, [&](const GridCell& cell) {
    const int cost = internal::SignedCost(costmap->getCost(cell.mx(), cell.my()));
    if (debug) {
      debug_str += ", " + std::to_string(cost);
    }
    return costmap->IsLaserObstacle(cell.mx(), cell.my());
  });
  if (blocked) {
    NAV_CONTROLLER_DEBUG("IsLaserObstacle: (%.2f,%.2f)", start.x, start.y);
  } else {
    NAV_CONTROLLER_DEBUG("debug_str: %s", debug_str.c_str());
  }
  return blocked;
}

bool IsBlockingBetweenPoints(const Costmap2D* costmap, const geometry_msgs::Point& start,
                             const geometry_msgs::Point& end) {
  return IsLineBlocked(*costmap, start, end, [&](const GridCell& cell) { return IsLethalCell(*costmap, cell); });
}

nav_msgs::Path FindObstacleSegment(const Costmap2D* costmap, const nav_msgs::Path& path) {
  const auto is_lethal = [&](const geometry_msgs::PoseStamped& pose) {
    return IsLethalPoint(*costmap, pose.pose.position);
  };
  const auto first = std::find_if(path.poses.begin(), path.poses.end(), is_lethal);
  const auto last = std::find_if_not(first, path.poses.end(), is_lethal);
  nav_msgs::Path segment;
  segment.header = path.header;
  segment.poses.assign(first, last);
  return segment;
}

std::pair<geometry_msgs::Point, geometry_msgs::Point> CalculatePerpendicularPoints(
    const geometry_msgs::PoseStamped& start, const geometry_msgs::PoseStamped& end, double distance) {
  const geometry_msgs::Point& a = start.pose.position;
  const geometry_msgs::Point& b = end.pose.position;
  const double mid_x = (a.x + b.x) * 0.5;
  const double mid_y = (a.y + b.y) * 0.5;
  NAV_CONTROLLER_INFO("start (%.2f,%.2f), end (%.2f,%.2f), mid:(%.2f,%.2f)", a.x, a.y, b.x, b.y, mid_x, mid_y);

  double normal_x = -(b.y - a.y);
  double normal_y = b.x - a.x;
  const double length = std::hypot(normal_x, normal_y);
  if (length > 0.0) {
    normal_x /= length;
    normal_y /= length;
  }
  const auto beside = [&](double offset) {
    geometry_msgs::Point point;
    point.x = mid_x + offset * normal_x;
    point.y = mid_y + offset * normal_y;
    return point;
  };
  return {beside(distance), beside(-distance)};
}

bool IsBilateralObstacle(const Costmap2D* costmap, const nav_msgs::Path& path) {
  const nav_msgs::Path segment = FindObstacleSegment(costmap, path);
  if (segment.poses.size() < 2) {
    return false;
  }
  const auto [left, right] = CalculatePerpendicularPoints(segment.poses.front(), segment.poses.back(), kSideDistance);
  return IsClosedPoint(*costmap, left) && IsClosedPoint(*costmap, right);
}

}  // namespace nav_controller
