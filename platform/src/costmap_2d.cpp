#include "controller_base/platform/costmap_2d.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace costmap_2d {
inline namespace controller_base_platform {
namespace {

std::size_t CellCount(unsigned int size_x, unsigned int size_y, double resolution, double origin_x, double origin_y) {
  if (size_x == 0 || size_y == 0) {
    throw std::invalid_argument("Costmap2D: a map needs at least one cell");
  }
  if (!std::isfinite(resolution) || resolution <= 0.0) {
    throw std::invalid_argument("Costmap2D: the resolution must be positive and finite");
  }
  if (!std::isfinite(origin_x) || !std::isfinite(origin_y)) {
    throw std::invalid_argument("Costmap2D: the origin must be finite");
  }
  return static_cast<std::size_t>(size_x) * size_y;
}

// The cells along one axis of a map. Their edges are the doubles origin + index * resolution.
struct Axis {
  double origin;      // metres
  double resolution;  // metres per cell
  unsigned int size;  // cells

  double Edge(unsigned int index) const { return origin + index * resolution; }

  // Whether the cell, which is on the map, holds a point of the map.
  bool Holds(unsigned int index, double world) const {
    return Edge(index) <= world && (index + 1 == size || world < Edge(index + 1));
  }

  // The last cell that begins at or before a point of the map.
  unsigned int Find(double world) const {
    unsigned int first = 0;
    unsigned int end = size;
    while (end - first > 1) {
      const unsigned int middle = first + (end - first) / 2;
      (Edge(middle) <= world ? first : end) = middle;
    }
    return first;
  }
};

// The index of the cell that holds `world`; false off the map. The quotient may be off by a rounding, and by many cells
// where the resolution is near or below the spacing of doubles. Written so that a NaN fails the first test.
bool CellAlong(double world, const Axis& axis, unsigned int& index) {
  if (!(world >= axis.origin && world < axis.Edge(axis.size))) {
    return false;
  }
  index = static_cast<unsigned int>(std::min((world - axis.origin) / axis.resolution, axis.size - 1.0));
  if (!axis.Holds(index, world)) {
    index = axis.Find(world);
  }
  return true;
}

}  // namespace

Costmap2D::Costmap2D(unsigned int cells_size_x, unsigned int cells_size_y, double resolution, double origin_x,
                     double origin_y, unsigned char default_value)
    : size_x_(cells_size_x),
      size_y_(cells_size_y),
      resolution_(resolution),
      origin_x_(origin_x),
      origin_y_(origin_y),
      costs_(CellCount(cells_size_x, cells_size_y, resolution, origin_x, origin_y), default_value),
      laser_obstacles_(costs_.size(), 0) {}

bool Costmap2D::worldToMap(double wx, double wy, unsigned int& mx, unsigned int& my) const {
  unsigned int x = 0;
  unsigned int y = 0;
  if (!CellAlong(wx, {origin_x_, resolution_, size_x_}, x) || !CellAlong(wy, {origin_y_, resolution_, size_y_}, y)) {
    return false;
  }
  mx = x;
  my = y;
  return true;
}

bool Costmap2D::IsInmap(double wx, double wy) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  return worldToMap(wx, wy, mx, my);
}

void Costmap2D::ClearLaserObstacles() {
  std::fill(laser_obstacles_.begin(), laser_obstacles_.end(), static_cast<unsigned char>(0));
}

}  // namespace controller_base_platform
}  // namespace costmap_2d
