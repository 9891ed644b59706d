#include "demo/judge/path_check.h"

#include <gtest/gtest.h>

#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

bool PathExistsAround(const std::vector<simulation::Obstacle>& obstacles, double depth = 6.0, double corridor = 1.5) {
  const costmap_2d::Costmap2D hall = Hall(depth);
  return PathExists(TrueMap(hall, obstacles), AlongHall(depth), {1.0, 0.5 * depth}, corridor);
}

TEST(PathExists, AlongAnEmptyHallAndAroundABox) {
  EXPECT_TRUE(PathExistsAround({}));
  EXPECT_TRUE(PathExistsAround({Box(6.0, 3.0, 0.4, 1.0)}));
}

TEST(PathExists, NotThroughAWallFromSideToSide) { EXPECT_FALSE(PathExistsAround({Box(6.0, 3.0, 0.4, 6.0)})); }

TEST(PathExists, WhatTheLaserDoesNotSeeStandsInTheWayAsWell) {
  EXPECT_FALSE(PathExistsAround({Box(6.0, 3.0, 0.4, 6.0, true)}));
}

// The free cells beside a box that reaches 1.20 m to either side begin 1.20 m + 0.215 m away, those beside 1.40 m lie
// outside of the corridor of 1.5 m.
TEST(PathExists, OnlyInsideTheCorridor) {
  EXPECT_TRUE(PathExistsAround({Box(6.0, 3.0, 0.4, 2.4)}));
  EXPECT_FALSE(PathExistsAround({Box(6.0, 3.0, 0.4, 2.8)}));
  EXPECT_TRUE(PathExistsAround({Box(6.0, 3.0, 0.4, 2.8)}, 6.0, 2.0));
}

// A gap of 0.60 m leaves cells with more than 0.215 m to either side, one of 0.40 m does not.
TEST(PathExists, OnlyWhereTheRobotFits) {
  EXPECT_TRUE(PathExistsAround({Box(6.0, 1.2, 0.4, 3.0), Box(6.0, 4.8, 0.4, 3.0)}));
  EXPECT_FALSE(PathExistsAround({Box(6.0, 1.3, 0.4, 3.0), Box(6.0, 4.7, 0.4, 3.0)}));
}

TEST(PathExists, NotToAGoalThatSomethingStandsOn) { EXPECT_FALSE(PathExistsAround({Box(11.0, 3.0, 0.3, 0.3)})); }

TEST(PathExists, ARobotBesideAnObstacleMayLeaveItsCell) {
  const costmap_2d::Costmap2D map = TrueMap(Hall(6.0), {Box(6.0, 3.0, 0.4, 0.4)});
  EXPECT_TRUE(PathExists(map, AlongHall(6.0), {5.65, 3.0}, 1.5));
  const costmap_2d::Costmap2D buried = TrueMap(Hall(6.0), {Box(6.0, 3.0, 2.0, 2.0)});
  EXPECT_FALSE(PathExists(buried, AlongHall(6.0), {6.0, 3.0}, 1.5));
}

}  // namespace
}  // namespace controller_base::demo
