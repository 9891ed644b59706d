#ifndef CONTROLLER_BASE_RECORDING_EMPTY_GRID_H_
#define CONTROLLER_BASE_RECORDING_EMPTY_GRID_H_

#include <nav_msgs/OccupancyGrid.h>

#include "costmap_2d/costmap_2d.h"

namespace controller_base::recording {

constexpr char kMapFrame[] = "map";

// The cells of a map, all 0 and without a stamp.
nav_msgs::OccupancyGrid EmptyGrid(const costmap_2d::Costmap2D& map);

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_EMPTY_GRID_H_
