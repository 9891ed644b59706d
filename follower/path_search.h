#ifndef CONTROLLER_BASE_FOLLOWER_PATH_SEARCH_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_SEARCH_H_

#include <nav_msgs/Path.h>

#include <functional>
#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "nav_core/math/vec2d.h"

namespace controller_base::follower {

// Straight from point to point, two or more, in frame "map", with headings along the way.
nav_msgs::Path ToPath(const std::vector<nav_core::math::Vec2d>& points);

// Start and goal may lie this close to cells that the robot can enter: the path then leads from one to the other.
constexpr double kSnapDistance = 0.15;  // m

// Whether there is a cell that the robot can enter as close to the place.
bool HasFreeCellNear(const costmap_2d::Costmap2D& costs, const nav_core::math::Vec2d& place);

// Where a path is searched.
struct SearchGround {
  const costmap_2d::Costmap2D& costs;                 // as Inflation makes them
  std::function<bool(int mx, int my)> is_unknown;     // nothing is known of the cell; within the map
  std::function<void(const std::string& step)> tell;  // called several times a second with what it is at; may be empty
};

// A smooth path in frame "map" from start to goal over the non-lethal cells, with headings along the way. It keeps its
// distance from obstacles where there is room, and enters unknown cells only where there is no other way. The first and
// last poses are `start` and `goal` themselves, or the nearest cell when `goal` is too close to an obstacle. No poses:
// there is no way.
nav_msgs::Path SearchPath(const SearchGround& ground, const nav_core::math::Vec2d& start,
                          const nav_core::math::Vec2d& goal);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_SEARCH_H_
