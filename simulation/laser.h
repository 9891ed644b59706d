#ifndef CONTROLLER_BASE_SIMULATION_LASER_H_
#define CONTROLLER_BASE_SIMULATION_LASER_H_

#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/known_map.h"
#include "simulation/random_source.h"
#include "simulation/world.h"

namespace controller_base::simulation {

constexpr double kLaserRange = 5.0;  // m

// One turn of the laser, all around the robot, every degree, in straight rays that end at the first cell that stops
// them: marks those cells in `known` as seen and clears the cells that the rays pass. Behind an obstacle nothing
// changes. Returns the centres of the cells that rays end at, in the order of the rays.
std::vector<nav_core::math::Vec2d> ScanWithLaser(const World& world, const follower::Pose2d& robot, KnownMap* known);

// Where a robot that measures stands, and where it takes itself to stand.
struct LaserPose {
  follower::Pose2d truth;
  follower::Pose2d estimated;
};

// Likewise, by ranges that err by `noise` metres (standard deviation). What is seen lies where the robot takes it to
// lie: first the cells along all rays are cleared, then those in which rays end are marked. Returns the rays' ends.
std::vector<nav_core::math::Vec2d> MeasureWithLaser(const World& world, const LaserPose& robot, double noise,
                                                    RandomSource* random, KnownMap* known);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_LASER_H_
