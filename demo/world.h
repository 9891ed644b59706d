#ifndef CONTROLLER_BASE_DEMO_WORLD_H_
#define CONTROLLER_BASE_DEMO_WORLD_H_

#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "nav_core/math/vec2d.h"

namespace controller_base_demo {

// A box that stands in the world and is missing on the map.
struct Obstacle {
  std::string name;
  nav_core::math::Vec2d center;  // m
  double yaw = 0.0;              // rad
  double length = 0.0;           // m, along the yaw
  double width = 0.0;            // m, across it
  bool low = false;              // the laser looks over it; only the bumper feels it
};

// What is really there: the map's walls and the obstacles, in cells of the map. What the map does not know is empty,
// and the map's edge is a wall that the laser does not see.
class World {
 public:
  // `map` (LETHAL_OBSTACLE: a wall) must outlive the world.
  World(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles);

  const costmap_2d::Costmap2D& map() const { return map_; }
  const std::vector<Obstacle>& obstacles() const { return obstacles_; }

  void Add(const Obstacle& obstacle);

  // Whether the cell stops the robot's body. Off the map: yes.
  bool IsSolid(int mx, int my) const;
  // Whether a ray of the laser ends at the cell. Off the map: no.
  bool StopsLaser(int mx, int my) const;

  // A place where a disc and a solid cell overlap.
  struct Overlap {
    int mx;
    int my;
    nav_core::math::Vec2d nearest;  // the cell's point that is nearest to the disc's centre
  };
  // All of them, row by row. A disc that just touches a cell does not overlap it.
  std::vector<Overlap> Overlaps(const nav_core::math::Vec2d& center, double radius) const;

 private:
  const costmap_2d::Costmap2D& map_;
  std::vector<Obstacle> obstacles_;
  std::vector<unsigned char> cells_;  // one byte of CellFlag bits for each cell of the map
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_WORLD_H_
