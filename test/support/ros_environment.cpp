#include "test/support/ros_environment.h"

#include <ros/init.h>

#include <cstdlib>
#include <utility>

namespace controller_base_test {

using controller_base::ros_master::RosMasterProcess;

RosEnvironment::RosEnvironment(ros::M_string remappings) : remappings_(std::move(remappings)) {}

void RosEnvironment::SetUp() {
  master_ = RosMasterProcess::StartOnFreePort();
  master_->ServeThisProcess();
  unsetenv("ROS_NAMESPACE");
  ros::init(remappings_, "controller_base_test", ros::init_options::NoSigintHandler | ros::init_options::AnonymousName);
  handle_.emplace();
}

void RosEnvironment::TearDown() {
  handle_.reset();
  ros::shutdown();
  master_.reset();
}

}  // namespace controller_base_test
