#ifndef TEST_SUPPORT_ROS_ENVIRONMENT_H_
#define TEST_SUPPORT_ROS_ENVIRONMENT_H_

#include <gtest/gtest.h>
#include <ros/datatypes.h>
#include <ros/node_handle.h>

#include <memory>
#include <optional>

#include "ros_master/ros_master_process.h"

namespace controller_base_test {

// A ROS master of the test program's own and the program as one of its nodes, from before the first test until after
// the last. A master that already runs on this machine is neither used nor disturbed.
class RosEnvironment : public testing::Environment {
 public:
  // `remappings` as ros::init takes them, {"__ns", "/robot1"} for example.
  explicit RosEnvironment(ros::M_string remappings = {});

  void SetUp() override;
  void TearDown() override;

 private:
  ros::M_string remappings_;
  std::unique_ptr<controller_base::ros_master::RosMasterProcess> master_;
  std::optional<ros::NodeHandle> handle_;  // keeps the node alive between the tests' own publishers
};

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_ROS_ENVIRONMENT_H_
