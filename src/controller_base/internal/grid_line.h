#ifndef CONTROLLER_BASE_INTERNAL_GRID_LINE_H_
#define CONTROLLER_BASE_INTERNAL_GRID_LINE_H_

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace nav_controller::internal {

// A cell of a map, signed for the arithmetic of lines.
struct GridCell {
  std::int32_t x;  // column
  std::int32_t y;  // row

  // As a map takes them; the cell must lie on it.
  unsigned int mx() const { return static_cast<unsigned int>(x); }
  unsigned int my() const { return static_cast<unsigned int>(y); }
};

// Visits the cells of the integer line from `start` to `end`, both included, in order, and stops at the first for which
// `visit(cell)` is true. Returns whether one was.
//
// Bresenham's line (J. E. Bresenham, "Algorithm for computer control of a digital plotter", 1965): the axis with the
// larger difference drives, x where both are equal. Walked from the other end a line may take other cells: (0,0)-(1,2)
// goes through (1,1), (1,2)-(0,0) through (0,1).
template <typename Visit>
bool VisitGridLine(GridCell start, GridCell end, Visit&& visit) {
  const std::int32_t dx = std::abs(end.x - start.x);
  const std::int32_t dy = std::abs(end.y - start.y);
  const std::int32_t step_x = start.x > end.x ? -1 : 1;
  const std::int32_t step_y = start.y > end.y ? -1 : 1;
  const bool x_drives = dx >= dy;
  const std::int32_t length = std::max(dx, dy);
  const std::int32_t side = std::min(dx, dy);

  GridCell cell = start;
  std::int32_t error = length / 2;
  for (std::int32_t i = 0; i <= length; ++i) {
    if (visit(cell)) {
      return true;
    }
    error += side;
    const bool sidestep = error >= length;
    if (sidestep) {
      error -= length;
    }
    cell.x += x_drives || sidestep ? step_x : 0;
    cell.y += !x_drives || sidestep ? step_y : 0;
  }
  return false;
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_INTERNAL_GRID_LINE_H_
