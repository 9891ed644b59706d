#ifndef CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_
#define CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_

// The bundled grid map. Beside another costmap_2d, that of the stock navigation stack for example,
//   - the library's public headers mean this map, whatever the order of the include path;
//   - one file includes either this map or the other: what includes both does not compile, so that the library never
//     takes a map of the other kind. To use both, pass bytes, size, resolution and origin from a file that includes the
//     other to one that includes this;
//   - <costmap_2d/costmap_2d.h> is the other where the other's folder comes first on the include path. Where this
//     project's comes first, it is an error that names this header; with CONTROLLER_BASE_HIDE_PLAIN_NAMES defined it
//     is the other there, too.
// The same holds for the other headers of this folder and their plain names, <astar/astar.h> for example.
#if defined(COSTMAP_2D_COSTMAP_2D_H_) || defined(COSTMAP_2D_COST_VALUES_H_)
#error The bundled map of controller_base is included after another costmap_2d. A file can include only one of them: \
see <controller_base/platform/costmap_2d.h>.
#else

#include <cstddef>
#include <vector>

#include "controller_base/platform/cost_values.h"

namespace costmap_2d {
inline namespace controller_base_platform {

// A grid of cost bytes over a rectangle of the world, with the laser's marks beside the costs.
//
// Cell (mx, my) covers [origin_x + mx * resolution, origin_x + (mx + 1) * resolution) in x, likewise in y: a point on a
// cell's lower or left edge belongs to it, and the map's upper and right edges are off the map. NaN and infinities are
// off the map. The edges are doubles: where the resolution is below their spacing at the origin, several cells begin at
// one double, and the last of them holds it; the others are empty, and their centres lie in another cell or off the
// map. Operations that take a cell as unsigned indices do not check them: the cell must lie on the map.
class Costmap2D {  // "ambiguous"? The file includes another costmap_2d, too: see the top of this header.
 public:
  // Sizes in cells, `resolution` in metres per cell, the origin (the outer corner of cell (0, 0)) in metres.
  // Throws std::invalid_argument for a map without cells, for a resolution that is not positive and finite and for an
  // origin that is not finite.
  Costmap2D(unsigned int cells_size_x, unsigned int cells_size_y, double resolution, double origin_x, double origin_y,
            unsigned char default_value = FREE_SPACE);

  unsigned char getCost(unsigned int mx, unsigned int my) const { return costs_[Index(mx, my)]; }
  void setCost(unsigned int mx, unsigned int my, unsigned char cost) { costs_[Index(mx, my)] = cost; }

  // The cell that holds the world point. False when the point is off the map; `mx` and `my` are then left alone.
  bool worldToMap(double wx, double wy, unsigned int& mx, unsigned int& my) const;

  // The centre of a cell, metres.
  void mapToWorld(unsigned int mx, unsigned int my, double& wx, double& wy) const {
    wx = origin_x_ + (mx + 0.5) * resolution_;
    wy = origin_y_ + (my + 0.5) * resolution_;
  }

  unsigned int getSizeInCellsX() const { return size_x_; }
  unsigned int getSizeInCellsY() const { return size_y_; }
  double getResolution() const { return resolution_; }
  double getOriginX() const { return origin_x_; }
  double getOriginY() const { return origin_y_; }

  // All cost bytes, row my = 0 first, getSizeInCellsX() bytes a row.
  const unsigned char* getCharMap() const { return costs_.data(); }

  // Whether a world point, or a cell, lies on the map.
  bool IsInmap(double wx, double wy) const;
  bool IsInmap(int mx, int my) const {
    return mx >= 0 && my >= 0 && static_cast<unsigned int>(mx) < size_x_ && static_cast<unsigned int>(my) < size_y_;
  }

  // Whether the robot's centre must not enter the cell: inscribed (253) or lethal (254). Unknown (255) is not lethal.
  bool IsLethalObstacle(unsigned int mx, unsigned int my) const {
    const unsigned char cost = getCost(mx, my);
    return cost == INSCRIBED_INFLATED_OBSTACLE || cost == LETHAL_OBSTACLE;
  }

  // Whether the laser marked the cell. The mark is independent of the cost.
  bool IsLaserObstacle(unsigned int mx, unsigned int my) const { return laser_obstacles_[Index(mx, my)] != 0; }
  void SetLaserObstacle(unsigned int mx, unsigned int my, bool marked) {
    laser_obstacles_[Index(mx, my)] = marked ? 1 : 0;
  }
  void ClearLaserObstacles();

 private:
  std::size_t Index(unsigned int mx, unsigned int my) const { return static_cast<std::size_t>(my) * size_x_ + mx; }

  unsigned int size_x_;
  unsigned int size_y_;
  double resolution_;
  double origin_x_;
  double origin_y_;
  std::vector<unsigned char> costs_;
  std::vector<unsigned char> laser_obstacles_;
};

}  // namespace controller_base_platform
}  // namespace costmap_2d

#endif  // no other costmap_2d
#endif  // CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_
