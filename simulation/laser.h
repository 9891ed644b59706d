#ifndef CONTROLLER_BASE_SIMULATION_LASER_H_
#define CONTROLLER_BASE_SIMULATION_LASER_H_

#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/known_map.h"
#include "simulation/world.h"

namespace controller_base::simulation {

constexpr double kLaserRange = 5.0;  // m

// One turn of the laser, all around the robot, every degree, in straight rays that end at the first cell that stops
// them: marks those cells in `known` as seen and clears the cells that the rays pass. Behind an obstacle nothing
// changes. Returns the centres of the cells that rays end at, in the order of the rays.
std::vector<nav_core::math::Vec2d> ScanWithLaser(const World& world, const follower::Pose2d& robot, KnownMap* known);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_LASER_H_
