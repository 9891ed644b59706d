#ifndef CONTROLLER_BASE_ROBOT_GRID_H_
#define CONTROLLER_BASE_ROBOT_GRID_H_

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace controller_base::robot {

// The rectangle that the cells of a grid cover: cell (mx, my) reaches from origin + resolution * (mx, my) on, a cell
// wide. Metres.
struct Grid {
  int size_x = 0;  // cells
  int size_y = 0;
  double resolution = 1.0;
  double origin_x = 0.0;
  double origin_y = 0.0;

  std::size_t cells() const { return static_cast<std::size_t>(size_x) * static_cast<std::size_t>(size_y); }
  bool Contains(int mx, int my) const { return mx >= 0 && my >= 0 && mx < size_x && my < size_y; }
  // The place of a cell that the grid contains in its bytes: one row after the other, the lowest row first.
  std::size_t Index(int mx, int my) const {
    return static_cast<std::size_t>(my) * static_cast<std::size_t>(size_x) + static_cast<std::size_t>(mx);
  }
  // The place of the cell that holds a point. No value off the grid; NaN and infinities are off it.
  std::optional<std::size_t> IndexAt(double x, double y) const {
    const double mx = std::floor((x - origin_x) / resolution);
    const double my = std::floor((y - origin_y) / resolution);
    const bool contains = mx >= 0.0 && my >= 0.0 && mx < size_x && my < size_y;
    return contains ? std::optional(Index(static_cast<int>(mx), static_cast<int>(my))) : std::nullopt;
  }
};

// A byte for each cell of a grid.
struct GridBytes {
  Grid grid;
  std::vector<std::uint8_t> bytes;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_GRID_H_
