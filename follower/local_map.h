#ifndef CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_H_
#define CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_H_

#include "controller_base/follower/local_map_view.h"
#include "costmap_2d/costmap_2d.h"

namespace controller_base::follower {

// The view as the library's map. Throws std::invalid_argument when Costmap2D does, and for a view without costs.
costmap_2d::Costmap2D ToCostmap(const LocalMapView& view);

LocalMapData ToLocalMapData(const costmap_2d::Costmap2D& map);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_H_
