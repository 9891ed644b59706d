#include "robot/follower_config.h"

#include <ros/console.h>

#include <algorithm>
#include <string_view>
#include <variant>

#include "follower/format.h"
#include "robot/follower_parameters.h"

namespace controller_base::robot {
namespace {

using follower::Format;
using follower::ParameterField;
using follower::ParameterFields;
using follower::Parameters;
using Number = double Parameters::*;
using Flag = bool Parameters::*;

constexpr char kGroup[] = "Default";

bool IsShown(const ParameterField& field) {
  return !std::holds_alternative<std::vector<double> Parameters::*>(field.value) &&
         std::string_view(field.name) != "robot_radius";
}

// Calls `number` with each number that is shown and its field, and `flag` with each flag.
template <typename OnNumber, typename OnFlag>
void ForEachShown(const OnNumber& on_number, const OnFlag& on_flag) {
  for (const ParameterField& field : ParameterFields()) {
    if (!IsShown(field)) {
      continue;
    }
    if (const auto* number = std::get_if<Number>(&field.value)) {
      on_number(field, *number);
    } else {
      on_flag(field, std::get<Flag>(field.value));
    }
  }
}

FollowerConfig AllAt(double ParameterField::*end, bool flag_value) {
  Parameters parameters;
  ForEachShown([&](const ParameterField& field, Number number) { parameters.*number = field.*end; },
               [&](const ParameterField& /*field*/, Flag flag) { parameters.*flag = flag_value; });
  return FollowerConfig(parameters);
}

dynamic_reconfigure::ParamDescription Description(const ParameterField& field, const char* type) {
  dynamic_reconfigure::ParamDescription description;
  description.name = ShownName(field);
  description.type = type;
  description.description = *field.unit == '\0'
                                ? field.name
                                : Format("%s, %s, %g to %g", field.name, field.unit, field.lowest, field.highest);
  return description;
}

template <typename Parameter, typename Value>
Parameter Named(const ParameterField& field, Value value) {
  Parameter parameter;
  parameter.name = ShownName(field);
  parameter.value = value;
  return parameter;
}

template <typename Value>
void SetOnServer(const ros::NodeHandle& handle, const ParameterField& field, Value value) {
  handle.setParam(ShownName(field), value);
  if (handle.hasParam(field.name)) {  // it would prevail
    handle.setParam(field.name, value);
  }
}

// The field that is shown by that name and has that type; null: none.
template <typename Member>
const ParameterField* FindField(const std::string& name) {
  const auto& fields = ParameterFields();
  const auto found = std::find_if(fields.begin(), fields.end(), [&](const ParameterField& field) {
    return IsShown(field) && std::holds_alternative<Member>(field.value) && name == ShownName(field);
  });
  return found == fields.end() ? nullptr : &*found;
}

template <typename Member, typename Values>
void Take(const Values& values, Parameters* parameters) {
  for (const auto& value : values) {
    if (const ParameterField* field = FindField<Member>(value.name)) {
      parameters->*std::get<Member>(field->value) = value.value;
    } else {
      ROS_WARN_NAMED("controller_base", "%s is no parameter of that type; it is passed over", value.name.c_str());
    }
  }
}

}  // namespace

void FollowerConfig::__fromServer__(const ros::NodeHandle& handle) { parameters_ = ReadFollowerParameters(handle); }

void FollowerConfig::__toServer__(const ros::NodeHandle& handle) const {
  const auto set = [&](const ParameterField& field, auto member) { SetOnServer(handle, field, parameters_.*member); };
  ForEachShown(set, set);
}

void FollowerConfig::__fromMessage__(const dynamic_reconfigure::Config& message) {
  Take<Number>(message.doubles, &parameters_);
  Take<Flag>(message.bools, &parameters_);
}

void FollowerConfig::__toMessage__(dynamic_reconfigure::Config& message) const {
  message = dynamic_reconfigure::Config();
  ForEachShown(
      [&](const ParameterField& field, Number number) {
        message.doubles.push_back(Named<dynamic_reconfigure::DoubleParameter>(field, parameters_.*number));
      },
      [&](const ParameterField& field, Flag flag) {
        message.bools.push_back(Named<dynamic_reconfigure::BoolParameter>(field, parameters_.*flag));
      });
  dynamic_reconfigure::GroupState& group = message.groups.emplace_back();
  group.name = kGroup;
  group.state = 1;
}

void FollowerConfig::__clamp__() {
  ForEachShown(
      [this](const ParameterField& field, Number number) {
        const double asked_for = parameters_.*number;
        parameters_.*number = std::clamp(asked_for, field.lowest, field.highest);
        if (asked_for < field.lowest || asked_for > field.highest) {
          ROS_WARN_NAMED("controller_base", "%s: %g %s is out of its range, %g to %g %s, and taken as %g",
                         ShownName(field), asked_for, field.unit, field.lowest, field.highest, field.unit,
                         parameters_.*number);
        }
      },
      [](const ParameterField& /*field*/, Flag /*flag*/) {});
}

std::uint32_t FollowerConfig::__level__(const FollowerConfig& other) const {
  std::uint32_t level = 0;
  const auto compare = [&](const ParameterField& /*field*/, auto member) {
    level |= parameters_.*member == other.parameters_.*member ? 0U : 1U;
  };
  ForEachShown(compare, compare);
  return level;
}

FollowerConfig FollowerConfig::__getMin__() { return AllAt(&ParameterField::lowest, false); }
FollowerConfig FollowerConfig::__getMax__() { return AllAt(&ParameterField::highest, true); }

std::vector<dynamic_reconfigure::ParamDescription> FollowerConfig::__getParamDescriptions__() {
  std::vector<dynamic_reconfigure::ParamDescription> descriptions;
  ForEachShown(
      [&](const ParameterField& field, Number /*number*/) { descriptions.push_back(Description(field, "double")); },
      [&](const ParameterField& field, Flag /*flag*/) { descriptions.push_back(Description(field, "bool")); });
  return descriptions;
}

std::vector<dynamic_reconfigure::Group> FollowerConfig::__getGroupDescriptions__() {
  dynamic_reconfigure::Group group;
  group.name = kGroup;
  group.parameters = __getParamDescriptions__();
  return {group};
}

dynamic_reconfigure::ConfigDescription FollowerConfig::__getDescriptionMessage__() {
  dynamic_reconfigure::ConfigDescription description;
  description.groups = __getGroupDescriptions__();
  __getMin__().__toMessage__(description.min);
  __getMax__().__toMessage__(description.max);
  __getDefault__().__toMessage__(description.dflt);
  return description;
}

}  // namespace controller_base::robot
