#include "demo/judge/way_check.h"

#include <gtest/gtest.h>

#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

bool WayExistsAround(const std::vector<simulation::Obstacle>& obstacles, double depth = 6.0, double corridor = 1.5) {
  const costmap_2d::Costmap2D hall = Hall(depth);
  return WayExists(TrueMap(hall, obstacles), AlongHall(depth), {1.0, 0.5 * depth}, corridor);
}

TEST(WayExists, AlongAnEmptyHallAndAroundABox) {
  EXPECT_TRUE(WayExistsAround({}));
  EXPECT_TRUE(WayExistsAround({Box(6.0, 3.0, 0.4, 1.0)}));
}

TEST(WayExists, NotThroughAWallFromSideToSide) { EXPECT_FALSE(WayExistsAround({Box(6.0, 3.0, 0.4, 6.0)})); }

TEST(WayExists, WhatTheLaserDoesNotSeeStandsInTheWayAsWell) {
  EXPECT_FALSE(WayExistsAround({Box(6.0, 3.0, 0.4, 6.0, true)}));
}

// The free cells beside a box that reaches 1.20 m to either side begin 1.20 m + 0.215 m away, those beside 1.40 m lie
// outside of the corridor of 1.5 m.
TEST(WayExists, OnlyInsideTheCorridor) {
  EXPECT_TRUE(WayExistsAround({Box(6.0, 3.0, 0.4, 2.4)}));
  EXPECT_FALSE(WayExistsAround({Box(6.0, 3.0, 0.4, 2.8)}));
  EXPECT_TRUE(WayExistsAround({Box(6.0, 3.0, 0.4, 2.8)}, 6.0, 2.0));
}

// A gap of 0.60 m leaves cells with more than 0.215 m to either side, one of 0.40 m does not.
TEST(WayExists, OnlyWhereTheRobotFits) {
  EXPECT_TRUE(WayExistsAround({Box(6.0, 1.2, 0.4, 3.0), Box(6.0, 4.8, 0.4, 3.0)}));
  EXPECT_FALSE(WayExistsAround({Box(6.0, 1.3, 0.4, 3.0), Box(6.0, 4.7, 0.4, 3.0)}));
}

TEST(WayExists, NotToAGoalThatSomethingStandsOn) { EXPECT_FALSE(WayExistsAround({Box(11.0, 3.0, 0.3, 0.3)})); }

TEST(WayExists, ARobotBesideAnObstacleMayLeaveItsCell) {
  const costmap_2d::Costmap2D map = TrueMap(Hall(6.0), {Box(6.0, 3.0, 0.4, 0.4)});
  EXPECT_TRUE(WayExists(map, AlongHall(6.0), {5.65, 3.0}, 1.5));
  const costmap_2d::Costmap2D buried = TrueMap(Hall(6.0), {Box(6.0, 3.0, 2.0, 2.0)});
  EXPECT_FALSE(WayExists(buried, AlongHall(6.0), {6.0, 3.0}, 1.5));
}

}  // namespace
}  // namespace controller_base::demo
