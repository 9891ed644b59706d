#ifndef TEST_FOLLOWER_OCCUPY_H_
#define TEST_FOLLOWER_OCCUPY_H_

#include "costmap_2d/cost_values.h"
#include "costmap_2d/costmap_2d.h"

namespace controller_base_test {

// A rectangle of the world, metres.
struct Rectangle {
  double from_x;
  double to_x;
  double from_y;
  double to_y;
};

// Gives `cost` to the cells of `map` whose centres lie in the rectangle.
inline void Occupy(const Rectangle& rectangle, costmap_2d::Costmap2D* map,
                   unsigned char cost = costmap_2d::LETHAL_OBSTACLE) {
  for (unsigned int my = 0; my < map->getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map->getSizeInCellsX(); ++mx) {
      double x = 0.0;
      double y = 0.0;
      map->mapToWorld(mx, my, x, y);
      if (x > rectangle.from_x && x < rectangle.to_x && y > rectangle.from_y && y < rectangle.to_y) {
        map->setCost(mx, my, cost);
      }
    }
  }
}

}  // namespace controller_base_test

#endif  // TEST_FOLLOWER_OCCUPY_H_
