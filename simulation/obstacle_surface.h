#ifndef CONTROLLER_BASE_SIMULATION_OBSTACLE_SURFACE_H_
#define CONTROLLER_BASE_SIMULATION_OBSTACLE_SURFACE_H_

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::simulation {

// The true shape of an obstacle, which no grid rounds. Metres; `time` in seconds since the drive began.

// The point of the obstacle that is nearest to `point`: `point` itself when it lies inside.
nav_core::math::Vec2d NearestPointOf(const Obstacle& obstacle, const nav_core::math::Vec2d& point, double time);

// How far along the ray the obstacle begins: 0 for a ray that starts inside, infinity for one that misses it.
double RangeTo(const Obstacle& obstacle, const follower::Pose2d& ray, double time);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_OBSTACLE_SURFACE_H_
