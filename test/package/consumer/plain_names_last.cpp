// A user who writes the library's headers first, and the plain names of its platform then.
#include <controller_base/local_planner.h>
#include <controller_base/platform/astar.h>
#include <controller_base/platform/block_allocator.h>
#include <controller_base/platform/box2d.h>
#include <controller_base/platform/cost_values.h>
#include <controller_base/platform/costmap_2d.h>
#include <controller_base/platform/vec2d.h>
// Then the plain names:
#include <astar/astar.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_core/math/box2d.h>

std::size_t CellsBetween(const AStar::Vec2& start, const AStar::Vec2& goal, const nav_core::math::Box2d& box) {
  BlockAllocator allocator;
  AStar::Params request;
  request.width = request.height = 10;
  request.start = start;
  request.goal = goal;
  request.is_passable = [&box](const AStar::Vec2& cell) {
    return !box.IsPointIn(nav_core::math::Vec2d(cell.x, cell.y));
  };
  return AStar(&allocator).Find(request).size();
}
