#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "controller_base/follower/parameters_from_server.h"
#include "controller_base/follower/parameters_from_yaml.h"

namespace controller_base::follower {
namespace {

using testing::HasSubstr;

// Every field with another value than its default.
Parameters Others() {
  Parameters others;
  for (const ParameterField& field : ParameterFields()) {
    if (const auto* number = std::get_if<double Parameters::*>(&field.value)) {
      others.*(*number) = 0.5 * (field.lowest + others.*(*number));
    }
  }
  others.corridor_widths = {0.7, 0.9};
  others.shortest_lookahead = others.lookahead;
  others.latch_goal = false;
  return others;
}

void ExpectSame(const Parameters& a, const Parameters& b) {
  for (const ParameterField& field : ParameterFields()) {
    std::visit([&](auto member) { EXPECT_EQ(a.*member, b.*member) << field.name; }, field.value);
  }
}

std::string RefusalOf(const std::string& yaml) {
  try {
    ParametersFromYaml(YAML::Load(yaml));
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

TEST(ParametersFromYaml, EveryFieldGoesByItsName) {
  const Parameters others = Others();
  YAML::Node map;
  for (const ParameterField& field : ParameterFields()) {
    std::visit([&](auto member) { map[field.name] = others.*member; }, field.value);
  }
  ExpectSame(ParametersFromYaml(YAML::Load(YAML::Dump(map))), others);
}

TEST(ParametersFromYaml, WhatIsNotThereStays) {
  Parameters parameters;
  parameters.robot_radius = 0.3;
  const Parameters read = ParametersFromYaml(YAML::Load("{cruise_speed: 1}"), parameters);
  EXPECT_EQ(read.robot_radius, 0.3);
  EXPECT_EQ(read.cruise_speed, 1.0);
  ExpectSame(ParametersFromYaml(YAML::Load("{}")), Parameters());
}

TEST(ParametersFromYaml, WhatCannotBeIsRefusedByItsName) {
  EXPECT_THAT(RefusalOf("{robot_radius: wide}"), HasSubstr("robot_radius is no number"));
  EXPECT_THAT(RefusalOf("{robot_radius: [1, 2]}"), HasSubstr("robot_radius is no number"));
  EXPECT_THAT(RefusalOf("{corridor_widths: 1.0}"), HasSubstr("corridor_widths is no list of numbers"));
  EXPECT_THAT(RefusalOf("{latch_goal: 2}"), HasSubstr("latch_goal is neither true nor false"));
  EXPECT_THAT(RefusalOf("{robot_radius: 50}"), HasSubstr("robot_radius is 50 m"));
  EXPECT_THAT(RefusalOf("{robot_raduis: 0.2}"), HasSubstr("no parameter robot_raduis"));
  EXPECT_THAT(RefusalOf("[0.2]"), HasSubstr("no YAML map"));
}

TEST(ParametersFromServer, EveryFieldGoesByItsName) {
  const Parameters others = Others();
  const ros::NodeHandle handle("readers");
  for (const ParameterField& field : ParameterFields()) {
    std::visit([&](auto member) { handle.setParam(field.name, others.*member); }, field.value);
  }
  handle.setParam("bumper_topic", "/bumper");
  ExpectSame(ParametersFromServer(handle), others);
  handle.setParam("lookahead", "far");
  EXPECT_THROW(ParametersFromServer(handle), std::invalid_argument);
  ros::NodeHandle().deleteParam("readers");
}

}  // namespace
}  // namespace controller_base::follower
