#include "robot/node_options.h"

#include <stdexcept>
#include <string_view>
#include <variant>
#include <vector>

#include "controller_base/follower/parameters.h"
#include "follower/format.h"
#include "robot/follower_parameters.h"
#include "robot/frames.h"

namespace controller_base::robot {
namespace {

using follower::Format;

struct NumberField {
  const char* name;
  const char* unit;
  double lowest;
  double highest;
  double NodeOptions::*value;
};

const std::vector<NumberField>& NumberFields() {
  static const auto& fields = *new std::vector<NumberField>{
      {"free_map_side", "m", 1.0, 1000.0, &NodeOptions::free_map_side},
      {"free_map_resolution", "m", 0.005, 0.5, &NodeOptions::free_map_resolution},
      {"local_map_side", "m", 1.0, 60.0, &NodeOptions::local_map_side},
      {"controller_frequency", "Hz", 1.0, 100.0, &NodeOptions::controller_frequency},
      {"scan_timeout", "s", 0.01, 10.0, &NodeOptions::scan_timeout},
      {"pose_timeout", "s", 0.01, 10.0, &NodeOptions::pose_timeout},
      {"bumper_timeout", "s", 0.0, 10.0, &NodeOptions::bumper_timeout},
      {"clock_timeout", "s", 0.01, 10.0, &NodeOptions::clock_timeout},
      {"longest_delay", "s", 0.0, 10.0, &NodeOptions::longest_delay},
      {"blocked_timeout", "s", 0.0, 1000.0, &NodeOptions::blocked_timeout},
      {"replan_pause", "s", 0.1, 1000.0, &NodeOptions::replan_pause},
  };
  return fields;
}

template <typename Value>
void Read(const ros::NodeHandle& handle, const char* name, const char* what, Value* value) {
  if (handle.hasParam(name) && !handle.getParam(name, *value)) {
    throw std::invalid_argument("the parameter " + handle.resolveName(name) + " is no " + what);
  }
}

void Read(const ros::NodeHandle& handle, const NumberField& field, NodeOptions* options) {
  double& value = options->*field.value;
  Read(handle, field.name, "number", &value);
  if (!(value >= field.lowest && value <= field.highest)) {
    throw std::invalid_argument(Format("the parameter %s is %g, and not %g to %g %s",
                                       handle.resolveName(field.name).c_str(), value, field.lowest, field.highest,
                                       field.unit));
  }
}

std::string DefaultOf(const follower::ParameterField& field) {
  const follower::Parameters defaults;
  if (const auto* member = std::get_if<double follower::Parameters::*>(&field.value)) {
    return Format("%g", defaults.*(*member));
  }
  if (const auto* member = std::get_if<bool follower::Parameters::*>(&field.value)) {
    return defaults.*(*member) ? "true" : "false";
  }
  std::string text;
  if (const auto* member = std::get_if<std::vector<double> follower::Parameters::*>(&field.value)) {
    for (const double value : defaults.*(*member)) {
      text += Format("%s%g", text.empty() ? "" : ",", value);
    }
  }
  return text;
}

// Unit, range and default, after the name.
std::string RowOf(const follower::ParameterField& field) {
  if (std::holds_alternative<bool follower::Parameters::*>(field.value)) {
    return " bool - - " + DefaultOf(field) + "\n";
  }
  return Format(" %s %g %g %s\n", field.unit, field.lowest, field.highest, DefaultOf(field).c_str());
}

}  // namespace

NodeOptions ReadNodeOptions(const ros::NodeHandle& handle) {
  NodeOptions options;
  Read(handle, "global_frame", "text", &options.global_frame);
  Read(handle, "base_frame", "text", &options.base_frame);
  options.global_frame = WithoutSlash(options.global_frame);
  options.base_frame = WithoutSlash(options.base_frame);
  Read(handle, "pose_source", "text", &options.pose_source);
  Read(handle, "use_map", "bool", &options.use_map);
  Read(handle, "record", "text", &options.record);
  if (options.pose_source != "tf" && options.pose_source != "odometry") {
    throw std::invalid_argument("the parameter " + handle.resolveName("pose_source") + " is \"" + options.pose_source +
                                "\", and not \"tf\" or \"odometry\"");
  }
  for (const NumberField& field : NumberFields()) {
    Read(handle, field, &options);
  }
  return options;
}

std::string ParameterTable() {
  const NodeOptions defaults;
  std::string table = "global_frame text - - " + defaults.global_frame + "\nbase_frame text - - " +
                      defaults.base_frame + "\npose_source text - - " + defaults.pose_source +
                      "\nuse_map bool - - true\nrecord text - - none\n";
  for (const NumberField& field : NumberFields()) {
    table += Format("%s %s %g %g %g\n", field.name, field.unit, field.lowest, field.highest, defaults.*field.value);
  }
  for (const follower::ParameterField& field : follower::ParameterFields()) {
    const std::string row = RowOf(field);
    table += field.name + row;
    if (std::string_view(ShownName(field)) != field.name) {
      table += ShownName(field) + row;
    }
  }
  return table;
}

}  // namespace controller_base::robot
