#include "robot/stock_costs.h"

#include <costmap_2d/costmap_2d.h>
#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "controller_base/local_map_obstacle.h"
#include "controller_base/local_path_smoother.h"
#include "controller_base/local_planner.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/ros_environment.h"

namespace controller_base_test {
namespace {

using controller_base::robot::ReadStockCosts;
using costmap_2d::Costmap2D;
using nav_controller::LocalMapObstacle;
using nav_controller::LocalPathSmoother;
using nav_controller::LocalPlanner;

constexpr int kInscribed = 253;
constexpr int kLethal = 254;
constexpr int kUnknown = 255;

std::vector<std::uint8_t> Read(const std::vector<std::uint8_t>& stock, unsigned int size_x) {
  std::vector<std::uint8_t> costs;
  ReadStockCosts(stock.data(), size_x, static_cast<unsigned int>(stock.size()) / size_x, &costs);
  return costs;
}

TEST(ReadStockCosts, FreeIsTheLowestCost) { EXPECT_EQ(Read({0}, 1), std::vector<std::uint8_t>({1})); }

TEST(ReadStockCosts, AMapWithoutCellsStaysOne) {
  std::vector<std::uint8_t> costs(7);
  ReadStockCosts(nullptr, 0, 0, &costs);
  EXPECT_TRUE(costs.empty());
}

TEST(ReadStockCosts, CostsAwayFromObstaclesKeepTheirOrderBelowTheRing) {
  std::vector<std::uint8_t> stock;
  for (int cost = 0; cost <= 252; ++cost) {
    stock.push_back(static_cast<std::uint8_t>(cost));
  }
  const std::vector<std::uint8_t> costs = Read(stock, 253);
  EXPECT_EQ(costs.front(), 1);
  EXPECT_EQ(costs.back(), 93);
  EXPECT_TRUE(std::is_sorted(costs.begin(), costs.end()));
}

TEST(ReadStockCosts, InTheRingTheyKeepTheirOrderBetween94And127) {
  EXPECT_EQ(Read({254, 0}, 2), std::vector<std::uint8_t>({254, 94}));
  EXPECT_EQ(Read({253, 126}, 2), std::vector<std::uint8_t>({253, 110}));
  EXPECT_EQ(Read({255, 252}, 2), std::vector<std::uint8_t>({255, 127}));
}

TEST(ReadStockCosts, ALethalCellWithoutInflationGetsARingWithItsCorners) {
  EXPECT_EQ(Read({0, 0, 0,   0, 0,  //
                  0, 0, 0,   0, 0,  //
                  0, 0, 254, 0, 0,  //
                  0, 0, 0,   0, 0,  //
                  0, 0, 0,   0, 0},
                 5),
            std::vector<std::uint8_t>({1, 1,  1,   1,  1,  //
                                       1, 94, 94,  94, 1,  //
                                       1, 94, 254, 94, 1,  //
                                       1, 94, 94,  94, 1,  //
                                       1, 1,  1,   1,  1}));
}

// The costs of the stock inflation layer: 254 on them, 253 within the inscribed radius, beyond it an
// exponential that falls with the distance, and nothing beyond the inflation radius.
struct Inflation {
  double resolution;         // m
  double inscribed_radius;   // m
  double inflation_radius;   // m
  double scaling_per_metre;  // cost_scaling_factor
};

std::uint8_t StockCostAt(const Inflation& inflation, double distance) {
  if (distance <= 0.0) {
    return kLethal;
  }
  if (distance > inflation.inflation_radius) {
    return 0;
  }
  if (distance <= inflation.inscribed_radius) {
    return kInscribed;
  }
  return static_cast<std::uint8_t>(252.0 *
                                   std::exp(-inflation.scaling_per_metre * (distance - inflation.inscribed_radius)));
}

Inflation RandomInflation() {
  return {*rc::gen::element(0.02, 0.025, 0.04, 0.05, 0.075, 0.1), *rc::gen::element(0.0, 0.05, 0.17, 0.3),
          *rc::gen::element(0.0, 0.05, 0.2, 0.45, 1.0),
          *rc::gen::map(rc::gen::inRange(1, 101), [](int factor) { return static_cast<double>(factor); })};
}

std::uint8_t RandomGround() {
  return *rc::gen::weightedElement<std::uint8_t>(
      {{180, std::uint8_t{0}}, {3, std::uint8_t{254}}, {1, std::uint8_t{255}}});
}

constexpr int kSide = 40;  // cells

struct StockMap {
  double resolution;
  std::vector<std::uint8_t> bytes;
};

StockMap RandomStockMap() {
  const Inflation inflation = RandomInflation();
  StockMap map{inflation.resolution, std::vector<std::uint8_t>(kSide * kSide)};
  std::vector<int> lethal;
  for (int cell = 0; cell < kSide * kSide; ++cell) {
    map.bytes[static_cast<std::size_t>(cell)] = RandomGround();
    if (map.bytes[static_cast<std::size_t>(cell)] == kLethal) {
      lethal.push_back(cell);
    }
  }
  for (int cell = 0; cell < kSide * kSide; ++cell) {
    std::uint8_t& byte = map.bytes[static_cast<std::size_t>(cell)];
    for (const int other : lethal) {
      const double distance = map.resolution * std::hypot(cell % kSide - other % kSide, cell / kSide - other / kSide);
      const std::uint8_t cost = StockCostAt(inflation, distance);
      byte = byte == kUnknown && cost < kInscribed ? byte : byte == kUnknown ? cost : std::max(byte, cost);
    }
  }
  return map;
}

Costmap2D ToMap(const StockMap& stock) {
  const std::vector<std::uint8_t> costs = Read(stock.bytes, kSide);
  Costmap2D map(kSide, kSide, stock.resolution, 0.0, 0.0);
  for (unsigned int cell = 0; cell < costs.size(); ++cell) {
    map.setCost(cell % kSide, cell / kSide, costs[cell]);
  }
  return map;
}

bool IsClosed(const Costmap2D& map, int mx, int my) {
  return map.IsInmap(mx, my) && map.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) >= kInscribed;
}

bool HasClosedNeighbour(const Costmap2D& map, int mx, int my) {
  for (int cell = 0; cell < 9; ++cell) {
    if (IsClosed(map, mx + cell % 3 - 1, my + cell / 3 - 1)) {
      return true;
    }
  }
  return false;
}

TEST(ReadStockCosts, EveryStockInflationBecomesCostsThatTheLibraryReadsRightly) {
  EXPECT_TRUE(rc::check([] {
    const StockMap stock = RandomStockMap();
    const Costmap2D map = ToMap(stock);
    for (int cell = 0; cell < kSide * kSide; ++cell) {
      const int mx = cell % kSide;
      const int my = cell / kSide;
      const int byte = stock.bytes[static_cast<std::size_t>(cell)];
      const int cost = map.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
      if (byte >= kInscribed) {
        RC_ASSERT(cost == byte);
      } else {
        RC_ASSERT(cost >= 1);
        RC_ASSERT(cost <= 127);
        RC_ASSERT(cost >= 94 || !HasClosedNeighbour(map, mx, my));
      }
    }
  }));
}

// The cells of the line by its textbook rule, with an error term of its own.
std::vector<int> CostsOnLine(const Costmap2D& map, int x, int y, int end_x, int end_y) {
  const int dx = std::abs(end_x - x);
  const int dy = std::abs(end_y - y);
  std::vector<int> costs;
  for (int error = dx - dy;;) {
    costs.push_back(map.getCost(static_cast<unsigned int>(x), static_cast<unsigned int>(y)));
    if (x == end_x && y == end_y) {
      return costs;
    }
    const int twice = 2 * error;
    if (twice >= -dy) {
      error -= dy;
      x += x < end_x ? 1 : -1;
    }
    if (twice <= dx) {
      error += dx;
      y += y < end_y ? 1 : -1;
    }
  }
}

void AssertCrossesNothingClosed(const Costmap2D& map, const geometry_msgs::PoseStamped& from,
                                const geometry_msgs::PoseStamped& to) {
  unsigned int from_x = 0, from_y = 0, to_x = 0, to_y = 0;
  RC_ASSERT(map.worldToMap(from.pose.position.x, from.pose.position.y, from_x, from_y));
  RC_ASSERT(map.worldToMap(to.pose.position.x, to.pose.position.y, to_x, to_y));
  for (const int cost : CostsOnLine(map, static_cast<int>(from_x), static_cast<int>(from_y), static_cast<int>(to_x),
                                    static_cast<int>(to_y))) {
    RC_ASSERT(cost < kInscribed);
  }
}

geometry_msgs::PoseStamped RandomOpenPose(const Costmap2D& map) {
  for (;;) {
    const int mx = *rc::gen::inRange(0, kSide);
    const int my = *rc::gen::inRange(0, kSide);
    if (!IsClosed(map, mx, my)) {
      const geometry_msgs::Point center = CenterOf(map, static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
      return PoseAt(center.x, center.y);
    }
    RC_PRE(*rc::gen::inRange(0, 200) > 0);  // a map that is closed nearly everywhere is given up
  }
}

TEST(ReadStockCosts, NoLineThatTheSmootherTakesCrossesAClosedCell) {
  const LocalMapObstacle no_boxes;
  int taken = 0;
  EXPECT_TRUE(rc::check([&] {
    const Costmap2D map = ToMap(RandomStockMap());
    for (int line = 0; line < 20; ++line) {
      const geometry_msgs::PoseStamped from = RandomOpenPose(map);
      const geometry_msgs::PoseStamped to = RandomOpenPose(map);
      if (LocalPathSmoother::IsLineExtraObstacleFree(&map, no_boxes, from, to)) {
        AssertCrossesNothingClosed(map, from, to);
        ++taken;
      }
    }
  }));
  EXPECT_GT(taken, 100);
}

TEST(ReadStockCosts, NoSmoothedDetourCrossesAClosedCell) {
  LocalPlanner planner(false);
  int found = 0;
  EXPECT_TRUE(rc::check([&] {
    const Costmap2D map = ToMap(RandomStockMap());
    nav_msgs::Path path;
    path.poses = {RandomOpenPose(map), RandomOpenPose(map)};
    const std::optional<nav_msgs::Path> detour =
        planner.CreatePlan(&map, nullptr, path.poses.front(), path, /*smooth=*/true);
    RC_PRE(detour.has_value());
    ++found;
    for (std::size_t i = 1; i < detour->poses.size(); ++i) {
      // The search may pass unknown cells, which the library does not count as closed; a line across them is a step.
      if (std::abs(detour->poses[i].pose.position.x - detour->poses[i - 1].pose.position.x) <
              1.5 * map.getResolution() &&
          std::abs(detour->poses[i].pose.position.y - detour->poses[i - 1].pose.position.y) <
              1.5 * map.getResolution()) {
        continue;
      }
      AssertCrossesNothingClosed(map, detour->poses[i - 1], detour->poses[i]);
    }
  }));
  EXPECT_GT(found, 20);
}

}  // namespace
}  // namespace controller_base_test
