#include "robot/follower_parameters.h"

#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace controller_base::robot {
namespace {

using follower::ParameterField;
using follower::Parameters;

// Nothing where the parameter is missing. Takes numbers with and without a point.
template <typename Value>
void Read(const ros::NodeHandle& handle, const std::string& name, Value* value) {
  if (handle.hasParam(name) && !handle.getParam(name, *value)) {
    throw std::invalid_argument("the parameter " + handle.resolveName(name) + " is no number, or no list of numbers");
  }
}

}  // namespace

Parameters ReadFollowerParameters(const ros::NodeHandle& handle) {
  Parameters parameters;
  Read(handle, "max_vel_x", &parameters.cruise_speed);
  Read(handle, "xy_goal_tolerance", &parameters.goal_tolerance);
  Read(handle, "yaw_goal_tolerance", &parameters.goal_heading_tolerance);
  for (const ParameterField& field : follower::ParameterFields()) {
    std::visit([&](auto member) { Read(handle, field.name, &(parameters.*member)); }, field.value);
  }
  CheckParameters(parameters);
  return parameters;
}

}  // namespace controller_base::robot
