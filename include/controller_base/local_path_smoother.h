#ifndef CONTROLLER_BASE_LOCAL_PATH_SMOOTHER_H_
#define CONTROLLER_BASE_LOCAL_PATH_SMOOTHER_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include "controller_base/local_map_obstacle.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller {

// Thins a path of cell centres to straight segments over free cells. Stateless.
//
// Free is what the cost byte, read as signed, says: 94 to 127 block a segment, while 128 to 255 read as negative and do
// not. Lethal and inscribed cells (254, 253) are therefore not seen here unless a ring of 94 or more surrounds them;
// to stop at them, check the result with IsBlockingBetweenPoints.
class LocalPathSmoother {
 public:
  // The first pose, from each kept pose the farthest later one that a free straight segment reaches (the next one
  // without a test), the last pose: whole copies in their order, under the path's header. From each kept pose the last
  // pose is tried first, then one after the other before it, each once. A path of at most two poses comes back
  // unchanged; it has no segment to test, and `costmap` may then be null.
  static nav_msgs::Path Process(const nav_msgs::Path& path, const costmap_2d::Costmap2D* costmap,
                                const LocalMapObstacle& obstacles);

  // Whether every cell on the grid line from `from` to `to`, both end cells included, is on the map, costs at most 93
  // as a signed byte and has its centre outside every box. False when an end is off the map.
  static bool IsLineExtraObstacleFree(const costmap_2d::Costmap2D* costmap, const LocalMapObstacle& obstacles,
                                      const geometry_msgs::PoseStamped& from, const geometry_msgs::PoseStamped& to);
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_LOCAL_PATH_SMOOTHER_H_
