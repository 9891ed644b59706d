#include "robot/follower_parameters.h"

#include "controller_base/follower/parameters_from_server.h"

namespace controller_base::robot {

follower::Parameters ReadFollowerParameters(const ros::NodeHandle& handle) {
  using follower::ParameterOr;
  follower::Parameters parameters;
  parameters.cruise_speed = ParameterOr(handle, "max_vel_x", parameters.cruise_speed);
  parameters.goal_tolerance = ParameterOr(handle, "xy_goal_tolerance", parameters.goal_tolerance);
  parameters.goal_heading_tolerance = ParameterOr(handle, "yaw_goal_tolerance", parameters.goal_heading_tolerance);
  parameters.max_turn_rate = ParameterOr(handle, "max_vel_theta", parameters.max_turn_rate);
  parameters.acceleration = ParameterOr(handle, "acc_lim_x", parameters.acceleration);
  parameters.turn_acceleration = ParameterOr(handle, "acc_lim_theta", parameters.turn_acceleration);
  return ParametersFromServer(handle, parameters);
}

}  // namespace controller_base::robot
