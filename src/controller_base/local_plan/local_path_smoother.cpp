#include "controller_base/local_path_smoother.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "controller_base/internal/grid_line.h"
#include "controller_base/internal/signed_cost.h"

namespace nav_controller {
namespace {

using costmap_2d::Costmap2D;
using internal::GridCell;

constexpr int kHighestFreeCost = 93;  // as a signed byte; one less than the planner's free cost, on purpose

std::optional<GridCell> CellAt(const Costmap2D& costmap, const geometry_msgs::PoseStamped& pose) {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!costmap.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my)) {
    return std::nullopt;
  }
  return GridCell{static_cast<std::int32_t>(mx), static_cast<std::int32_t>(my)};
}

bool IsFreeCell(const Costmap2D& costmap, const LocalMapObstacle& obstacles, const GridCell& cell) {
  if (!costmap.IsInmap(cell.x, cell.y)) {
    return false;
  }
  const auto mx = static_cast<unsigned int>(cell.x);
  const auto my = static_cast<unsigned int>(cell.y);
  if (internal::SignedCost(costmap.getCost(mx, my)) > kHighestFreeCost) {
    return false;
  }
  geometry_msgs::Point center;
  costmap.mapToWorld(mx, my, center.x, center.y);
  return !obstacles.IsInObstacle(center);
}

// Whether `is_free(GridCell)` holds along the whole grid line; an end off the map is never reached.
template <typename IsFree>
bool IsLineFree(const std::optional<GridCell>& from, const std::optional<GridCell>& to, IsFree&& is_free) {
  return from && to && !internal::VisitGridLine(*from, *to, [&](const GridCell& cell) { return !is_free(cell); });
}

// Answers IsFreeCell, asking for each cell at most once: the many lines that one path tries cross the same cells again
// and again.
class FreeCells {
 public:
  // Serves the lines between any two of `cells`.
  FreeCells(const Costmap2D& costmap, const LocalMapObstacle& obstacles,
            const std::vector<std::optional<GridCell>>& cells)
      : costmap_(costmap), obstacles_(obstacles) {
    GridCell last{-1, -1};
    for (const std::optional<GridCell>& cell : cells) {
      if (!cell) {
        continue;
      }
      first_ = last.x < 0 ? *cell : GridCell{std::min(first_.x, cell->x), std::min(first_.y, cell->y)};
      last = {std::max(last.x, cell->x), std::max(last.y, cell->y)};
    }
    columns_ = static_cast<std::size_t>(last.x - first_.x + 1);
    answers_.resize(columns_ * static_cast<std::size_t>(last.y - first_.y + 1), Answer::kNotAsked);
  }

  bool operator()(const GridCell& cell) {
    Answer& answer =
        answers_[static_cast<std::size_t>(cell.y - first_.y) * columns_ + static_cast<std::size_t>(cell.x - first_.x)];
    if (answer == Answer::kNotAsked) {
      answer = IsFreeCell(costmap_, obstacles_, cell) ? Answer::kFree : Answer::kBlocked;
    }
    return answer == Answer::kFree;
  }

 private:
  enum class Answer : std::uint8_t { kNotAsked, kFree, kBlocked };

  const Costmap2D& costmap_;
  const LocalMapObstacle& obstacles_;
  GridCell first_{0, 0};  // lowest column and row of the rectangle around all cells
  std::size_t columns_ = 0;
  std::vector<Answer> answers_;  // row by row
};

}  // namespace

nav_msgs::Path LocalPathSmoother::Process(const nav_msgs::Path& path, const Costmap2D* costmap,
                                          const LocalMapObstacle& obstacles) {
  if (path.poses.size() <= 1) {
    return path;
  }
  std::vector<std::optional<GridCell>> cells;
  cells.reserve(path.poses.size());
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    cells.push_back(CellAt(*costmap, pose));
  }
  FreeCells is_free(*costmap, obstacles, cells);

  nav_msgs::Path thinned;
  thinned.header = path.header;
  const std::size_t last = path.poses.size() - 1;
  for (std::size_t anchor = 0; anchor != last;) {
    thinned.poses.push_back(path.poses[anchor]);
    std::size_t next = last;
    while (next > anchor + 1 && !IsLineFree(cells[anchor], cells[next], is_free)) {
      --next;
    }
    anchor = next;
  }
  thinned.poses.push_back(path.poses[last]);
  return thinned;
}

bool LocalPathSmoother::IsLineExtraObstacleFree(const Costmap2D* costmap, const LocalMapObstacle& obstacles,
                                                const geometry_msgs::PoseStamped& from,
                                                const geometry_msgs::PoseStamped& to) {
  return IsLineFree(CellAt(*costmap, from), CellAt(*costmap, to),
                    [&](const GridCell& cell) { return IsFreeCell(*costmap, obstacles, cell); });
}

}  // namespace nav_controller
