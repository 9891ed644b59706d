#include <controller_base/obstacle_blocking_analyzer.h>

#include "sides.h"

bool IsBlocked(const MapView& view) {
  costmap_2d::Costmap2D map(view.size_x, view.size_y, view.resolution, view.origin_x, view.origin_y);
  for (unsigned int my = 0; my < view.size_y; ++my) {
    for (unsigned int mx = 0; mx < view.size_x; ++mx) {
      map.setCost(mx, my, view.costs[my * view.size_x + mx]);
    }
  }
  geometry_msgs::Point start;
  geometry_msgs::Point end;
  end.x = 1.0;
  return nav_controller::IsBlockingBetweenPoints(&map, start, end);
}
