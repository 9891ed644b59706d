#ifndef CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_
#define CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_

#include <ros/node_handle.h>

#include "controller_base/follower/parameters.h"

namespace controller_base::robot {

// The follower's parameters as `handle` has them, each by the name of its field; what it does not have keeps its
// default. Some go by the names that users of local planners know as well: max_vel_x is cruise_speed, max_vel_theta is
// max_turn_rate, acc_lim_x is acceleration, acc_lim_theta is turn_acceleration, xy_goal_tolerance is goal_tolerance,
// yaw_goal_tolerance is goal_heading_tolerance. Throws std::invalid_argument, naming the field, for a value that is no
// number or out of its range.
follower::Parameters ReadFollowerParameters(const ros::NodeHandle& handle);

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_
