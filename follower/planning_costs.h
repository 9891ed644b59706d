#ifndef CONTROLLER_BASE_FOLLOWER_PLANNING_COSTS_H_
#define CONTROLLER_BASE_FOLLOWER_PLANNING_COSTS_H_

#include "costmap_2d/costmap_2d.h"

namespace controller_base::follower {

// The map as detours are planned on it: the same cells are lethal, and within `clearance` metres of one a cell costs
// the more the nearer it is. A path with that clearance is preferred, and one through a narrower place is taken where
// there is no other: LocalPlanner charges for costs from 95 on, and its shortcuts do not cross costs from 94 on.
costmap_2d::Costmap2D WithPlanningCosts(const costmap_2d::Costmap2D& map, double clearance);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PLANNING_COSTS_H_
