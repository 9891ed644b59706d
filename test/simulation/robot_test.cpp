#include "simulation/robot.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>

#include "follower/inflation.h"

namespace controller_base::simulation {
namespace {

constexpr double kCycle = 0.05;  // s

class RobotInWorld : public testing::Test {
 protected:
  RobotInWorld() : map_(200, 200, 0.05, 0.0, 0.0) {}

  // Drives for a while; returns the bumper bits of the last cycle.
  static std::uint8_t Drive(Robot* robot, const follower::Command& command, double seconds, const World& world) {
    std::uint8_t bits = 0;
    for (double time = 0.0; time < seconds - 0.5 * kCycle; time += kCycle) {
      bits = BumperBits(robot->pose(), robot->Drive(command, kCycle, world));
    }
    return bits;
  }

  costmap_2d::Costmap2D map_;
};

TEST_F(RobotInWorld, ItAcceleratesToTheSpeedAskedForAndNoFaster) {
  const World empty(map_, {});
  Robot robot({5.0, 5.0, 0.0});
  robot.Drive({0.4, 0.0}, kCycle, empty);
  EXPECT_NEAR(robot.motion().speed, kMaxAcceleration * kCycle, 1e-12);
  Drive(&robot, {0.4, 0.0}, 1.0, empty);
  EXPECT_NEAR(robot.motion().speed, 0.4, 1e-12);
  Drive(&robot, {9.0, 0.0}, 1.0, empty);
  EXPECT_NEAR(robot.motion().speed, kMaxSpeed, 1e-12);
}

TEST_F(RobotInWorld, ItDrivesACircleOfSpeedOverTurnRate) {
  const World empty(map_, {});
  Robot robot({5.0, 5.0, 0.0});
  Drive(&robot, {0.3, 0.6}, 1.0, empty);  // until it is up to speed
  const follower::Pose2d from = robot.pose();
  const nav_core::math::Vec2d center(from.x - 0.5 * std::sin(from.yaw), from.y + 0.5 * std::cos(from.yaw));
  for (int cycle = 0; cycle < 200; ++cycle) {
    robot.Drive({0.3, 0.6}, kCycle, empty);
    ASSERT_NEAR(Distance(center, robot.pose()), 0.5, 1e-4);
  }
}

TEST_F(RobotInWorld, ItDrivesBackwardsAndTurnsOnTheSpot) {
  const World empty(map_, {});
  Robot robot({5.0, 5.0, 0.5 * follower::kPi});
  Drive(&robot, {-0.2, 0.0}, 2.0, empty);
  EXPECT_LT(robot.pose().y, 4.7);
  EXPECT_NEAR(robot.pose().x, 5.0, 1e-9);
  const follower::Pose2d before = robot.pose();
  Drive(&robot, {0.0, 0.0}, 1.0, empty);
  const follower::Pose2d standing = robot.pose();
  Drive(&robot, {0.0, 1.0}, 1.0, empty);
  EXPECT_NEAR(Distance(standing, robot.pose()), 0.0, 1e-12);
  EXPECT_GT(follower::NormalizeAngle(robot.pose().yaw - before.yaw), 0.7);
}

// Where the left and the right wheel touch the ground.
nav_core::math::Vec2d LeftWheel(const follower::Pose2d& pose) {
  return {pose.x - 0.5 * kTrackWidth * std::sin(pose.yaw), pose.y + 0.5 * kTrackWidth * std::cos(pose.yaw)};
}
nav_core::math::Vec2d RightWheel(const follower::Pose2d& pose) {
  return {pose.x + 0.5 * kTrackWidth * std::sin(pose.yaw), pose.y - 0.5 * kTrackWidth * std::cos(pose.yaw)};
}

TEST_F(RobotInWorld, AStuckWheelStaysWhereItIsAndTheRobotTurnsAroundIt) {
  const World empty(map_, {});
  for (const bool is_left : {true, false}) {
    const auto stuck_wheel = is_left ? LeftWheel : RightWheel;
    Robot robot({5.0, 5.0, 0.3});
    Drive(&robot, {0.45, 0.0}, 1.0, empty);
    const nav_core::math::Vec2d pivot = stuck_wheel(robot.pose());
    for (int cycle = 0; cycle < 100; ++cycle) {
      const double yaw = robot.pose().yaw;
      robot.Drive({0.45, cycle < 50 ? 0.0 : 1.8}, kCycle, empty, {is_left, !is_left});
      ASSERT_LT(Distance(stuck_wheel(robot.pose()), follower::Pose2d{pivot.x, pivot.y, 0.0}), 1e-3);
      if (cycle < 50) {  // the other wheel goes on at 0.45 m/s, a track width away from the pivot
        ASSERT_NEAR(follower::NormalizeAngle(robot.pose().yaw - yaw), (is_left ? 1 : -1) * 0.45 / kTrackWidth * kCycle,
                    1e-9);
      }
    }
  }
}

TEST_F(RobotInWorld, WithBothWheelsStuckItStandsAndGoesOnWhenTheyAreFree) {
  const World empty(map_, {});
  Robot robot({5.0, 5.0, 0.0});
  for (int cycle = 0; cycle < 20; ++cycle) {
    robot.Drive({0.4, 1.0}, kCycle, empty, {true, true});
  }
  EXPECT_EQ(robot.motion().speed, 0.0);
  EXPECT_EQ(robot.motion().turn_rate, 0.0);
  EXPECT_EQ(Distance(robot.pose(), follower::Pose2d{5.0, 5.0, 0.0}), 0.0);
  EXPECT_EQ(robot.pose().yaw, 0.0);
  Drive(&robot, {0.4, 0.0}, 1.0, empty);
  EXPECT_GT(robot.pose().x, 5.2);
}

TEST_F(RobotInWorld, AWallStopsItAtItsRadius) {
  const World world(map_, {{"wall", {6.05, 5.0}, 0.0, 0.1, 4.0, false}});
  Robot robot({5.0, 5.0, 0.0});
  EXPECT_EQ(Drive(&robot, {0.5, 0.0}, 5.0, world), kBumperFront);
  EXPECT_NEAR(robot.pose().x, 6.0 - follower::kRobotRadius, 0.006);
  EXPECT_EQ(robot.motion().speed, 0.0);
}

TEST_F(RobotInWorld, TheMapsEdgeIsAWall) {
  const World world(map_, {});
  Robot robot({9.0, 5.0, 0.0});
  EXPECT_EQ(Drive(&robot, {0.5, 0.0}, 5.0, world), kBumperFront);
  EXPECT_NEAR(robot.pose().x, 10.0 - follower::kRobotRadius, 0.006);
}

TEST_F(RobotInWorld, TheBumperFeelsTheSideThatTouches) {
  const auto touch = [&](double bearing_degrees) {
    const double bearing = bearing_degrees * follower::kPi / 180.0;
    const nav_core::math::Vec2d post(5.0 + 0.4 * std::cos(bearing), 5.0 + 0.4 * std::sin(bearing));
    const World world(map_, {{"post", post, 0.0, 0.1, 0.1, true}});
    Robot robot({5.0, 5.0, 0.0});
    std::uint8_t bits = 0;
    for (int cycle = 0; cycle < 100 && bits == 0; ++cycle) {
      bits = BumperBits(robot.pose(), robot.Drive({0.3, 0.0}, kCycle, world));
    }
    return bits;
  };
  EXPECT_EQ(touch(0.0), kBumperFront);
  EXPECT_EQ(touch(22.0), kBumperLeft);  // 0.15 m to the left of its way
  EXPECT_EQ(touch(-22.0), kBumperRight);
  EXPECT_EQ(touch(50.0), 0);  // passes by
}

TEST_F(RobotInWorld, BothSidesAtOnceAreBothBits) {
  const World world(map_, {{"left", {5.5, 5.16}, 0.0, 0.1, 0.1, true}, {"right", {5.5, 4.84}, 0.0, 0.1, 0.1, true}});
  Robot robot({5.0, 5.0, 0.0});
  EXPECT_EQ(Drive(&robot, {0.3, 0.0}, 3.0, world), kBumperLeft | kBumperRight);
}

TEST(Bumper, ItsRegionsMeetAtThirtyAndNinetyDegrees) {
  const auto bits_at = [](double degrees) {
    const double direction = 1.0 + degrees * follower::kPi / 180.0;
    return BumperBits({2.0, 3.0, 1.0}, {{0, 0, {2.0 + 0.17 * std::cos(direction), 3.0 + 0.17 * std::sin(direction)}}});
  };
  EXPECT_EQ(bits_at(29.9), kBumperFront);
  EXPECT_EQ(bits_at(-29.9), kBumperFront);
  EXPECT_EQ(bits_at(30.1), kBumperLeft);
  EXPECT_EQ(bits_at(-30.1), kBumperRight);
  EXPECT_EQ(bits_at(89.9), kBumperLeft);
  EXPECT_EQ(bits_at(90.1), 0);
  EXPECT_EQ(bits_at(180.0), 0);
}

TEST_F(RobotInWorld, ItGetsAwayFromWhatItTouches) {
  const World world(map_, {{"wall", {6.05, 5.0}, 0.0, 0.1, 4.0, false}});
  Robot robot({5.7, 5.0, 0.0});
  Drive(&robot, {0.3, 0.0}, 2.0, world);
  EXPECT_TRUE(robot.Drive({0.0, 1.0}, kCycle, world).empty());
  Drive(&robot, {-0.2, 0.0}, 2.0, world);
  EXPECT_LT(robot.pose().x, 5.6);
}

TEST_F(RobotInWorld, ItGetsAwayFromWhatAppearedInIt) {
  const World world(map_, {{"box", {5.1, 5.0}, 0.0, 0.2, 0.2, false}});
  Robot robot({5.0, 5.0, 0.0});
  Drive(&robot, {0.3, 0.0}, 1.0, world);
  EXPECT_NEAR(robot.pose().x, 5.0, 1e-9);
  Drive(&robot, {-0.3, 0.0}, 2.0, world);
  EXPECT_LT(robot.pose().x, 4.7);
}

// The body never overlaps a wall, however thin, for any command and any length of a cycle.
RC_GTEST_PROP(Robot, NeverTunnelsThroughAWall, (std::uint32_t seed)) {
  costmap_2d::Costmap2D map(60, 60, 0.05, 0.0, 0.0);
  for (unsigned int cell = 0; cell < 60; ++cell) {
    map.setCost(40, cell, costmap_2d::LETHAL_OBSTACLE);  // one cell thin
  }
  const World world(map, {});
  Robot robot({1.5, 1.5, 0.0});
  for (int cycle = 0; cycle < 60; ++cycle) {
    seed = seed * 1664525u + 1013904223u;
    const double speed = static_cast<double>(seed % 2001) / 100.0 - 10.0;
    const double turn = static_cast<double>(seed / 2001 % 2001) / 100.0 - 10.0;
    robot.Drive({speed, turn}, cycle % 5 == 0 ? 1.0 : kCycle, world);
    RC_ASSERT(world.Overlaps({robot.pose().x, robot.pose().y}, follower::kRobotRadius).empty());
    RC_ASSERT(robot.pose().x < 2.0);
  }
}

TEST_F(RobotInWorld, APushDoesNotMoveItThroughAWall) {
  for (unsigned int my = 0; my < 200; ++my) {
    map_.setCost(120, my, costmap_2d::LETHAL_OBSTACLE);  // at x = 6.0 m .. 6.05 m
  }
  const World world(map_, {});
  Robot robot({5.0, 5.0, 0.0});
  robot.Push({0.7, 0.0}, world);
  EXPECT_EQ(robot.pose().x, 5.7);
  for (const double shift : {1.0, 3.0, 1e5, 1e300}) {
    robot.Push({shift, 0.0}, world);
    EXPECT_EQ(robot.pose().x, 5.7) << shift;
  }
  robot.Push({-2.0, 1.0}, world);
  EXPECT_EQ(robot.pose().x, 5.7 - 2.0);
  EXPECT_EQ(robot.pose().y, 5.0 + 1.0);
}

TEST_F(RobotInWorld, APushDoesNotMoveItOffTheMap) {
  const World empty(map_, {});
  Robot robot({5.0, 5.0, 0.0});
  for (const double shift : {6.0, 1e5, 1e300}) {
    robot.Push({shift, -shift}, empty);
    EXPECT_EQ(robot.pose().x, 5.0) << shift;
  }
}

}  // namespace
}  // namespace controller_base::simulation
