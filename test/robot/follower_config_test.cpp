#include "robot/follower_config.h"

#include <dynamic_reconfigure/Reconfigure.h>
#include <gmock/gmock.h>
#include <ros/node_handle.h>
#include <ros/service.h>
#include <ros/spinner.h>
#include <ros/time.h>
#include <ros/topic.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "follower/format.h"
#include "robot/follower_drive.h"
#include "robot/follower_parameters.h"

namespace controller_base::robot {
namespace {

using follower::Format;
using follower::ParameterField;
using follower::ParameterFields;
using follower::Parameters;
using testing::HasSubstr;

// A drive along the x axis on an empty local map, its parameters changed through the service by another thread.
class Reconfigured : public testing::Test {
 protected:
  Reconfigured() {
    ros::Time::setNow(ros::Time(100.0));
    ros::NodeHandle("drive").setParam("max_vel_theta", 1.5);
    drive_.emplace(ros::NodeHandle("drive"));
    spinner_.start();
    nav_msgs::Path path;
    path.header.frame_id = "map";
    path.poses = {PoseAt(0.0), PoseAt(50.0)};
    drive_->Follow(path);
  }
  ~Reconfigured() override {
    spinner_.stop();
    drive_.reset();
    ros::NodeHandle().deleteParam("drive");
  }

  static geometry_msgs::PoseStamped PoseAt(double x) {
    geometry_msgs::PoseStamped pose;
    pose.header.frame_id = "map";
    pose.header.stamp = ros::Time::now();
    pose.pose.position.x = x;
    pose.pose.orientation.w = 1.0;
    return pose;
  }

  // The speed after two more seconds.
  double Speed() {
    constexpr double kCycle = 0.05;  // s
    double speed = 0.0;
    for (int cycle = 0; cycle < 40; ++cycle) {
      ros::Time::setNow(ros::Time::now() + ros::Duration(kCycle));
      GridBytes map{{120, 120, 0.05, x_ - 3.0, -3.0}, {}};
      map.bytes.assign(map.grid.cells(), 0);
      speed = drive_->Cycle(PoseAt(x_), map, map).linear.x;
      x_ += kCycle * speed;
    }
    return speed;
  }

  // The configuration that the server reports afterwards.
  static double Set(const std::string& name, double value) {
    dynamic_reconfigure::Reconfigure call;
    call.request.config.doubles.resize(1);
    call.request.config.doubles[0].name = name;
    call.request.config.doubles[0].value = value;
    EXPECT_TRUE(ros::service::call("/drive/set_parameters", call));
    for (const auto& number : call.response.config.doubles) {
      if (number.name == name) {
        return number.value;
      }
    }
    return std::numeric_limits<double>::quiet_NaN();
  }

  std::optional<FollowerDrive> drive_;
  ros::AsyncSpinner spinner_{1};
  double x_ = 0.0;
};

TEST_F(Reconfigured, AChangedSpeedIsDrivenFromTheNextCycleOn) {
  ASSERT_EQ(Speed(), Parameters().cruise_speed);
  EXPECT_EQ(Set("max_vel_x", 0.3), 0.3);
  EXPECT_EQ(Speed(), 0.3);
  EXPECT_EQ(ros::NodeHandle("drive").param("max_vel_x", 0.0), 0.3);
  EXPECT_EQ(Set("max_vel_x", 0.4), 0.4);
  EXPECT_EQ(Speed(), 0.4);
}

TEST_F(Reconfigured, AValueOutOfItsRangeIsTakenAsTheRangesEnd) {
  EXPECT_EQ(Set("max_vel_x", 0.0), 0.01);
  EXPECT_EQ(Set("xy_goal_tolerance", 1e9), 10.0);
}

TEST_F(Reconfigured, WhatDoesNotGoTogetherIsRefusedAndAllStaysAsItWas) {
  EXPECT_EQ(Set("max_vel_x", 0.3), 0.3);
  EXPECT_EQ(Set("acc_lim_x", 0.1), Parameters().acceleration);  // below deceleration
  EXPECT_EQ(Set("max_vel_x", std::nan("")), 0.3);
  EXPECT_EQ(Speed(), 0.3);
}

TEST_F(Reconfigured, TheFieldsOwnNameOnTheServerFollowsTheShownOne) {
  const ros::NodeHandle handle("drive");
  handle.setParam("cruise_speed", 0.2);
  EXPECT_EQ(Set("max_vel_x", 0.3), 0.3);
  EXPECT_EQ(ReadFollowerParameters(handle).cruise_speed, 0.3);
}

TEST_F(Reconfigured, AnUnknownNameAndOneOfAnotherTypeChangeNothing) {
  EXPECT_TRUE(std::isnan(Set("robot_radius", 1.0)));
  dynamic_reconfigure::Reconfigure call;
  call.request.config.bools.resize(1);
  call.request.config.bools[0].name = "max_vel_x";
  EXPECT_TRUE(ros::service::call("/drive/set_parameters", call));
  EXPECT_EQ(Speed(), Parameters().cruise_speed);
}

TEST_F(Reconfigured, TheServerTellsNamesUnitsRangesDefaultsAndWhatItHas) {
  using Description = dynamic_reconfigure::ConfigDescription;
  const auto told = ros::topic::waitForMessage<Description>("/drive/parameter_descriptions", ros::Duration(10.0));
  ASSERT_NE(told, nullptr);
  const auto has =
      ros::topic::waitForMessage<dynamic_reconfigure::Config>("/drive/parameter_updates", ros::Duration(10.0));
  ASSERT_NE(has, nullptr);
  ASSERT_EQ(told->groups.size(), 1u);
  EXPECT_EQ(told->groups[0].parameters.size(), ParameterFields().size() - 2);  // without the radius and the one list
  EXPECT_THAT(told->groups[0].parameters,
              testing::Contains(testing::Field(&dynamic_reconfigure::ParamDescription::description,
                                               "max_turn_rate, rad/s, 0.05 to 20")));
  const auto value = [](const dynamic_reconfigure::Config& config) {
    for (const auto& number : config.doubles) {
      if (number.name == "max_vel_theta") {
        return number.value;
      }
    }
    return -1.0;
  };
  EXPECT_EQ(value(told->min), 0.05);
  EXPECT_EQ(value(told->max), 20.0);
  EXPECT_EQ(value(told->dflt), 1.8);
  EXPECT_EQ(value(*has), 1.5);
  ASSERT_EQ(has->bools.size(), 1u);
  EXPECT_EQ(has->bools[0].name, "latch_xy_goal_tolerance");
  EXPECT_TRUE(has->bools[0].value);
}

// Every name that differs from the follower's own, in docs/move_base.md, with default and range.
TEST(FollowerConfig, TheNamesOfLocalPlannersAreDocumentedAsTheyAre) {
  std::ifstream file(CONTROLLER_BASE_MOVE_BASE_PAGE);
  std::ostringstream page;
  page << file.rdbuf();
  const Parameters defaults;
  for (const ParameterField& field : ParameterFields()) {
    const std::string shown = ShownName(field);
    if (shown == field.name) {
      continue;
    }
    std::string row = Format("| `%s` | `%s` | ", shown.c_str(), field.name);
    if (const auto* number = std::get_if<double Parameters::*>(&field.value)) {
      row += Format("%g %s | %g to %g |", defaults.*(*number), field.unit, field.lowest, field.highest);
    } else {
      row += "true | true or false |";
    }
    EXPECT_THAT(page.str(), HasSubstr(row));
  }
}

}  // namespace
}  // namespace controller_base::robot
