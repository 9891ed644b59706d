#ifndef CONTROLLER_BASE_INTERNAL_CELL_AT_H_
#define CONTROLLER_BASE_INTERNAL_CELL_AT_H_

#include <geometry_msgs/Point.h>

#include <cstdint>
#include <optional>

#include "controller_base/internal/grid_line.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller::internal {

// The cell that holds `point` (metres; z is ignored); none off the map.
inline std::optional<GridCell> CellAt(const costmap_2d::Costmap2D& costmap, const geometry_msgs::Point& point) {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!costmap.worldToMap(point.x, point.y, mx, my)) {
    return std::nullopt;
  }
  return GridCell{static_cast<std::int32_t>(mx), static_cast<std::int32_t>(my)};
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_INTERNAL_CELL_AT_H_
