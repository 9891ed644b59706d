#include "controller_base/local_path_smoother.h"

#include <cstddef>

#include "controller_base/local_plan/boxed_cells.h"
#include "controller_base/local_plan/shortcuts.h"

namespace nav_controller {

namespace {

using costmap_2d::Costmap2D;
using internal::BoxedCells;

constexpr std::size_t kMostPosesWithoutTest = 2;  // neighbours are joined untested; the map may be missing then

}  // namespace

nav_msgs::Path LocalPathSmoother::Process(const nav_msgs::Path& path, const Costmap2D* costmap,
                                          const LocalMapObstacle& obstacles) {
  if (path.poses.size() <= kMostPosesWithoutTest) {
    return path;
  }
  BoxedCells boxed(*costmap, obstacles.GetBoxes());
  return internal::TakeShortcuts(path, *costmap, boxed);
}

bool LocalPathSmoother::IsLineExtraObstacleFree(const Costmap2D* costmap, const LocalMapObstacle& obstacles,
                                                const geometry_msgs::PoseStamped& from,
                                                const geometry_msgs::PoseStamped& to) {
  BoxedCells boxed(*costmap, obstacles.GetBoxes());
  return internal::IsLineFree(*costmap, boxed, from.pose.position, to.pose.position);
}

}  // namespace nav_controller
