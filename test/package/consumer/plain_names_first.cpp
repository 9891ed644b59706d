// A user who writes the plain names of the library's platform, and then what they stand for.
#include <astar/astar.h>
#include <astar/block_allocator.h>
#include <costmap_2d/cost_values.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_core/math/box2d.h>
#include <nav_core/math/vec2d.h>
// Then the library's own:
#include <controller_base/local_planner.h>
#include <controller_base/obstacle_blocking_analyzer.h>

bool IsBlockedAnywhere(const costmap_2d::Costmap2D& map, const nav_msgs::Path& path) {
  return map.IsLethalObstacle(0, 0) && nav_controller::IsBlockingPathInflateObstacle(&map, path);
}
