#ifndef CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_YAML_H_
#define CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_YAML_H_

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <variant>

#include "controller_base/follower/parameters.h"

namespace controller_base::follower {

template <typename Value>
void ReadYaml(const std::string& key, const YAML::Node& node, Value* value) {
  try {
    *value = node.as<Value>();
  } catch (const YAML::Exception&) {
    throw std::invalid_argument(key + " " + WrongType(*value));
  }
}

// The parameters of a YAML map such as {robot_radius: 0.2, corridor_widths: [0.6, 1.0]}, each by the name of its field;
// what the map does not have stays as in `parameters`. Throws std::invalid_argument, naming the key, for one that no
// field has, for a value that is no number and for one out of its range. Needs the program to link yaml-cpp, which this
// library does not.
inline Parameters ParametersFromYaml(const YAML::Node& map, Parameters parameters = {}) {
  if (!map.IsMap()) {
    throw std::invalid_argument("the follower's parameters are no YAML map");
  }
  for (const auto& entry : map) {
    const std::string key = entry.first.Scalar();
    const auto& fields = ParameterFields();
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const auto& f) { return key == f.name; });
    if (field == fields.end()) {
      throw std::invalid_argument("the follower has no parameter " + key);
    }
    std::visit([&](auto member) { ReadYaml(key, entry.second, &(parameters.*member)); }, field->value);
  }
  CheckParameters(parameters);
  return parameters;
}

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PARAMETERS_FROM_YAML_H_
