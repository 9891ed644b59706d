#ifndef CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_
#define CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_

#include <nav_msgs/Path.h>

#include <string>
#include <vector>

#include "controller_base/follower/report.h"
#include "follower/path_search.h"
#include "nav_core/math/vec2d.h"
#include "simulation/known_map.h"
#include "simulation/progress.h"

namespace controller_base::simulation {

using follower::kSnapDistance;
using follower::ToPath;

// follower::SearchPath over the whole map as it is known, around the virtual `boxes`.
nav_msgs::Path SearchPath(const KnownMap& known, const nav_core::math::Vec2d& start, const nav_core::math::Vec2d& goal,
                          const Progress& progress = {}, const std::vector<follower::VirtualBox>& boxes = {});

// Why no robot can stand at the place or within kSnapDistance of it: "it is 0.03 m from a wall, and ...". Empty where
// one can.
std::string WhyNobodyStandsAt(const KnownMap& known, const nav_core::math::Vec2d& place);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_PATH_SEARCH_H_
