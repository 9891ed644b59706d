#include "simulation/faulty_robot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "simulation/robot.h"

namespace controller_base::simulation {
namespace {

using nav_controller::CollisionEvent;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kCycle = 0.05;  // s
const ros::Time kStart(100.0);

double ClockAt(const Faults& faults, double time) { return FaultyRobot(faults, 1).Clock(kStart, time).toSec(); }

TEST(FaultyRobot, WithoutFaultsNothingIsFalsified) {
  FaultyRobot robot({}, 1);
  const follower::Pose2d pose = robot.Estimate({1.0, 2.0, 0.5}, 3.0);
  EXPECT_EQ(pose.x, 1.0);
  EXPECT_EQ(pose.y, 2.0);
  EXPECT_EQ(pose.yaw, 0.5);
  EXPECT_EQ(robot.Clock(kStart, 3.0), ros::Time(103.0));
  EXPECT_EQ(robot.Limited({9.0, 8.0}).speed, 9.0);
  EXPECT_FALSE(robot.Stuck(3.0).left || robot.Stuck(3.0).right);
  EXPECT_EQ(robot.Bumper(kBumperLeft, 3.0, 1), kBumperLeft);
  EXPECT_EQ(robot.PushedBy(3.0, kCycle).x, 0.0);
}

TEST(FaultyRobot, TheClockJumpsFromTheMomentOnAndAgain) {
  Faults faults;
  faults.clock_jumps = {{5.0, -50.0}, {10.0, 120.0}};
  EXPECT_NEAR(ClockAt(faults, 4.95), 104.95, 1e-9);
  EXPECT_NEAR(ClockAt(faults, 5.0), 55.0, 1e-9);
  EXPECT_NEAR(ClockAt(faults, 10.0), 180.0, 1e-9);
}

TEST(FaultyRobot, TheClockStandsStillAndGoesOnFromThere) {
  Faults faults;
  faults.clock_stops = {{5.0, 2.0}};
  EXPECT_NEAR(ClockAt(faults, 5.0), 105.0, 1e-9);
  EXPECT_NEAR(ClockAt(faults, 6.5), 105.0, 1e-9);
  EXPECT_NEAR(ClockAt(faults, 7.0), 105.0, 1e-9);
  EXPECT_NEAR(ClockAt(faults, 8.0), 106.0, 1e-9);
}

TEST(FaultyRobot, PoseJumpsAddUp) {
  Faults faults;
  faults.pose_jumps = {{1.0, {0.5, -0.25}, 3.0}, {2.0, {0.0, 1.0}, 3.0}};
  FaultyRobot robot(faults, 1);
  EXPECT_EQ(robot.Estimate({}, 0.95).x, 0.0);
  const follower::Pose2d once = robot.Estimate({1.0, 1.0, 0.0}, 1.0);
  EXPECT_EQ(once.x, 1.5);
  EXPECT_EQ(once.y, 0.75);
  EXPECT_NEAR(once.yaw, 3.0, 1e-12);
  const follower::Pose2d twice = robot.Estimate({1.0, 1.0, 0.0}, 2.0);
  EXPECT_EQ(twice.y, 1.75);
  EXPECT_NEAR(twice.yaw, 6.0 - 2.0 * follower::kPi, 1e-12);
}

// The standard deviation of the errors of 20 000 poses.
double Deviation(const PoseNoise& noise, const std::function<double(const follower::Pose2d&)>& part) {
  Faults faults;
  faults.pose_noise = noise;
  FaultyRobot robot(faults, 5);
  constexpr int kPoses = 20000;
  double squares = 0.0;
  for (int i = 0; i < kPoses; ++i) {
    squares += std::pow(part(robot.Estimate({}, i * kCycle)), 2);
  }
  return std::sqrt(squares / kPoses);
}

TEST(FaultyRobot, ThePoseTremblesAsMuchAsItIsToldInEachDirection) {
  const PoseNoise noise{0.04, 0.1};
  EXPECT_NEAR(Deviation(noise, [](const follower::Pose2d& pose) { return pose.x; }), 0.04, 0.001);
  EXPECT_NEAR(Deviation(noise, [](const follower::Pose2d& pose) { return pose.y; }), 0.04, 0.001);
  EXPECT_NEAR(Deviation(noise, [](const follower::Pose2d& pose) { return pose.yaw; }), 0.1, 0.002);
}

TEST(FaultyRobot, TheWheelsAreAsSlowForwardsAsBackwards) {
  Faults faults;
  faults.speed_limit = 0.1;
  const FaultyRobot robot(faults, 1);
  EXPECT_EQ(robot.Limited({0.5, 1.5}).speed, 0.1);
  EXPECT_EQ(robot.Limited({-0.5, 1.5}).speed, -0.1);
  EXPECT_EQ(robot.Limited({0.05, 1.5}).speed, 0.05);
  EXPECT_EQ(robot.Limited({0.5, 1.5}).turn_rate, 1.5);
}

TEST(FaultyRobot, AWheelSticksWithinItsTimeOnly) {
  Faults faults;
  faults.stuck_wheels = StuckWheelsFault{{false, true}, {1.0, 2.0}};
  const FaultyRobot robot(faults, 1);
  EXPECT_FALSE(robot.Stuck(0.95).right);
  EXPECT_TRUE(robot.Stuck(1.0).right);
  EXPECT_FALSE(robot.Stuck(1.0).left);
  EXPECT_FALSE(robot.Stuck(2.0).right);
}

TEST(FaultyRobot, APushIsDoneWithinASecond) {
  Faults faults;
  faults.pushes = {{1.0, {0.4, -0.8}}};
  const FaultyRobot robot(faults, 1);
  nav_core::math::Vec2d shift;
  for (int cycle = 0; cycle < 60; ++cycle) {
    const nav_core::math::Vec2d step = robot.PushedBy(cycle * kCycle, kCycle);
    EXPECT_EQ(step.x > 0.0, cycle >= 20 && cycle < 40) << cycle;
    shift.x += step.x;
    shift.y += step.y;
  }
  EXPECT_NEAR(shift.x, 0.4, 1e-9);
  EXPECT_NEAR(shift.y, -0.8, 1e-9);
}

TEST(FaultyRobot, AHeldBumperIsPressedInEveryCycleAndABouncingOneInEveryOther) {
  Faults faults;
  faults.false_bumpers = {{kBumperLeft, false, {1.0, 2.0}}, {kBumperRight, true, {3.0, 4.0}}};
  const FaultyRobot robot(faults, 1);
  EXPECT_EQ(robot.Bumper(0, 0.95, 19), 0);
  EXPECT_EQ(robot.Bumper(0, 1.0, 20), kBumperLeft);
  EXPECT_EQ(robot.Bumper(kBumperFront, 1.05, 21), kBumperLeft | kBumperFront);
  EXPECT_EQ(robot.Bumper(0, 2.0, 40), 0);
  EXPECT_EQ(robot.Bumper(0, 3.0, 60), kBumperRight);
  EXPECT_EQ(robot.Bumper(0, 3.05, 61), 0);
}

// Delivers contacts stamped 0, 1, 2, 3 in four cycles, and returns the stamps that arrive in each of six.
std::vector<std::vector<double>> Delivered(const ContactDelivery& delivery) {
  Faults faults;
  faults.contact_delivery = delivery;
  FaultyRobot robot(faults, 1);
  std::vector<std::vector<double>> arrived;
  for (int cycle = 0; cycle < 6; ++cycle) {
    std::vector<CollisionEvent> contacts;
    if (cycle < 4) {
      contacts.resize(1);
      contacts[0].stamp = ros::Time(cycle);
    }
    arrived.emplace_back();
    for (const CollisionEvent& contact : robot.Deliver(contacts, cycle)) {
      arrived.back().push_back(contact.stamp.toSec());
    }
  }
  return arrived;
}

TEST(FaultyRobot, ContactsArriveAtOnceOrLateOrTwoByTwoTheLaterOneFirst) {
  EXPECT_THAT(Delivered({}),
              ElementsAre(ElementsAre(0), ElementsAre(1), ElementsAre(2), ElementsAre(3), IsEmpty(), IsEmpty()));
  EXPECT_THAT(Delivered({1.5, false}),
              ElementsAre(IsEmpty(), IsEmpty(), ElementsAre(0), ElementsAre(1), ElementsAre(2), ElementsAre(3)));
  EXPECT_THAT(Delivered({0.0, true}),
              ElementsAre(IsEmpty(), ElementsAre(1, 0), IsEmpty(), ElementsAre(3, 2), IsEmpty(), IsEmpty()));
}

}  // namespace
}  // namespace controller_base::simulation
