#ifndef CONTROLLER_BASE_DEMO_JUDGE_PATH_CHECK_H_
#define CONTROLLER_BASE_DEMO_JUDGE_PATH_CHECK_H_

#include <nav_msgs/Path.h>

#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::demo {

// The whole map with all walls and obstacles, inflated as the robot's local map is. Obstacles stand where they stand in
// the beginning.
costmap_2d::Costmap2D TrueMap(const costmap_2d::Costmap2D& map, const std::vector<simulation::Obstacle>& obstacles);

// Whether a robot at `from` can get to the path's end over cells of `true_map` that are not lethal and lie within
// `corridor` metres of the path, no diagonal steps. A robot that stands too near to an obstacle may first go straight
// to a free cell, up to the length of its own diameter.
bool PathExists(const costmap_2d::Costmap2D& true_map, const nav_msgs::Path& path, const nav_core::math::Vec2d& from,
                double corridor);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_PATH_CHECK_H_
