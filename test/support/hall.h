#ifndef TEST_SUPPORT_HALL_H_
#define TEST_SUPPORT_HALL_H_

#include "costmap_2d/cost_values.h"
#include "costmap_2d/costmap_2d.h"
#include "simulation/path_search.h"

namespace controller_base::demo {

// 12 m x `depth` with walls of one cell around it.
inline costmap_2d::Costmap2D Hall(double depth) {
  const unsigned int columns = 240;
  const auto rows = static_cast<unsigned int>(depth / 0.05);
  costmap_2d::Costmap2D map(columns, rows, 0.05, 0.0, 0.0);
  for (unsigned int my = 0; my < rows; ++my) {
    for (unsigned int mx = 0; mx < columns; ++mx) {
      if (mx == 0 || my == 0 || mx + 1 == columns || my + 1 == rows) {
        map.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
      }
    }
  }
  return map;
}

// Along the hall in its middle, from x = 1 m to x = 11 m, a pose every 5 cm.
inline nav_msgs::Path AlongHall(double depth) {
  std::vector<nav_core::math::Vec2d> points;
  for (int i = 0; i <= 200; ++i) {
    points.emplace_back(1.0 + 0.05 * i, 0.5 * depth);
  }
  return simulation::ToPath(points);
}

inline simulation::Obstacle Box(double x, double y, double length, double width, bool low = false) {
  simulation::Obstacle box;
  box.name = "box";
  box.center = {x, y};
  box.length = length;
  box.width = width;
  box.low = low;
  return box;
}

}  // namespace controller_base::demo

#endif  // TEST_SUPPORT_HALL_H_
