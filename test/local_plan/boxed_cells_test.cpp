#include "controller_base/local_plan/boxed_cells.h"

#include <costmap_2d/costmap_2d.h>
#include <gtest/gtest.h>
#include <nav_core/math/box2d.h>
#include <nav_core/math/vec2d.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "test/local_plan/random_worlds.h"

namespace {

using costmap_2d::Costmap2D;
using nav_controller::internal::BoxedCells;
using nav_core::math::Box2d;
using nav_core::math::Vec2d;

constexpr double kLength = 0.2;  // metres
constexpr double kWidth = 0.1;   // metres

bool IsCenterInBox(const Costmap2D& map, const std::vector<Box2d>& boxes, unsigned int mx, unsigned int my) {
  Vec2d center;
  map.mapToWorld(mx, my, center.x, center.y);
  return std::any_of(boxes.begin(), boxes.end(), [&](const Box2d& box) { return box.IsPointIn(center); });
}

int CountBoxedCells(const Costmap2D& map, const std::vector<Box2d>& boxes) {
  BoxedCells boxed(map, boxes);
  int count = 0;
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      EXPECT_EQ(boxed.Contains(mx, my), IsCenterInBox(map, boxes, mx, my)) << mx << ", " << my;
      count += boxed.Contains(mx, my) ? 1 : 0;
    }
  }
  return count;
}

TEST(BoxedCells, NoBoxesNoCells) { EXPECT_EQ(CountBoxedCells(Costmap2D(20, 20, 0.05, 0.0, 0.0), {}), 0); }

TEST(BoxedCells, CellsWithTheirCentreInABox) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  EXPECT_EQ(CountBoxedCells(map, {Box2d(Vec2d(0.5, 0.5), 0.0, kLength, kWidth)}), 4 * 2);
}

TEST(BoxedCells, ABoxOverTheMapsEdge) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  EXPECT_EQ(CountBoxedCells(map, {Box2d(Vec2d(0.0, 0.5), 0.0, kLength, kWidth)}), 2 * 2);
  EXPECT_EQ(CountBoxedCells(map, {Box2d(Vec2d(1.0, 1.0), 0.0, kLength, kWidth)}), 2 * 1);
  EXPECT_EQ(CountBoxedCells(map, {Box2d(Vec2d(1.07, 0.5), 0.0, kLength, kWidth)}), 1 * 2);
}

TEST(BoxedCells, BoxesOffTheMap) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  EXPECT_EQ(
      CountBoxedCells(map, {Box2d(Vec2d(-0.5, 0.5), 0.0, kLength, kWidth), Box2d(Vec2d(0.5, 1.5), 0.0, kLength, kWidth),
                            Box2d(Vec2d(1e300, 0.5), 0.0, kLength, kWidth)}),
      0);
}

TEST(BoxedCells, ABoxThatIsNotFiniteHoldsNothing) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(CountBoxedCells(
                map, {Box2d(Vec2d(nan, 0.5), 0.0, kLength, kWidth), Box2d(Vec2d(0.5, infinity), 0.0, kLength, kWidth),
                      Box2d(Vec2d(0.5, 0.5), nan, kLength, kWidth)}),
            0);
}

TEST(BoxedCells, FineAndCoarseCells) {
  const std::vector<Box2d> boxes = {Box2d(Vec2d(0.4, 0.3), 0.7, kLength, kWidth)};
  EXPECT_GT(CountBoxedCells(Costmap2D(400, 300, 0.002, 0.0, 0.0), boxes), 4000);
  EXPECT_EQ(CountBoxedCells(Costmap2D(3, 3, 0.8, 0.0, -0.1), boxes), 1);
}

TEST(BoxedCells, OnCellsOfAMetreAndMoreABoxHoldsAtMostOneCentre) {
  for (const double resolution : {1.0, 1.5, 10.0, 1000.0}) {
    SCOPED_TRACE(resolution);
    const Costmap2D map(5, 4, resolution, -2.0 * resolution, 100.0);
    for (unsigned int my = 0; my < 4; ++my) {
      for (unsigned int mx = 0; mx < 5; ++mx) {
        Vec2d center;
        map.mapToWorld(mx, my, center.x, center.y);
        EXPECT_EQ(CountBoxedCells(map, {Box2d(center, 0.3, kLength, kWidth)}), 1);
        const Vec2d beside(center.x + 0.09, center.y);  // the centre lies in it, 0.01 m from its end
        EXPECT_EQ(CountBoxedCells(map, {Box2d(beside, 0.0, kLength, kWidth)}), 1);
        const Vec2d too_far(center.x + 0.11, center.y);
        EXPECT_EQ(CountBoxedCells(map, {Box2d(too_far, 0.0, kLength, kWidth)}), 0);
        const Vec2d corner(center.x - 0.5 * resolution, center.y - 0.5 * resolution);
        EXPECT_EQ(CountBoxedCells(map, {Box2d(corner, 0.0, kLength, kWidth)}), 0);
      }
    }
  }
}

RC_GTEST_PROP(BoxedCells, EachCellAsTheBoxesSay, ()) {
  const Costmap2D map = controller_base_test::RandomMap(*rc::gen::inRange(1, 40), *rc::gen::inRange(1, 40));
  std::vector<Box2d> boxes;
  for (const controller_base_test::RandomBox& box : controller_base_test::RandomBoxes(map, 12)) {
    boxes.emplace_back(Vec2d(box.center.x, box.center.y), box.heading, kLength, kWidth);
  }
  BoxedCells boxed(map, boxes);
  for (int i = 0; i < 200; ++i) {  // in any order, again and again
    const auto mx = *rc::gen::inRange<unsigned int>(0, map.getSizeInCellsX());
    const auto my = *rc::gen::inRange<unsigned int>(0, map.getSizeInCellsY());
    RC_ASSERT(boxed.Contains(mx, my) == IsCenterInBox(map, boxes, mx, my));
  }
}

}  // namespace
