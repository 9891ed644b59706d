#include "controller_base/platform/astar.h"

#include "astar/jump_point_search.h"

inline namespace controller_base_platform {

std::vector<AStar::Vec2> AStar::Find(const Params& params) {
  const auto is_on_map = [&params](const Vec2& cell) { return cell.x < params.width && cell.y < params.height; };
  if (!is_on_map(params.start) || !is_on_map(params.goal)) {
    return {};
  }
  return grid_search::FindCheapestPath(params, allocator_);
}

}  // namespace controller_base_platform
