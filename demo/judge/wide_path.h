#ifndef CONTROLLER_BASE_DEMO_JUDGE_WIDE_PATH_H_
#define CONTROLLER_BASE_DEMO_JUDGE_WIDE_PATH_H_

#include <nav_msgs/Path.h>

#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::demo {

// A gap that a robot of 0.17 m radius is to pass.
constexpr double kPassableWidth = 0.50;  // m

// Whether a way that is nowhere narrower than `width` metres leads from `from` to the path's end, with its middle within
// `corridor` metres of the path: a plain search among walls and obstacles of both kinds, as they stand when the world
// is at its time, on a grid of 1 cm. What is up to 1 cm too narrow may count as well. A robot that stands where the way
// is narrower may first go straight to a wide place, up to the length of its own diameter.
bool WidePathExists(const simulation::World& world, const nav_msgs::Path& path, const nav_core::math::Vec2d& from,
                    double corridor, double width = kPassableWidth);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_WIDE_PATH_H_
