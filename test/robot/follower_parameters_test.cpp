#include "robot/follower_parameters.h"

#include <gmock/gmock.h>
#include <ros/node_handle.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace controller_base_test {
namespace {

using controller_base::follower::Parameters;
using controller_base::robot::ReadFollowerParameters;
using testing::ElementsAre;
using testing::HasSubstr;

class ReadFollowerParametersTest : public testing::Test {
 protected:
  ~ReadFollowerParametersTest() override { ros::NodeHandle().deleteParam("planner"); }

  std::string Refusal() const {
    try {
      ReadFollowerParameters(handle_);
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "";
  }

  ros::NodeHandle handle_{"planner"};
};

TEST_F(ReadFollowerParametersTest, WhatIsNotThereKeepsItsDefault) {
  const Parameters parameters = ReadFollowerParameters(handle_);
  EXPECT_EQ(parameters.cruise_speed, Parameters().cruise_speed);
  EXPECT_EQ(parameters.corridor_widths, Parameters().corridor_widths);
}

TEST_F(ReadFollowerParametersTest, EveryFieldGoesByItsName) {
  handle_.setParam("robot_radius", 0.25);
  handle_.setParam("longest_turn", 4);  // a whole number is a number
  handle_.setParam("corridor_widths", std::vector<double>{0.5, 2.0});
  const Parameters parameters = ReadFollowerParameters(handle_);
  EXPECT_EQ(parameters.robot_radius, 0.25);
  EXPECT_EQ(parameters.longest_turn, 4.0);
  EXPECT_THAT(parameters.corridor_widths, ElementsAre(0.5, 2.0));
}

TEST_F(ReadFollowerParametersTest, TheNamesOfOtherLocalPlannersAreUnderstoodAndTheFieldsOwnPrevail) {
  handle_.setParam("max_vel_x", 0.3);
  handle_.setParam("xy_goal_tolerance", 0.2);
  handle_.setParam("yaw_goal_tolerance", 0.3);
  handle_.setParam("max_vel_theta", 1.5);
  handle_.setParam("acc_lim_x", 0.9);
  handle_.setParam("acc_lim_theta", 3.0);
  handle_.setParam("goal_tolerance", 0.1);
  const Parameters parameters = ReadFollowerParameters(handle_);
  EXPECT_EQ(parameters.cruise_speed, 0.3);
  EXPECT_EQ(parameters.goal_tolerance, 0.1);
  EXPECT_EQ(parameters.goal_heading_tolerance, 0.3);
  EXPECT_EQ(parameters.max_turn_rate, 1.5);
  EXPECT_EQ(parameters.acceleration, 0.9);
  EXPECT_EQ(parameters.turn_acceleration, 3.0);
}

TEST_F(ReadFollowerParametersTest, AValueThatCannotBeIsRefusedByName) {
  handle_.setParam("max_vel_x", "fast");
  EXPECT_THAT(Refusal(), HasSubstr("/planner/max_vel_x"));
  handle_.setParam("max_vel_x", -1.0);
  EXPECT_THAT(Refusal(), HasSubstr("cruise_speed"));
}

}  // namespace
}  // namespace controller_base_test
