#include "follower/steering.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "test/follower/occupy.h"
#include "test/support/paths.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PathOf;
using controller_base_test::PointAt;
using controller_base_test::Xy;
using costmap_2d::Costmap2D;
using costmap_2d::LETHAL_OBSTACLE;

TEST(PurePursuit, ItSteersTowardsTheTargetAndFacesItFirst) {
  const Parameters parameters;
  const PursuitLimits limits{5.0, 0.4, 0.6};
  const Command left = PurePursuit(parameters, {0.0, 0.0, 0.0}, PointAt(1.0, 0.3), limits);
  EXPECT_GT(left.speed, 0.0);
  EXPECT_GT(left.turn_rate, 0.0);
  const Command behind = PurePursuit(parameters, {2.0, 0.3, 0.0}, PointAt(1.0, 0.3), limits);
  EXPECT_EQ(behind.speed, 0.0);
  EXPECT_NE(behind.turn_rate, 0.0);
}

// Turning at w while driving at v, the robot runs on a circle of radius v / w, tangential to its heading.
TEST(PurePursuit, TheArcLeadsThroughTheTarget) {
  const Command command = PurePursuit(Parameters(), {0.0, 0.0, 0.0}, PointAt(0.4, 0.1), {5.0, 0.3, 0.6});
  const double radius = command.speed / command.turn_rate;
  EXPECT_NEAR(std::hypot(0.4, 0.1 - radius), radius, 1e-12);
}

TEST(PurePursuit, ATargetFartherToTheSideThanTheLimitIsFacedFirst) {
  const geometry_msgs::Point target = PointAt(1.0, 0.3);  // 0.2915 rad to the side
  EXPECT_GT(PurePursuit(Parameters(), {}, target, {5.0, 0.4, 0.30}).speed, 0.0);
  EXPECT_EQ(PurePursuit(Parameters(), {}, target, {5.0, 0.4, 0.28}).speed, 0.0);
}

TEST(PurePursuit, ItStandsWhereThereIsNoRoomAndBrakesBefore) {
  const geometry_msgs::Point target = PointAt(1.0, 0.0);
  EXPECT_EQ(PurePursuit(Parameters(), {}, target, {0.0, 0.4, 0.6}).speed, 0.0);
  EXPECT_EQ(PurePursuit(Parameters(), {}, target, {-1.0, 0.4, 0.6}).speed, 0.0);
  EXPECT_NEAR(PurePursuit(Parameters(), {}, target, {0.1, 0.4, 0.6}).speed, std::sqrt(2 * 0.4 * 0.1) - 0.03, 1e-12);
  EXPECT_NEAR(PurePursuit(Parameters(), {}, target, {1e-6, 0.4, 0.6}).speed, 0.03, 1e-12);
  EXPECT_EQ(PurePursuit(Parameters(), {}, target, {5.0, 0.4, 0.6}).speed, 0.4);
}

TEST(PurePursuit, ASharpArcIsDrivenNoFasterThanItsTurnRateAllows) {
  const Command command = PurePursuit(Parameters(), {}, PointAt(0.05, 0.03), {5.0, 0.4, 1.0});
  EXPECT_NEAR(command.turn_rate, 1.0, 1e-12);
  EXPECT_LT(command.speed, 0.4);
}

TEST(PurePursuit, ATargetUnderTheRobotIsNoDivisionByZero) {
  const Command command = PurePursuit(Parameters(), {1.0, 1.0, 0.0}, PointAt(1.0, 1.0), {5.0, 0.4, 0.6});
  EXPECT_TRUE(std::isfinite(command.speed) && std::isfinite(command.turn_rate));
}

// A robot at (1, 1) with heading 0, on a free map of 4 m x 2 m with cells of 0.05 m.
class SteeringTest : public testing::Test {
 protected:
  // Poses 0.05 m apart along y = 1 m.
  static nav_msgs::Path Straight(double from, double to) {
    std::vector<Xy> points;
    for (int i = 0; from + 0.05 * i <= to + 1e-9; ++i) {
      points.push_back({from + 0.05 * i, 1.0});
    }
    return PathOf(points);
  }

  void Occupy(double from_x, double to_x, double from_y, double to_y, unsigned char cost = LETHAL_OBSTACLE) {
    controller_base_test::Occupy({from_x, to_x, from_y, to_y}, &map_, cost);
  }

  Command Drive(const nav_msgs::Path& path, double room = 5.0) const {
    return steering_.DriveAlong(View(), robot_, path, room);
  }

  PlannerView View() const { return {map_, boxes_}; }

  Parameters parameters_;
  Costmap2D map_{80, 40, 0.05, 0.0, 0.0};
  nav_controller::LocalMapObstacle boxes_;
  Pose2d robot_{1.0, 1.0, 0.0};
  Steering steering_{parameters_};
};

TEST_F(SteeringTest, WhereNothingIsNearItDrivesAtItsCruisingSpeed) {
  const Command command = Drive(Straight(1.0, 3.0));
  EXPECT_EQ(command.speed, 0.45);
  EXPECT_NEAR(command.turn_rate, 0.0, 1e-12);
}

TEST_F(SteeringTest, ItBrakesTowardsTheEndOfItsRoom) {
  EXPECT_LT(Drive(Straight(1.0, 1.2), 0.2).speed, 0.45);
  EXPECT_EQ(Drive(Straight(1.0, 1.2), 0.0).speed, 0.0);
}

TEST_F(SteeringTest, WhereTheFarTargetIsBlockedItLooksLessFarAndDrivesSlower) {
  Occupy(1.15, 1.20, 0.9, 1.1);  // 0.15 m ahead
  const Command command = Drive(Straight(1.0, 3.0));
  EXPECT_NEAR(command.speed, 0.1265625 / 0.4, 1e-12);
}

TEST_F(SteeringTest, ALookAheadThatIsLittleShorterDoesNotSlowItDown) {
  robot_.y = 0.99;
  const nav_msgs::Path path = PathOf({{1.0, 0.99}, {1.1, 0.99}, {1.2, 0.99}, {1.25, 1.02}, {1.5, 1.22}});
  Occupy(1.25, 1.3, 1.05, 1.3);  // on the line to the last pose
  ASSERT_TRUE(View().IsLineBlocked(PositionOf(robot_), PointAt(1.5, 1.22)));
  EXPECT_EQ(Drive(path).speed, 0.45);
}

TEST_F(SteeringTest, ItDoesNotSlowDownForWhatItPassesHoweverNear) {
  nav_msgs::Path path = Straight(1.0, 3.0);
  Occupy(1.0, 1.4, 1.0, 1.05, 94);
  EXPECT_EQ(Drive(path).speed, 0.45);
  robot_.y = 1.04;
  Occupy(0.9, 1.6, 1.05, 1.1);  // 1 cm beside it all along
  for (geometry_msgs::PoseStamped& pose : path.poses) {
    pose.pose.position.y = 1.04;
  }
  EXPECT_EQ(Drive(path).speed, 0.45);
}

TEST_F(SteeringTest, ItIsSlowWhereItsWayBendsAwayFromWhatIsNear) {
  robot_.y = 0.99;
  const nav_msgs::Path path =
      PathOf({{1.0, 0.99}, {1.1, 0.99}, {1.22, 0.99}, {1.32, 1.09}, {1.42, 1.19}, {1.52, 1.29}});
  Occupy(1.30, 1.5, 0.9, 1.0);  // 8 cm behind the bend
  EXPECT_EQ(Drive(path).speed, 0.45);
  Occupy(1.25, 1.5, 0.9, 1.0);  // 3 cm
  const double at_a_distance = Drive(path).speed;
  EXPECT_LT(at_a_distance, 0.45);
  EXPECT_GT(at_a_distance, 0.2);
}

TEST_F(SteeringTest, ItTurnsWhileItDrivesWhereThereIsRoom) {
  robot_.yaw = 0.8;
  const nav_msgs::Path path = Straight(1.0, 3.0);
  EXPECT_GT(Drive(path).speed, 0.0);
  EXPECT_LT(Drive(path).turn_rate, 0.0);
  Occupy(1.05, 1.30, 1.05, 1.10);  // where the arc would lead
  EXPECT_EQ(Drive(path).speed, 0.0);
}

TEST_F(SteeringTest, WherePathTurnsBackTheTargetLiesJustAhead) {
  nav_msgs::Path hairpin = Straight(1.0, 1.2);
  const nav_msgs::Path back = Straight(0.2, 1.15);
  hairpin.poses.insert(hairpin.poses.end(), back.poses.rbegin(), back.poses.rend());
  const Command command = Drive(hairpin);
  EXPECT_NEAR(command.speed, 0.45 * 0.15 / 0.4, 1e-12);
  EXPECT_NEAR(command.turn_rate, 0.0, 1e-9);  // towards the turn, not the leg behind it
}

// The robot drives fast past a corner that the arc to its target would cut.
TEST_F(SteeringTest, AnArcIntoAnObstacleIsNotDriven) {
  robot_.yaw = 0.5;  // the target lies to the right; the arc bulges to the left
  Occupy(1.10, 1.20, 1.05, 1.20);
  const nav_msgs::Path path = Straight(1.0, 3.0);
  ASSERT_FALSE(View().IsLineBlocked(PositionOf(robot_), PointAt(1.4, 1.0)));
  steering_.SetMeasuredSpeed(0.45);
  const Command moving = Drive(path);
  EXPECT_EQ(moving.speed, 0.0);
  EXPECT_LT(moving.turn_rate, 0.0);  // it brakes along its arc
  steering_.SetMeasuredSpeed(0.0);
  const Command standing = Drive(path);
  EXPECT_EQ(standing.speed, 0.0);
  EXPECT_NEAR(standing.turn_rate, 2.5 * -0.5, 0.3);  // then it turns to its target
}

TEST_F(SteeringTest, OutOfAnObstacleItDrivesSlowlyToTheNearestFreeCell) {
  Occupy(0.0, 4.0, 0.0, 1.2);
  robot_.yaw = 0.5 * kPi;
  const Command command = steering_.LeaveObstacle(View(), robot_);
  EXPECT_GT(command.speed, 0.0);
  EXPECT_LE(command.speed, 0.1);
  robot_.y = 0.8;  // 0.4 m to the free cells: they may lie behind the obstacle
  EXPECT_EQ(steering_.LeaveObstacle(View(), robot_).speed, 0.0);
}

TEST_F(SteeringTest, ATurnIsTheFasterTheMoreIsLeft) {
  EXPECT_EQ(Steering::TurnBy(0.0).turn_rate, 0.0);
  EXPECT_GT(Steering::TurnBy(1.0).turn_rate, Steering::TurnBy(0.5).turn_rate);
  EXPECT_LT(Steering::TurnBy(-0.5).turn_rate, 0.0);
  EXPECT_EQ(Steering::TurnBy(0.5).speed, 0.0);
}

}  // namespace
}  // namespace controller_base::follower
