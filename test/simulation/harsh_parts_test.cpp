#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "simulation/drifting_pose.h"
#include "simulation/faulty_robot.h"
#include "simulation/harsh_world.h"
#include "simulation/laser.h"
#include "simulation/obstacle_surface.h"
#include "simulation/random_source.h"
#include "simulation/robot.h"

// The parts of the harsh world, one by one.
namespace controller_base::simulation {
namespace {

using follower::kPi;
using follower::Pose2d;
using nav_core::math::Vec2d;

Obstacle Box(double x, double y, double length, double width, double yaw = 0.0) {
  Obstacle box;
  box.center = {x, y};
  box.length = length;
  box.width = width;
  box.yaw = yaw;
  return box;
}

Obstacle Disc(double x, double y, double radius) {
  Obstacle disc;
  disc.center = {x, y};
  disc.radius = radius;
  return disc;
}

TEST(RandomSource, TheSameSeedGivesTheSameNumbersAndAWidthOfZeroNone) {
  RandomSource one(7);
  RandomSource other(7);
  EXPECT_EQ(one.Normal(0.01), other.Normal(0.01));
  EXPECT_EQ(RandomSource(8).Normal(0.0), 0.0);
  EXPECT_NE(RandomSource(8).Normal(1.0), RandomSource(9).Normal(1.0));
}

TEST(RandomSource, TheDrawsHaveTheDeviationAskedFor) {
  RandomSource random(3);
  constexpr int kDraws = 20000;
  double squares = 0.0;
  for (int i = 0; i < kDraws; ++i) {
    const double draw = random.Normal(0.01);
    squares += draw * draw;
  }
  EXPECT_NEAR(std::sqrt(squares / kDraws), 0.01, 0.0003);
}

TEST(ObstacleSurface, TheNearestPointLiesOnTheEdgeOrIsThePointItself) {
  const Obstacle box = Box(1.0, 1.0, 0.4, 0.2);
  EXPECT_NEAR(NearestPointOf(box, {2.0, 1.05}, 0.0).x, 1.2, 1e-12);
  EXPECT_NEAR(NearestPointOf(box, {2.0, 1.05}, 0.0).y, 1.05, 1e-12);
  EXPECT_NEAR(NearestPointOf(box, {2.0, 2.0}, 0.0).y, 1.1, 1e-12);
  EXPECT_EQ(NearestPointOf(box, {1.1, 1.0}, 0.0).x, 1.1);
  const Obstacle turned = Box(1.0, 1.0, 0.4, 0.2, 0.5 * kPi);
  EXPECT_NEAR(NearestPointOf(turned, {2.0, 1.0}, 0.0).x, 1.1, 1e-12);
  EXPECT_NEAR(NearestPointOf(Disc(1.0, 1.0, 0.25), {1.0, 3.0}, 0.0).y, 1.25, 1e-12);
  EXPECT_EQ(NearestPointOf(Disc(1.0, 1.0, 0.25), {1.0, 1.1}, 0.0).y, 1.1);
}

TEST(ObstacleSurface, ARayEndsWhereTheShapeBegins) {
  EXPECT_NEAR(RangeTo(Box(1.0, 0.0, 0.4, 0.2), {}, 0.0), 0.8, 1e-12);
  EXPECT_NEAR(RangeTo(Box(1.0, 0.0, 0.4, 0.2, 0.25 * kPi), {}, 0.0), 1.0 - 0.1 * std::sqrt(2.0), 1e-9);
  EXPECT_NEAR(RangeTo(Disc(1.0, 0.0, 0.25), {}, 0.0), 0.75, 1e-12);
  EXPECT_TRUE(std::isinf(RangeTo(Disc(1.0, 0.26, 0.25), {}, 0.0)));
  EXPECT_TRUE(std::isinf(RangeTo(Disc(-1.0, 0.0, 0.25), {}, 0.0)));  // behind
  EXPECT_TRUE(std::isinf(RangeTo(Box(1.0, 0.2, 0.4, 0.2), {}, 0.0)));
  EXPECT_EQ(RangeTo(Box(0.0, 0.0, 0.4, 0.2), {}, 0.0), 0.0);
}

TEST(DriftingPose, ItCountsWrongAndIsCorrectedInAJump) {
  DriftingPose pose({0.1, 0.0, 2.0});
  EXPECT_EQ(pose.Estimate({1.0, 1.0, 0.0}, 0.0).x, 1.0);
  EXPECT_NEAR(pose.Estimate({2.0, 1.0, 0.0}, 1.0).x, 2.1, 1e-12);
  EXPECT_EQ(pose.Estimate({2.5, 1.0, 0.0}, 2.0).x, 2.5);
  EXPECT_NEAR(pose.Estimate({3.5, 1.0, 0.0}, 3.0).x, 3.6, 1e-12);
}

TEST(DriftingPose, TheHeadingDriftsWithTheWayAlsoBackwards) {
  DriftingPose pose({0.0, 0.1, 100.0});
  pose.Estimate({}, 0.0);
  EXPECT_NEAR(pose.Estimate({1.0, 0.0, 0.0}, 1.0).yaw, 0.1, 1e-12);
  const Pose2d back = pose.Estimate({0.0, 0.0, 0.0}, 2.0);
  EXPECT_NEAR(back.yaw, 0.2, 1e-12);
  EXPECT_NEAR(back.x, 1.0 - std::cos(0.1), 1e-12);  // on its own, turned line
}

TEST(FaultyRobotDelay, ACommandReachesTheWheelsLate) {
  Faults faults;
  faults.command_delay = 0.1;
  FaultyRobot robot(faults, 1);
  EXPECT_EQ(robot.Delayed({0.3, 0.0}, 0.0).speed, 0.0);
  EXPECT_EQ(robot.Delayed({0.4, 0.0}, 0.05).speed, 0.0);
  EXPECT_EQ(robot.Delayed({0.5, 0.0}, 0.10).speed, 0.3);
  EXPECT_EQ(robot.Delayed({0.6, 0.0}, 0.15).speed, 0.4);
  EXPECT_EQ(FaultyRobot({}, 1).Delayed({0.3, 0.0}, 5.0).speed, 0.3);
}

class HarshParts : public testing::Test {
 protected:
  costmap_2d::Costmap2D map_{100, 100, 0.05, 0.0, 0.0};
};

TEST_F(HarshParts, AnObstacleOfTrueShapeIsSolidInPartOfACell) {
  const World world(map_, {Box(2.512, 2.5, 0.004, 1.0)}, Shapes::kTrue);  // covers no cell's centre
  EXPECT_EQ(World(map_, {Box(2.512, 2.5, 0.004, 1.0)}).Overlaps({2.35, 2.52}, 0.17).size(), 0u);
  const std::vector<World::Overlap> overlaps = world.Overlaps({2.35, 2.52}, 0.17);
  ASSERT_EQ(overlaps.size(), 1u);
  EXPECT_EQ(overlaps[0].obstacle, 0);
  EXPECT_NEAR(overlaps[0].nearest.x, 2.51, 1e-12);
  EXPECT_TRUE(world.Overlaps({2.33, 2.52}, 0.17).empty());
}

TEST_F(HarshParts, TheLaserMeasuresToTheSurfaceOrTheWallBeforeIt) {
  Obstacle low = Box(2.0, 2.5, 0.1, 1.0);
  low.low = true;
  const World world(map_, {low, Box(3.013, 2.5, 0.1, 1.0)}, Shapes::kTrue);
  EXPECT_NEAR(world.RangeAlong({1.0, 2.5, 0.0}, 5.0), 1.963, 1e-12);
  EXPECT_TRUE(std::isinf(world.RangeAlong({1.0, 2.5, 0.0}, 1.9)));
  map_.setCost(40, 50, costmap_2d::LETHAL_OBSTACLE);  // from x = 2.0 m on
  EXPECT_NEAR(World(map_, {Box(3.013, 2.5, 0.1, 1.0)}, Shapes::kTrue).RangeAlong({1.0, 2.52, 0.0}, 5.0), 1.0, 1e-12);
}

TEST_F(HarshParts, NoiseMarksTheCellsOnBothSidesOfASurface) {
  const World world(map_, {Box(3.05, 2.5, 0.1, 2.0)}, Shapes::kTrue);  // its face is at x = 3.0 m, between two cells
  KnownMap known(map_, follower::ObstacleCell::kSurface);
  RandomSource random(1);
  bool before = false;
  bool behind = false;
  for (int scan = 0; scan < 20; ++scan) {
    MeasureWithLaser(world, {{1.0, 2.5, 0.0}, {1.0, 2.5, 0.0}}, 0.01, &random, &known);
    before = before || known.IsSeen(59, 50);
    behind = behind || known.IsSeen(60, 50);
    EXPECT_FALSE(known.IsSeen(57, 50) || known.IsSeen(62, 50));
  }
  EXPECT_TRUE(before && behind);
}

TEST_F(HarshParts, WhatIsSeenLiesWhereTheRobotTakesItToLie) {
  const World world(map_, {Box(3.075, 2.5, 0.1, 2.0)}, Shapes::kTrue);
  KnownMap known(map_);
  RandomSource random(1);
  const std::vector<Vec2d> ends = MeasureWithLaser(world, {{1.0, 2.5, 0.0}, {1.1, 2.5, 0.0}}, 0.0, &random, &known);
  EXPECT_TRUE(known.IsSeen(62, 50));
  EXPECT_FALSE(known.IsSeen(60, 50));
  EXPECT_NEAR(ends.front().x, 3.125, 1e-9);
}

// A mark on a surface keeps the robot half a cell less away than a solid cell.
TEST_F(HarshParts, MarksOnSurfacesAreNotTakenForSolidCells) {
  KnownMap solid(map_);
  KnownMap surface(map_, follower::ObstacleCell::kSurface);
  solid.MarkSeen(50, 50);
  surface.MarkSeen(50, 50);
  const costmap_2d::Costmap2D of_solid = solid.WholeMap();
  const costmap_2d::Costmap2D of_surface = surface.WholeMap();
  EXPECT_TRUE(of_solid.IsLethalObstacle(54, 50));
  EXPECT_FALSE(of_surface.IsLethalObstacle(54, 50));  // 0.20 m from the mark
  EXPECT_TRUE(of_surface.IsLethalObstacle(53, 50));
}

TEST_F(HarshParts, ABrakingRobotPressesOnUntilItsWheelsStand) {
  const World world(map_, {Box(2.7, 2.5, 0.4, 2.0)}, Shapes::kTrue);
  Robot braking({2.0, 2.5, 0.0}, true);
  Robot stopping({2.0, 2.5, 0.0}, false);
  constexpr double kCycle = 0.05;
  while (braking.Drive({0.45, 0.0}, kCycle, world).empty()) {
  }
  while (stopping.Drive({0.45, 0.0}, kCycle, world).empty()) {
  }
  EXPECT_EQ(braking.motion().speed, 0.0);
  EXPECT_FALSE(braking.Drive({-0.15, 0.0}, kCycle, world).empty());
  EXPECT_TRUE(stopping.Drive({-0.15, 0.0}, kCycle, world).empty());
}

TEST(HarshWorld, AllOfItIsOffByDefault) {
  DriveSetup setup;
  EXPECT_EQ(setup.shapes, Shapes::kCells);
  EXPECT_EQ(setup.faults.laser_noise, 0.0);
  EXPECT_TRUE(setup.faults.drift.IsNone());
  MakeHarsh(&setup);
  EXPECT_EQ(setup.shapes, Shapes::kTrue);
  EXPECT_EQ(setup.faults.laser_noise, 0.01);
  EXPECT_GT(setup.faults.command_delay, 0.0);
  EXPECT_TRUE(setup.faults.lasting_press);
  EXPECT_FALSE(setup.faults.drift.IsNone());
}

}  // namespace
}  // namespace controller_base::simulation
