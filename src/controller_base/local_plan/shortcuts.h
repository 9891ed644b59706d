#ifndef CONTROLLER_BASE_LOCAL_PLAN_SHORTCUTS_H_
#define CONTROLLER_BASE_LOCAL_PLAN_SHORTCUTS_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/Path.h>

#include "controller_base/local_plan/boxed_cells.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller::internal {

// What LocalPathSmoother does, for callers that know the boxed cells of `costmap` already.

nav_msgs::Path TakeShortcuts(const nav_msgs::Path& path, const costmap_2d::Costmap2D& costmap, BoxedCells& boxed);

bool IsLineFree(const costmap_2d::Costmap2D& costmap, BoxedCells& boxed, const geometry_msgs::Point& from,
                const geometry_msgs::Point& to);

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_LOCAL_PLAN_SHORTCUTS_H_
