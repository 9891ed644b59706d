#ifndef CONTROLLER_BASE_FOLLOWER_REFUSAL_H_
#define CONTROLLER_BASE_FOLLOWER_REFUSAL_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <string>

#include "controller_base/follower/outcome.h"
#include "controller_base/local_planner.h"
#include "costmap_2d/costmap_2d.h"

namespace controller_base::follower {

// The planner's own questions, in its order, for the arguments that it refused.
Refusal WhyRefused(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map,
                   const geometry_msgs::PoseStamped& start, const nav_msgs::Path& path);

// One line. `goal` names the end of the stretch to rejoin; `corridor_width` in metres to each side of the path.
std::string Explain(Refusal refusal, const std::string& goal, double corridor_width);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_REFUSAL_H_
