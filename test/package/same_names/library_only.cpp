// Includes the library alone, so every plain name is the library's.
#include <controller_base/local_planner.h>
#include <controller_base/obstacle_blocking_analyzer.h>
#include <controller_base/trajectory_analyzer.h>

#include <type_traits>

static_assert(!std::is_polymorphic_v<costmap_2d::Costmap2D>);
static_assert(std::is_same_v<nav_controller::LocalMap, costmap_2d::Costmap2D>);
static_assert(std::is_same_v<decltype(AStar::Vec2::x), std::uint16_t>);
static_assert(std::is_same_v<decltype(nav_core::math::Vec2d::x), double>);

bool IsBlocked(const nav_msgs::Path& path) {
  costmap_2d::Costmap2D map(40, 20, 0.05, -0.5, -0.5);
  map.setCost(20, 10, costmap_2d::LETHAL_OBSTACLE);
  return nav_controller::IsBlockingPathInflateObstacle(&map, path);
}
