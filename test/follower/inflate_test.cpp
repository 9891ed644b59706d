#include "controller_base/follower/inflate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace controller_base::follower {
namespace {

// 4 m in a row, with an obstacle at its beginning.
LocalMapData Row() {
  LocalMapData map;
  map.size_x = 80;
  map.size_y = 1;
  map.resolution = 0.05;
  map.costs.assign(80, 0);
  map.costs[0] = 254;
  return map;
}

TEST(Inflate, CostsFallWithTheDistanceToTheObstacleAsTheFollowerWantsThem) {
  LocalMapData map = Row();
  map.costs[20] = 200;  // from another inflation
  Inflate(&map, 0.17);
  EXPECT_EQ(map.costs[0], 254);
  EXPECT_EQ(map.costs[3], 253);  // 0.15 m: the robot would touch
  EXPECT_LE(map.costs[5], 127);
  EXPECT_GE(map.costs[5], 94);
  for (std::size_t cell = 6; cell < map.costs.size(); ++cell) {
    EXPECT_LE(map.costs[cell], map.costs[cell - 1]) << cell;
  }
  EXPECT_EQ(map.costs.back(), 0);
}

TEST(Inflate, WhatIsUnknownStaysSoUnlessAnObstacleIsNear) {
  LocalMapData map = Row();
  map.costs[3] = 255;
  map.costs[10] = 255;
  Inflate(&map, 0.17);
  EXPECT_EQ(map.costs[3], 253);
  EXPECT_EQ(map.costs[10], 255);
}

TEST(Inflate, AMapThatCannotBeIsRefused) {
  LocalMapData empty;
  EXPECT_THROW(Inflate(&empty, 0.17), std::invalid_argument);
  LocalMapData short_of_costs = Row();
  short_of_costs.size_y = 2;
  EXPECT_THROW(Inflate(&short_of_costs, 0.17), std::invalid_argument);
  LocalMapData flat = Row();
  flat.resolution = 0.0;
  EXPECT_THROW(Inflate(&flat, 0.17), std::invalid_argument);
}

// A row of cells with a gap that begins at `from`, metres; every cell that the surfaces beside it touch is an obstacle.
LocalMapData RowWithGap(double from, double width, double resolution) {
  LocalMapData map;
  map.size_x = 80;
  map.size_y = 1;
  map.resolution = resolution;
  for (int mx = 0; mx < 80; ++mx) {
    const bool is_free = mx * resolution > from && (mx + 1) * resolution < from + width;
    map.costs.push_back(is_free ? 0 : 254);
  }
  return map;
}

bool IsOpen(LocalMapData map) {
  Inflate(&map, 0.17);
  return std::any_of(map.costs.begin(), map.costs.end(), [](std::uint8_t cost) { return cost < 253; });
}

TEST(Inflate, AGapOfHalfAMetreIsOpenWhereverItLiesOnTheGrid) {
  for (const double resolution : {0.05, 0.025}) {
    for (int tenth = 0; tenth < 10; ++tenth) {
      const double from = 0.5 + (tenth + 0.5) * 0.1 * resolution;
      EXPECT_TRUE(IsOpen(RowWithGap(from, 0.5, resolution))) << from << " m, cells of " << resolution << " m";
      EXPECT_FALSE(IsOpen(RowWithGap(from, 0.33, resolution))) << from << " m, cells of " << resolution << " m";
    }
  }
}

}  // namespace
}  // namespace controller_base::follower
