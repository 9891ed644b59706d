#ifndef TEST_SUPPORT_MAPS_H_
#define TEST_SUPPORT_MAPS_H_

#include <costmap_2d/costmap_2d.h>
#include <geometry_msgs/Point.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "test/support/paths.h"

namespace controller_base_test {

// What one character of a map's text stands for:
//   .     free, cost 0                     L     free and marked by the laser
//   #     lethal, 254                      X     lethal and marked by the laser
//   i     inscribed, 253                   0..9  cost 0, 10, 20 .. 90
//   ?     unknown, 255                     z a b cost 93, 94 and 95, around the threshold of planner and smoother
//   h n   cost 127 and 128, the highest and lowest signed byte
struct MapCharacter {
  unsigned char cost;
  bool laser;
};

inline MapCharacter CellOfCharacter(char character) {
  if (character >= '0' && character <= '9') {
    return {static_cast<unsigned char>(10 * (character - '0')), false};
  }
  switch (character) {
    case '.':
      return {costmap_2d::FREE_SPACE, false};
    case 'L':
      return {costmap_2d::FREE_SPACE, true};
    case '#':
      return {costmap_2d::LETHAL_OBSTACLE, false};
    case 'X':
      return {costmap_2d::LETHAL_OBSTACLE, true};
    case 'i':
      return {costmap_2d::INSCRIBED_INFLATED_OBSTACLE, false};
    case '?':
      return {costmap_2d::NO_INFORMATION, false};
    case 'z':
      return {93, false};
    case 'a':
      return {94, false};
    case 'b':
      return {95, false};
    case 'h':
      return {127, false};
    case 'n':
      return {128, false};
    default:
      throw std::invalid_argument(std::string("no meaning for the map character ") + character);
  }
}

// The map that `rows` show; the top line is the highest y. `resolution` in metres per cell, `origin` the lower left
// corner in metres.
inline costmap_2d::Costmap2D MapFromText(const std::vector<std::string>& rows, double resolution = 0.05,
                                         Xy origin = {0.0, 0.0}) {
  const auto height = static_cast<unsigned int>(rows.size());
  const auto width = static_cast<unsigned int>(rows.front().size());
  costmap_2d::Costmap2D map(width, height, resolution, origin.x, origin.y);
  for (unsigned int my = 0; my < height; ++my) {
    const std::string& row = rows.at(height - 1 - my);
    if (row.size() != width) {
      throw std::invalid_argument("the lines of a map differ in length");
    }
    for (unsigned int mx = 0; mx < width; ++mx) {
      const MapCharacter cell = CellOfCharacter(row[mx]);
      map.setCost(mx, my, cell.cost);
      map.SetLaserObstacle(mx, my, cell.laser);
    }
  }
  return map;
}

// The centre of a cell.
inline geometry_msgs::Point CenterOf(const costmap_2d::Costmap2D& map, unsigned int mx, unsigned int my) {
  geometry_msgs::Point center;
  map.mapToWorld(mx, my, center.x, center.y);
  return center;
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_MAPS_H_
