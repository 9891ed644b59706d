#ifndef CONTROLLER_BASE_FOLLOWER_REFUSAL_H_
#define CONTROLLER_BASE_FOLLOWER_REFUSAL_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <string>

#include "controller_base/local_planner.h"
#include "costmap_2d/costmap_2d.h"

namespace controller_base_demo {

// Why LocalPlanner::CreatePlan gave no detour. It says so in the log alone; a controller has to know, because some of
// these are worth another try and some are not.
enum class Refusal {
  kStartOffMap,        // the robot is not on its own local map: the localisation, or the map, is wrong
  kStartOccupied,      // the robot stands too near to an obstacle: it has to leave that first
  kStartInBox,         // likewise, in a virtual box
  kGoalOffMap,         // the stretch to rejoin is too long
  kGoalInBox,          // it ends in a virtual box, which is never repaired
  kFallBackTooNear,    // it ends on an obstacle, and the free place before that is within 30 cells of the robot
  kNowhereToFallBack,  // it ends on an obstacle, and no pose of it is free
  kNoWay,              // the search found nothing: the corridor is too narrow, or there is no way at all
};

// The planner's own questions, in its order, for the arguments that it refused.
Refusal WhyRefused(const nav_controller::LocalPlanner& planner, const costmap_2d::Costmap2D& map,
                   const geometry_msgs::PoseStamped& start, const nav_msgs::Path& path);

// One line. `goal` names the end of the stretch to rejoin; `corridor_width` in metres to each side of the path.
std::string Explain(Refusal refusal, const std::string& goal, double corridor_width);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_REFUSAL_H_
