#include "controller_base/local_plan/shortcuts.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "controller_base/internal/cell_at.h"
#include "controller_base/internal/grid_line.h"
#include "controller_base/internal/signed_cost.h"
#include "controller_base/local_plan/shortcut_anchors.h"

namespace nav_controller::internal {
namespace {

using costmap_2d::Costmap2D;

constexpr int kHighestFreeCost = 93;  // as a signed byte; one less than the planner's free cost, on purpose

std::vector<std::optional<GridCell>> CellsOf(const Costmap2D& costmap, const nav_msgs::Path& path) {
  std::vector<std::optional<GridCell>> cells;
  cells.reserve(path.poses.size());
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    cells.push_back(CellAt(costmap, pose.pose.position));
  }
  return cells;
}

bool IsFreeCell(const Costmap2D& costmap, BoxedCells& boxed, const GridCell& cell) {
  return SignedCost(costmap.getCost(cell.mx(), cell.my())) <= kHighestFreeCost && !boxed.Contains(cell.mx(), cell.my());
}

// An end off the map is never reached.
bool IsLineFree(const Costmap2D& costmap, BoxedCells& boxed, const std::optional<GridCell>& from,
                const std::optional<GridCell>& to) {
  return from && to &&
         !VisitGridLine(*from, *to, [&](const GridCell& cell) { return !IsFreeCell(costmap, boxed, cell); });
}

}  // namespace

nav_msgs::Path TakeShortcuts(const nav_msgs::Path& path, const Costmap2D& costmap, BoxedCells& boxed) {
  std::vector<std::optional<GridCell>> cells;
  const auto sees = [&](std::size_t from, std::size_t to) {
    if (cells.empty()) {  // on open ground the first line is free, and no other pose's cell is needed
      const bool sees_end = IsLineFree(costmap, boxed, path.poses[from].pose.position, path.poses[to].pose.position);
      if (!sees_end) {
        cells = CellsOf(costmap, path);
      }
      return sees_end;
    }
    return IsLineFree(costmap, boxed, cells[from], cells[to]);
  };
  nav_msgs::Path thinned;
  thinned.header = path.header;
  VisitShortcutAnchors(path.poses.size(), sees, [&](std::size_t kept) { thinned.poses.push_back(path.poses[kept]); });
  return thinned;
}

bool IsLineFree(const Costmap2D& costmap, BoxedCells& boxed, const geometry_msgs::Point& from,
                const geometry_msgs::Point& to) {
  return IsLineFree(costmap, boxed, CellAt(costmap, from), CellAt(costmap, to));
}

}  // namespace nav_controller::internal
