#include "recording/empty_grid.h"

#include <cstddef>

namespace controller_base::recording {

nav_msgs::OccupancyGrid EmptyGrid(const costmap_2d::Costmap2D& map) {
  nav_msgs::OccupancyGrid grid;
  grid.header.frame_id = kMapFrame;
  grid.info.resolution = static_cast<float>(map.getResolution());
  grid.info.width = map.getSizeInCellsX();
  grid.info.height = map.getSizeInCellsY();
  grid.info.origin.position.x = map.getOriginX();
  grid.info.origin.position.y = map.getOriginY();
  grid.info.origin.orientation.w = 1.0;
  grid.data.resize(static_cast<std::size_t>(map.getSizeInCellsX()) * map.getSizeInCellsY());
  return grid;
}

}  // namespace controller_base::recording
