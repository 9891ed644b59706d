#ifndef CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_SERVER_H_
#define CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_SERVER_H_

#include <ros/node_handle.h>

#include <stdexcept>
#include <string>
#include <variant>

#include "controller_base/follower/parameters.h"

namespace controller_base::follower {

// The value of the parameter `name` of `handle`, a number, a list of numbers or a bool; `otherwise` where there is none.
// Throws std::invalid_argument, naming the parameter, for one of another type.
template <typename Value>
Value ParameterOr(const ros::NodeHandle& handle, const std::string& name, Value otherwise) {
  if (handle.hasParam(name) && !handle.getParam(name, otherwise)) {
    throw std::invalid_argument("the parameter " + handle.resolveName(name) + " " + WrongType(otherwise));
  }
  return otherwise;
}

// The parameters that `handle` has, each by the name of its field; what it does not have stays as in `parameters`.
// Throws std::invalid_argument, naming the field, for a value that is no number or out of its range. Other parameters
// beside them are none of its business. Needs the program to link roscpp.
inline Parameters ParametersFromServer(const ros::NodeHandle& handle, Parameters parameters = {}) {
  for (const ParameterField& field : ParameterFields()) {
    std::visit([&](auto member) { parameters.*member = ParameterOr(handle, field.name, parameters.*member); },
               field.value);
  }
  CheckParameters(parameters);
  return parameters;
}

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_SERVER_H_
