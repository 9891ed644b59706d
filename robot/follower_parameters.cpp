#include "robot/follower_parameters.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "controller_base/follower/parameters_from_server.h"

namespace controller_base::robot {
namespace {

using follower::ParameterField;

struct KnownName {
  std::string_view field;
  const char* known;
};
constexpr KnownName kKnownNames[] = {
    {"cruise_speed", "max_vel_x"},
    {"max_turn_rate", "max_vel_theta"},
    {"acceleration", "acc_lim_x"},
    {"turn_acceleration", "acc_lim_theta"},
    {"goal_tolerance", "xy_goal_tolerance"},
    {"goal_heading_tolerance", "yaw_goal_tolerance"},
    {"latch_goal", "latch_xy_goal_tolerance"},
};

}  // namespace

const char* ShownName(const ParameterField& field) {
  const auto* const known = std::find_if(std::begin(kKnownNames), std::end(kKnownNames),
                                         [&](const KnownName& name) { return name.field == field.name; });
  return known == std::end(kKnownNames) ? field.name : known->known;
}

follower::Parameters ReadFollowerParameters(const ros::NodeHandle& handle) {
  follower::Parameters parameters;
  for (const ParameterField& field : follower::ParameterFields()) {
    std::visit(
        [&](auto member) { parameters.*member = follower::ParameterOr(handle, ShownName(field), parameters.*member); },
        field.value);
  }
  return ParametersFromServer(handle, parameters);
}

}  // namespace controller_base::robot
