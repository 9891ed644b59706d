#ifndef TEST_LOCAL_PLAN_RANDOM_WORLDS_H_
#define TEST_LOCAL_PLAN_RANDOM_WORLDS_H_

#include <costmap_2d/costmap_2d.h>
#include <geometry_msgs/Point.h>
#include <rapidcheck.h>

#include <vector>

#include "test/support/paths.h"

namespace controller_base_test {

// A cost byte on either side of a limit, or free: the more often the smaller `clutter`, 0 to 100.
inline rc::Gen<unsigned char> CostByte(int clutter) {
  return rc::gen::weightedOneOf<unsigned char>(
      {{static_cast<std::size_t>(110 - clutter), rc::gen::just<unsigned char>(0)},
       {static_cast<std::size_t>(clutter),
        rc::gen::element<unsigned char>(50, 93, 94, 95, 96, 126, 127, 128, 200, 252, 253, 254, 255)}});
}

// A map of `columns` x `rows` cells somewhere in the world: of 0.05 m, or so large that a virtual box holds the centre
// of one cell at most.
inline costmap_2d::Costmap2D RandomMap(int columns, int rows) {
  const double resolution = *rc::gen::weightedElement<double>({{4, 0.05}, {1, 1.0}, {1, 2.5}, {1, 40.0}});
  costmap_2d::Costmap2D map(static_cast<unsigned int>(columns), static_cast<unsigned int>(rows), resolution,
                            *rc::gen::element(0.0, -1.3, 100.0), *rc::gen::element(0.0, 2.7, -50.0));
  const int clutter = *rc::gen::inRange(0, 60);
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      map.setCost(mx, my, *CostByte(clutter));
    }
  }
  return map;
}

// A point on the map, or up to `cells_off` cells off it, on a grid of quarter cells: edges and centres are frequent.
inline geometry_msgs::Point RandomPointAround(const costmap_2d::Costmap2D& map, int cells_off) {
  constexpr int kQuarters = 4;
  const double quarter = map.getResolution() / kQuarters;
  const auto along = [&](unsigned int cells) {
    return quarter * *rc::gen::inRange(-kQuarters * cells_off, kQuarters * (static_cast<int>(cells) + cells_off));
  };
  const double x = map.getOriginX() + along(map.getSizeInCellsX());
  return PointAt(x, map.getOriginY() + along(map.getSizeInCellsY()));
}

struct RandomBox {
  geometry_msgs::Point center;
  double heading;  // radians
};

inline std::vector<RandomBox> RandomBoxes(const costmap_2d::Costmap2D& map, int at_most) {
  std::vector<RandomBox> boxes(static_cast<std::size_t>(*rc::gen::inRange(0, at_most + 1)));
  for (RandomBox& box : boxes) {
    box = {RandomPointAround(map, 1), 0.1 * *rc::gen::inRange(-40, 40)};
  }
  return boxes;
}

}  // namespace controller_base_test

#endif  // TEST_LOCAL_PLAN_RANDOM_WORLDS_H_
