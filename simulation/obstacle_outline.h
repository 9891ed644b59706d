#ifndef CONTROLLER_BASE_SIMULATION_OBSTACLE_OUTLINE_H_
#define CONTROLLER_BASE_SIMULATION_OBSTACLE_OUTLINE_H_

#include <vector>

#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::simulation {

// The corners of an obstacle as it stands `time` seconds into the drive, those of a disc on its edge; none while it is
// not there.
std::vector<nav_core::math::Vec2d> OutlineAt(const Obstacle& obstacle, double time);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_OBSTACLE_OUTLINE_H_
