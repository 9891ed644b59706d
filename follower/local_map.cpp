#include "follower/local_map.h"

#include <stdexcept>

namespace controller_base::follower {
namespace {

std::size_t CellCount(const LocalMapView& view) { return static_cast<std::size_t>(view.size_x) * view.size_y; }

}  // namespace

LocalMapData::LocalMapData(const LocalMapView& view)
    : costs(view.costs, view.costs + CellCount(view)),
      size_x(view.size_x),
      size_y(view.size_y),
      resolution(view.resolution),
      origin_x(view.origin_x),
      origin_y(view.origin_y) {
  if (view.laser_marks != nullptr) {
    laser_marks.assign(view.laser_marks, view.laser_marks + CellCount(view));
  }
}

LocalMapView LocalMapData::View() const {
  return {costs.data(), laser_marks.empty() ? nullptr : laser_marks.data(), size_x, size_y, resolution, origin_x,
          origin_y};
}

costmap_2d::Costmap2D ToCostmap(const LocalMapView& view) {
  costmap_2d::Costmap2D map(view.size_x, view.size_y, view.resolution, view.origin_x, view.origin_y);
  if (view.costs == nullptr) {
    throw std::invalid_argument("a local map without costs");
  }
  std::size_t cell = 0;
  for (unsigned int my = 0; my < view.size_y; ++my) {
    for (unsigned int mx = 0; mx < view.size_x; ++mx, ++cell) {
      map.setCost(mx, my, view.costs[cell]);
      if (view.laser_marks != nullptr && view.laser_marks[cell] != 0) {
        map.SetLaserObstacle(mx, my, true);
      }
    }
  }
  return map;
}

LocalMapData ToLocalMapData(const costmap_2d::Costmap2D& map) {
  LocalMapData data;
  data.size_x = map.getSizeInCellsX();
  data.size_y = map.getSizeInCellsY();
  data.resolution = map.getResolution();
  data.origin_x = map.getOriginX();
  data.origin_y = map.getOriginY();
  const std::size_t cells = CellCount(data.View());
  data.costs.reserve(cells);
  data.laser_marks.reserve(cells);
  for (unsigned int my = 0; my < data.size_y; ++my) {
    for (unsigned int mx = 0; mx < data.size_x; ++mx) {
      data.costs.push_back(map.getCost(mx, my));
      data.laser_marks.push_back(map.IsLaserObstacle(mx, my) ? 1 : 0);
    }
  }
  return data;
}

}  // namespace controller_base::follower
