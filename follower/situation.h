#ifndef CONTROLLER_BASE_FOLLOWER_SITUATION_H_
#define CONTROLLER_BASE_FOLLOWER_SITUATION_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstddef>

#include "follower/geometry.h"
#include "follower/planner_view.h"

namespace controller_base::follower {

// What one cycle knows. The references live as long as the cycle.
struct Situation {
  const geometry_msgs::PoseStamped& robot;
  Pose2d pose;  // of the robot
  PlannerView view;
  const nav_msgs::Path& ahead;  // from the robot to its path, and on along it as far as the local map reaches
  std::size_t lead_in;          // poses of `ahead` that are not the path's own
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_SITUATION_H_
