#ifndef CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_
#define CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_

#include <nav_msgs/Path.h>

#include <string>
#include <vector>

#include "nav_core/math/vec2d.h"
#include "simulation/known_map.h"
#include "simulation/progress.h"

namespace controller_base::simulation {

// Straight from point to point, two or more, in frame "map", with headings along the way.
nav_msgs::Path ToPath(const std::vector<nav_core::math::Vec2d>& points);

// Start and goal may lie this close to cells that the robot can enter: the path then leads from one to the other.
constexpr double kSnapDistance = 0.15;  // m

// A smooth path in frame "map" from start to goal over the non-lethal cells of the whole map as it is known, with
// headings along the way. It keeps its distance from obstacles where there is room, and enters unknown cells only where
// there is no other way. The first and last poses are `start` and `goal` themselves, or the nearest cell when `goal` is
// too close to an obstacle. No poses: there is no way.
nav_msgs::Path SearchPath(const KnownMap& known, const nav_core::math::Vec2d& start, const nav_core::math::Vec2d& goal,
                          const Progress& progress = {});

// Why no robot can stand at the place or within kSnapDistance of it: "it is 0.03 m from a wall, and ...". Empty where
// one can.
std::string WhyNobodyStandsAt(const KnownMap& known, const nav_core::math::Vec2d& place);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_
