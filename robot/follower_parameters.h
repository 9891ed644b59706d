#ifndef CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_
#define CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_

#include <ros/node_handle.h>

#include "controller_base/follower/parameters.h"

namespace controller_base::robot {

// The name by which users of local planners know the parameter, such as max_vel_x for cruise_speed; else the field's
// own.
const char* ShownName(const follower::ParameterField& field);

// The follower's parameters as `handle` has them, each by the name of its field or its shown name, of which the former
// prevails; what it does not have keeps its default. Throws std::invalid_argument, naming the field, for a value that is no
// number or out of its range.
follower::Parameters ReadFollowerParameters(const ros::NodeHandle& handle);

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_FOLLOWER_PARAMETERS_H_
