#include "robot/robot_map.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "follower/inflation.h"
#include "robot/occupancy_map.h"

namespace controller_base_test {
namespace {

using controller_base::follower::Inflation;
using controller_base::follower::VirtualBox;
using controller_base::robot::Grid;
using controller_base::robot::GridBytes;
using controller_base::robot::kFree;
using controller_base::robot::kLethal;
using controller_base::robot::kUnknown;
using controller_base::robot::RobotMap;
using nav_core::math::Vec2d;

constexpr double kRadius = 0.17;     // m
constexpr double kLocalSide = 4.0;   // m
constexpr double kResolution = 0.1;  // m

// 10 m x 4 m, (0, 0) at its lower left corner.
GridBytes FreeMap() {
  GridBytes map{{100, 40, kResolution, 0.0, 0.0}, {}};
  map.bytes.assign(map.grid.cells(), kFree);
  return map;
}

std::uint8_t ByteAt(const GridBytes& bytes, double x, double y) {
  return bytes.bytes.at(bytes.grid.IndexAt(x, y).value());
}

// A single ray from `x`, `y` along the x axis that hits something at `range`.
void SeeAt(RobotMap* map, double x, double y, float range) {
  sensor_msgs::LaserScan scan;
  scan.range_max = 6.0F;
  scan.angle_increment = 0.1F;
  scan.ranges = {range};
  geometry_msgs::Pose laser;
  laser.position.x = x;
  laser.position.y = y;
  laser.orientation.w = 1.0;
  map->AddScan(scan, laser);
}

TEST(RobotMap, InflatesAsTheFollowerWantsIt) {
  GridBytes bytes = FreeMap();
  bytes.bytes[bytes.grid.Index(50, 20)] = kLethal;
  RobotMap map(bytes, kRadius, kLocalSide);
  const GridBytes& costs = map.LocalAround(5.0, 2.0).costs;
  const Inflation inflation(kResolution, kRadius);
  for (int dx = -8; dx <= 8; ++dx) {
    for (int dy = -8; dy <= 8; ++dy) {
      EXPECT_EQ(ByteAt(costs, 5.05 + dx * kResolution, 2.05 + dy * kResolution),
                inflation.CostAt(std::hypot(dx, dy) * kResolution))
          << dx << ", " << dy;
    }
  }
}

// A mark lies on a surface already; half of its cell is not added to it.
TEST(RobotMap, KeepsTheRobotHalfACellLessAwayFromMarksThanFromWalls) {
  GridBytes bytes = FreeMap();
  bytes.bytes[bytes.grid.Index(50, 10)] = kLethal;
  RobotMap map(bytes, kRadius, kLocalSide);
  SeeAt(&map, 4.0, 2.05, 1.05F);
  const GridBytes& costs = map.LocalAround(5.0, 2.0).costs;
  EXPECT_EQ(ByteAt(costs, 5.25, 1.05), 253);  // 0.2 m from the wall's cell
  EXPECT_LT(ByteAt(costs, 5.25, 2.05), 253);  // and from the mark
  EXPECT_EQ(ByteAt(costs, 5.15, 2.05), 253);
}

TEST(RobotMap, KeepsTheRobotOffWhatLiesJustBesideTheLocalMap) {
  GridBytes bytes = FreeMap();
  for (int my = 0; my < 40; ++my) {
    bytes.bytes[bytes.grid.Index(70, my)] = kLethal;  // the first column beyond the local map
  }
  RobotMap map(bytes, kRadius, kLocalSide);
  EXPECT_EQ(ByteAt(map.LocalAround(5.0, 2.0).costs, 6.95, 2.0), 253);
}

TEST(RobotMap, EverythingOffTheMapIsAnObstacle) {
  RobotMap map(FreeMap(), kRadius, kLocalSide);
  EXPECT_EQ(ByteAt(map.LocalAround(0.5, 2.0).costs, -0.5, 2.0), kLethal);
  EXPECT_THAT(map.LocalAround(1e300, 2.0).costs.bytes, testing::Each(kLethal));
}

TEST(RobotMap, TheUnknownStaysUnknownUntilTheLaserSeesSomethingThere) {
  GridBytes bytes = FreeMap();
  bytes.bytes[bytes.grid.Index(60, 20)] = kUnknown;
  RobotMap map(bytes, kRadius, kLocalSide);
  EXPECT_EQ(ByteAt(map.LocalAround(5.0, 2.0).costs, 6.05, 2.05), kUnknown);
  SeeAt(&map, 5.0, 2.05, 1.05F);
  EXPECT_EQ(ByteAt(map.LocalAround(5.0, 2.0).costs, 6.05, 2.05), kLethal);
  EXPECT_NE(ByteAt(map.LocalAround(5.0, 2.0).marks, 6.05, 2.05), 0);
}

TEST(RobotMap, MovesTheLocalMapWithTheRobotInSteps) {
  RobotMap map(FreeMap(), kRadius, kLocalSide);
  const double origin = map.LocalAround(5.0, 2.0).costs.grid.origin_x;
  EXPECT_EQ(map.LocalAround(5.0 + 0.5, 2.0).costs.grid.origin_x, origin);
  EXPECT_NEAR(map.LocalAround(5.0 + 0.61, 2.0).costs.grid.origin_x, origin + 0.6, 1e-9);
}

TEST(RobotMap, ForgetsWhatTheLaserSaw) {
  RobotMap map(FreeMap(), kRadius, kLocalSide);
  SeeAt(&map, 5.0, 2.05, 1.05F);
  map.Forget();
  EXPECT_EQ(ByteAt(map.LocalAround(5.0, 2.0).costs, 6.05, 2.05), kFree);
}

// A wall across the map with a passage below and one above.
GridBytes TwoPassages() {
  GridBytes bytes = FreeMap();
  for (int my = 0; my < 40; ++my) {
    const bool is_passage = (my > 2 && my < 10) || (my > 28 && my < 36);
    bytes.bytes[bytes.grid.Index(50, my)] = is_passage ? kFree : kLethal;
  }
  return bytes;
}

double HighestOf(const nav_msgs::Path& path) {
  double highest = 0.0;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    highest = std::max(highest, pose.pose.position.y);
  }
  return highest;
}

TEST(RobotMap, PlansAroundWhatTheLaserSeesAndAroundBoxes) {
  const Vec2d start(4.0, 0.65);
  const Vec2d goal(6.0, 0.65);
  RobotMap map(TwoPassages(), kRadius, kLocalSide);
  EXPECT_LT(HighestOf(map.SearchPath(start, goal)), 1.0);
  EXPECT_LT(HighestOf(map.SearchPathAround({}, start, goal)), 1.0);

  std::vector<VirtualBox> boxes;
  for (double y = 0.3; y < 1.05; y += 0.1) {
    boxes.emplace_back();
    boxes.back().center.x = 5.05;
    boxes.back().center.y = y;
    boxes.back().heading = 1.5707963267948966;  // along y
  }
  EXPECT_GT(HighestOf(map.SearchPathAround(boxes, start, goal)), 2.8);

  for (double y = 0.35; y < 1.0; y += 0.1) {
    SeeAt(&map, 4.0, y, 1.05F);
  }
  EXPECT_GT(HighestOf(map.SearchPathAround({}, start, goal)), 2.8);
  EXPECT_LT(HighestOf(map.SearchPath(start, goal)), 1.0);
}

}  // namespace
}  // namespace controller_base_test
