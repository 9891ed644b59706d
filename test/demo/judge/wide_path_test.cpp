#include "demo/judge/wide_path.h"

#include <gtest/gtest.h>

#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

using simulation::Shapes;

constexpr double kDepth = 6.0;
constexpr double kCorridor = 1.5;

bool WidePathAround(const std::vector<simulation::Obstacle>& obstacles, Shapes shapes = Shapes::kTrue,
                    const nav_core::math::Vec2d& from = {1.0, 0.5 * kDepth}) {
  const costmap_2d::Costmap2D hall = Hall(kDepth);
  return WidePathExists(simulation::World(hall, obstacles, shapes), AlongHall(kDepth), from, kCorridor);
}

// Two boxes from wall to wall, with a gap whose lower side lies at `from`.
std::vector<simulation::Obstacle> GapOf(double width, double from, bool low = false) {
  const double rest = kDepth - from - width;
  return {Box(6.0, 0.5 * from, 0.4, from), Box(6.0, kDepth - 0.5 * rest, 0.4, rest, low)};
}

TEST(WidePathExists, AlongAnEmptyHallAndAroundABox) {
  EXPECT_TRUE(WidePathAround({}));
  EXPECT_TRUE(WidePathAround({Box(6.0, 3.0, 0.4, 1.0)}));
  EXPECT_FALSE(WidePathAround({Box(6.0, 3.0, 0.4, kDepth)}));
}

TEST(WidePathExists, ThroughAGapOfHalfAMetreWhereverItLies) {
  for (const double from : {2.75, 2.76, 2.775, 2.7866, 3.02}) {
    EXPECT_TRUE(WidePathAround(GapOf(0.50, from))) << from;
    EXPECT_FALSE(WidePathAround(GapOf(0.48, from))) << from;
  }
}

TEST(WidePathExists, WhatTheLaserDoesNotSeeStandsInTheWayAsWell) {
  EXPECT_FALSE(WidePathAround(GapOf(0.45, 2.75, true)));
}

TEST(WidePathExists, ThroughAGapThatATurnedBoxNarrows) {
  std::vector<simulation::Obstacle> boxes = GapOf(0.9, 2.5);
  boxes.push_back(Box(6.0, 2.5, 0.4, 0.4));
  boxes.back().yaw = 0.785398;
  EXPECT_TRUE(WidePathAround(boxes));  // 0.283 m to its corner leave 0.617 m, 0.16 m farther on 0.457 m
  boxes.back().center.y = 2.66;
  EXPECT_FALSE(WidePathAround(boxes));
}

// Cells whose centres lie in the boxes: from 2.75 m to 3.20 m there are none.
TEST(WidePathExists, AmongCellsTheCellsCount) {
  EXPECT_FALSE(WidePathAround(GapOf(0.47, 2.74), Shapes::kCells));
  EXPECT_TRUE(WidePathAround(GapOf(0.50, 2.75), Shapes::kCells));
}

// The middle of the way passes a box that reaches 1.20 m to either side 1.45 m from the path, one of 1.30 m at 1.55 m.
TEST(WidePathExists, OnlyInsideTheCorridor) {
  EXPECT_TRUE(WidePathAround({Box(6.0, 3.0, 0.4, 2.4)}));
  EXPECT_FALSE(WidePathAround({Box(6.0, 3.0, 0.4, 2.6)}));
}

TEST(WidePathExists, ARobotBesideAnObstacleMayLeaveIt) {
  EXPECT_TRUE(WidePathAround({Box(6.0, 3.0, 0.4, 0.4)}, Shapes::kTrue, {5.62, 3.0}));
  EXPECT_FALSE(WidePathAround({Box(6.0, 3.0, 2.0, 2.0)}, Shapes::kTrue, {6.0, 3.0}));
}

TEST(WidePathExists, NotToAGoalThatSomethingStandsOn) { EXPECT_FALSE(WidePathAround({Box(11.0, 3.0, 0.3, 0.3)})); }

}  // namespace
}  // namespace controller_base::demo
