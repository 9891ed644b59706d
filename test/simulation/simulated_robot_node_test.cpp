#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseWithCovarianceStamped.h>
#include <geometry_msgs/Twist.h>
#include <gmock/gmock.h>
#include <nav_msgs/Odometry.h>
#include <ros/node_handle.h>
#include <ros/param.h>
#include <ros/service.h>
#include <rosgraph_msgs/Clock.h>
#include <sensor_msgs/LaserScan.h>
#include <std_msgs/UInt8.h>
#include <std_srvs/SetBool.h>
#include <tf2_msgs/TFMessage.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "test/support/received.h"

namespace controller_base_test {
namespace {

// The real program, in the bundled hall, four times as fast as the wall's clock.
class SimulatedRobotNode : public testing::Test {
 protected:
  SimulatedRobotNode() : handle_("simulated_robot") {
    handle_.setParam("map_file", CONTROLLER_BASE_DEMO_MAPS "/hall.yaml");
    handle_.setParam("start_x", 1.0);
    handle_.setParam("start_y", 3.0);
    handle_.setParam("publish_clock", true);
    handle_.setParam("speed", 4.0);
    program_ = std::make_unique<controller_base::demo::ChildProcess>(
        std::vector<std::string>{CONTROLLER_BASE_SIMULATED_ROBOT, "__log:=/dev/null"});
    ros::service::waitForService("simulated_robot/scan");
  }
  ~SimulatedRobotNode() override { ros::param::del("simulated_robot"); }

  ros::NodeHandle handle_;
  std::unique_ptr<controller_base::demo::ChildProcess> program_;
};

TEST_F(SimulatedRobotNode, SpeaksTheTopicsOfARobot) {
  Received<sensor_msgs::LaserScan> scans("scan");
  Received<nav_msgs::Odometry> odometry("odom");
  Received<nav_msgs::Odometry> truth("ground_truth");
  Received<tf2_msgs::TFMessage> transforms("/tf");
  Received<std_msgs::UInt8> bumper("bumper");
  Received<rosgraph_msgs::Clock> clock("/clock");
  const std::vector<sensor_msgs::LaserScan>& received = scans.AtLeast(3);
  ASSERT_GE(received.size(), 3u);
  EXPECT_NEAR((received[2].header.stamp - received[1].header.stamp).toSec(), 0.1, 1e-6);
  EXPECT_GE(odometry.AtLeast(1).size(), 1u);
  EXPECT_GE(truth.AtLeast(1).size(), 1u);
  EXPECT_GE(bumper.AtLeast(1).size(), 1u);
  EXPECT_GE(clock.AtLeast(1).size(), 1u);
  ASSERT_GE(transforms.AtLeast(1).size(), 1u);
  EXPECT_EQ(transforms.AtLeast(1)[0].transforms.size(), 3u);
}

// Waits until a message of the topic fulfils the condition; false when none does in time.
template <typename Message>
bool Eventually(const std::string& topic, const std::function<bool(const Message&)>& condition) {
  Received<Message> received(topic);
  for (std::size_t seen = 0; seen < 200; ++seen) {
    const std::vector<Message>& messages = received.AtLeast(seen + 1);
    if (messages.size() <= seen) {
      return false;
    }
    if (condition(messages[seen])) {
      return true;
    }
  }
  return false;
}

TEST_F(SimulatedRobotNode, ObeysCommandsAndPlaces) {
  ros::Publisher commands = handle_.advertise<geometry_msgs::Twist>("/cmd_vel", 1, /*latch=*/true);
  geometry_msgs::Twist turn;
  turn.angular.z = 1.0;
  commands.publish(turn);
  EXPECT_TRUE(Eventually<nav_msgs::Odometry>(
      "ground_truth", [](const nav_msgs::Odometry& truth) { return truth.twist.twist.angular.z == 1.0; }));

  ros::Publisher places = handle_.advertise<geometry_msgs::PoseWithCovarianceStamped>("/initialpose", 1, true);
  geometry_msgs::PoseWithCovarianceStamped place;
  place.pose.pose.position.x = 3.0;
  place.pose.pose.position.y = 2.5;
  place.pose.pose.orientation.w = 1.0;
  places.publish(place);
  EXPECT_TRUE(Eventually<nav_msgs::Odometry>(
      "ground_truth", [](const nav_msgs::Odometry& truth) { return truth.pose.pose.position.x == 3.0; }));
}

TEST_F(SimulatedRobotNode, ShowsABoxThatSomebodyClicksToItsLaser) {
  ros::Publisher clicks = handle_.advertise<geometry_msgs::PointStamped>("/clicked_point", 1, true);
  geometry_msgs::PointStamped click;
  click.point.x = 1.5;
  click.point.y = 3.0;
  clicks.publish(click);
  EXPECT_TRUE(Eventually<sensor_msgs::LaserScan>(
      "scan", [](const sensor_msgs::LaserScan& scan) { return std::abs(scan.ranges[180] - 0.35F) < 0.07F; }));
}

TEST_F(SimulatedRobotNode, CutsAnOutputAndSendsItAgain) {
  Received<sensor_msgs::LaserScan> scans("scan");
  Received<nav_msgs::Odometry> odometry("odom");
  ASSERT_GE(scans.AtLeast(1).size(), 1u);
  std_srvs::SetBool call;
  call.request.data = false;
  ASSERT_TRUE(ros::service::call("simulated_robot/scan", call));
  // Messages on their way are received with ten more of the odometry.
  odometry.AtLeast(odometry.AtLeast(1).size() + 10);
  const std::size_t before = scans.AtLeast(0).size();
  odometry.AtLeast(odometry.AtLeast(1).size() + 50);
  EXPECT_LE(scans.AtLeast(0).size(), before + 2);
  call.request.data = true;
  ASSERT_TRUE(ros::service::call("simulated_robot/scan", call));
  EXPECT_GE(scans.AtLeast(before + 5).size(), before + 5);
}

}  // namespace
}  // namespace controller_base_test
