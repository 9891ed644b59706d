#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "follower/inflation.h"
#include "simulation/known_map.h"
#include "test/support/maps.h"

namespace controller_base::simulation {
namespace {

using controller_base_test::MapFromText;
using costmap_2d::Costmap2D;

constexpr double kResolutions[] = {0.02, 0.05, 0.1, 0.2};

// Every cell beside a lethal one, corners included, must stop the shortcut smoother, which does not see lethal cells.
void ExpectClosedRings(const Costmap2D& map) {
  const auto size_x = static_cast<int>(map.getSizeInCellsX());
  const auto size_y = static_cast<int>(map.getSizeInCellsY());
  const auto is_lethal = [&](int mx, int my) {
    return map.IsInmap(mx, my) && map.IsLethalObstacle(static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
  };
  for (int my = 0; my < size_y; ++my) {
    for (int mx = 0; mx < size_x; ++mx) {
      bool is_beside_lethal = false;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          is_beside_lethal = is_beside_lethal || is_lethal(mx + dx, my + dy);
        }
      }
      if (is_beside_lethal && !is_lethal(mx, my)) {
        const int cost = map.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
        ASSERT_GE(cost, 94) << mx << ", " << my;
        ASSERT_LE(cost, 127) << mx << ", " << my;
      }
    }
  }
}

RC_GTEST_PROP(Inflation, ClosesARingAroundEveryObstacleKnownOrUnknownAround,
              (const std::vector<std::uint16_t>& seeds)) {
  Costmap2D map(60, 50, *rc::gen::elementOf(std::vector<double>(std::begin(kResolutions), std::end(kResolutions))),
                -1.0, 2.0);
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    map.setCost(seeds[i] % 60, seeds[i] / 60 % 50,
                i % 3 == 0 ? costmap_2d::LETHAL_OBSTACLE : costmap_2d::NO_INFORMATION);
  }
  ExpectClosedRings(KnownMap(map).WholeMap());
  RC_ASSERT(!testing::Test::HasFatalFailure());
}

class LocalMap : public testing::Test {
 protected:
  LocalMap() : map_(200, 160, 0.05, -3.0, 1.0) {}
  Costmap2D map_;
};

TEST_F(LocalMap, ItIsSixMetresWideAndItsCellsAreTheMapsCells) {
  const Costmap2D local = KnownMap(map_).LocalMapAround({2.013, 5.021});
  EXPECT_EQ(local.getSizeInCellsX(), 120u);
  EXPECT_EQ(local.getSizeInCellsY(), 120u);
  unsigned int mx = 0;
  unsigned int my = 0;
  double x = 0.0;
  double y = 0.0;
  local.mapToWorld(7, 9, x, y);
  ASSERT_TRUE(map_.worldToMap(x, y, mx, my));
  double map_x = 0.0;
  double map_y = 0.0;
  map_.mapToWorld(mx, my, map_x, map_y);
  EXPECT_NEAR(x, map_x, 1e-9);
  EXPECT_NEAR(y, map_y, 1e-9);
  EXPECT_NEAR(local.getOriginX() + 3.0, 2.0, 0.051);
  EXPECT_NEAR(local.getOriginY() + 3.0, 5.0, 0.051);
}

TEST_F(LocalMap, WhatLiesOutsideTheMapIsAnObstacle) {
  const Costmap2D local = KnownMap(map_).LocalMapAround({-3.0, 1.0});
  EXPECT_EQ(local.getCost(0, 0), costmap_2d::LETHAL_OBSTACLE);
  EXPECT_EQ(local.getCost(59, 100), costmap_2d::LETHAL_OBSTACLE);
  EXPECT_TRUE(local.IsLethalObstacle(61, 100));
  EXPECT_EQ(local.getCost(110, 110), costmap_2d::FREE_SPACE);
}

TEST_F(LocalMap, ItShowsWhatTheLaserHasSeenAndForgetsWhatItSeesThrough) {
  KnownMap known(map_);
  known.MarkSeen(100, 80);
  const nav_core::math::Vec2d center(2.0, 5.0);
  unsigned int mx = 0;
  unsigned int my = 0;
  {
    const Costmap2D local = known.LocalMapAround(center);
    ASSERT_TRUE(local.worldToMap(2.025, 5.025, mx, my));
    EXPECT_TRUE(local.IsLaserObstacle(mx, my));
    EXPECT_EQ(local.getCost(mx, my), costmap_2d::LETHAL_OBSTACLE);
    EXPECT_TRUE(local.IsLethalObstacle(mx + 4, my));
    EXPECT_FALSE(local.IsLaserObstacle(mx + 1, my));
  }
  known.ClearSeen(100, 80);
  const Costmap2D local = known.LocalMapAround(center);
  EXPECT_FALSE(local.IsLaserObstacle(mx, my));
  EXPECT_EQ(local.getCost(mx, my), costmap_2d::FREE_SPACE);
}

TEST_F(LocalMap, UnknownCellsStayUnknownAwayFromObstacles) {
  map_.setCost(100, 80, costmap_2d::NO_INFORMATION);
  const Costmap2D whole = KnownMap(map_).WholeMap();
  EXPECT_EQ(whole.getCost(100, 80), costmap_2d::NO_INFORMATION);
  EXPECT_FALSE(whole.IsLethalObstacle(100, 80));
  EXPECT_EQ(whole.getCost(101, 80), costmap_2d::FREE_SPACE);
}

TEST_F(LocalMap, FarAwayEverythingIsAnObstacle) {
  for (const double far : {1e6, -1e9, 1e12, 1e300}) {
    const Costmap2D local = KnownMap(map_).LocalMapAround({far, 1.0});
    EXPECT_EQ(local.getCost(0, 0), costmap_2d::LETHAL_OBSTACLE) << far;
    EXPECT_EQ(local.getCost(60, 60), costmap_2d::LETHAL_OBSTACLE) << far;
  }
}

// Large enough to be inflated stripe by stripe: with and without the map's other half, its cells cost the same.
TEST(WholeMap, CostsTheSameInStripesAsInOnePiece) {
  constexpr unsigned int kSide = 2400;
  constexpr unsigned int kPart = 400;
  Costmap2D map(kSide, kSide, 0.05, 0.0, 0.0);
  Costmap2D part(kSide, kPart, 0.05, 0.0, 0.0);  // rows from 600 on
  unsigned int random = 1;
  for (int i = 0; i < 20000; ++i) {
    random = random * 1664525U + 1013904223U;
    const unsigned int mx = (random >> 8U) % kSide;
    random = random * 1664525U + 1013904223U;
    const unsigned int my = (random >> 8U) % kSide;
    map.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
    if (my >= 600 && my < 600 + kPart) {
      part.setCost(mx, my - 600, costmap_2d::LETHAL_OBSTACLE);
    }
  }
  std::vector<std::string> steps;
  const Costmap2D whole = KnownMap(map).WholeMap([&](const std::string& step) { steps.push_back(step); });
  EXPECT_GE(steps.size(), 3U);
  EXPECT_EQ(steps.front(), "inflating the map: 0 %");
  const Costmap2D in_one_piece = KnownMap(part).WholeMap();
  for (unsigned int my = 25; my < kPart - 25; ++my) {  // an obstacle costs 1.02 m around it
    for (unsigned int mx = 0; mx < kSide; ++mx) {
      ASSERT_EQ(whole.getCost(mx, 600 + my), in_one_piece.getCost(mx, my)) << mx << " " << my;
    }
  }
}

TEST(WholeMap, MayBeInterrupted) {
  const Costmap2D map(100, 100, 0.05, 0.0, 0.0);
  EXPECT_THROW(KnownMap(map).WholeMap([](const std::string&) { throw Interrupted(); }), Interrupted);
}

}  // namespace
}  // namespace controller_base::simulation
