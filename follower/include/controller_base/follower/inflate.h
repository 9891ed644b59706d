#ifndef CONTROLLER_BASE_FOLLOWER_INFLATE_H_
#define CONTROLLER_BASE_FOLLOWER_INFLATE_H_

#include "controller_base/follower/local_map_view.h"

namespace controller_base::follower {

// Costs as PathFollower wants them around the obstacles of `map`, its cells of 254, for a robot of `robot_radius`
// metres. Unknown cells (255) stay unknown unless they are near an obstacle; all others are free ground, whatever their
// cost was. Throws std::invalid_argument for a map without cells, with a resolution that is not positive and finite or
// with another number of costs.
void Inflate(LocalMapData* map, double robot_radius);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_INFLATE_H_
