// Is a path or a line blocked, where, and on both sides?
#include "controller_base/obstacle_blocking_analyzer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "test/support/generators.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;
using geometry_msgs::Point;
using geometry_msgs::PoseStamped;
using nav_controller::CalculatePerpendicularPoints;
using nav_controller::FindObstacleSegment;
using nav_controller::IsBilateralObstacle;
using nav_controller::IsBlockingBetweenPoints;
using nav_controller::IsBlockingLaserBetweenPoints;
using nav_controller::IsBlockingPathInflateObstacle;
using nav_controller::IsBlockingPathLaserObstacle;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using AskPath = bool (*)(const Costmap2D*, const nav_msgs::Path&);
using AskLine = bool (*)(const Costmap2D*, const Point&, const Point&);
static_assert(std::is_same_v<decltype(&IsBlockingPathInflateObstacle), AskPath>);
static_assert(std::is_same_v<decltype(&IsBlockingPathLaserObstacle), AskPath>);
static_assert(std::is_same_v<decltype(&IsBilateralObstacle), AskPath>);
static_assert(std::is_same_v<decltype(&IsBlockingBetweenPoints), AskLine>);
static_assert(std::is_same_v<decltype(&IsBlockingLaserBetweenPoints), AskLine>);
static_assert(
    std::is_same_v<decltype(&FindObstacleSegment), nav_msgs::Path (*)(const Costmap2D*, const nav_msgs::Path&)>);
static_assert(std::is_same_v<decltype(&CalculatePerpendicularPoints),
                             std::pair<Point, Point> (*)(const PoseStamped&, const PoseStamped&, double)>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Cell {
  int x;
  int y;
};

bool operator==(const Cell& a, const Cell& b) { return a.x == b.x && a.y == b.y; }
std::ostream& operator<<(std::ostream& out, const Cell& cell) { return out << "(" << cell.x << ", " << cell.y << ")"; }

// The cells of a grid line, each on its own: the i-th step along the longer axis has gone sideways as often as `longer`
// fits into half of it plus i times the shorter.
std::vector<Cell> SlowLine(const Cell& start, const Cell& end) {
  const int dx = std::abs(end.x - start.x);
  const int dy = std::abs(end.y - start.y);
  const int toward_x = start.x > end.x ? -1 : 1;
  const int toward_y = start.y > end.y ? -1 : 1;
  const int longer = std::max(dx, dy);
  std::vector<Cell> cells = {start};
  for (int i = 1; i <= longer; ++i) {
    const int aside = (longer / 2 + i * std::min(dx, dy)) / longer;
    cells.push_back(dx >= dy ? Cell{start.x + toward_x * i, start.y + toward_y * aside}
                             : Cell{start.x + toward_x * aside, start.y + toward_y * i});
  }
  return cells;
}

bool Holds(const std::vector<Cell>& cells, const Cell& cell) {
  return std::find(cells.begin(), cells.end(), cell) != cells.end();
}

Point CenterOf(const Costmap2D& map, const Cell& cell) {
  return controller_base_test::CenterOf(map, static_cast<unsigned int>(cell.x), static_cast<unsigned int>(cell.y));
}

// A path through the centres of these cells.
nav_msgs::Path PathThrough(const Costmap2D& map, const std::vector<Cell>& cells) {
  std::vector<Xy> points;
  for (const Cell& cell : cells) {
    const Point center = CenterOf(map, cell);
    points.push_back({center.x, center.y});
  }
  return PathOf(points);
}

int Signed(int byte) { return byte < 128 ? byte : byte - 256; }

// The 9 x 9 map of the line tests, and every pair of its cells.
constexpr int kSide = 9;

Costmap2D NineByNine() { return Costmap2D(kSide, kSide, 0.05, -0.2, 0.3); }

std::vector<Cell> AllCells() {
  std::vector<Cell> cells;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      cells.push_back({x, y});
    }
  }
  return cells;
}

void Put(Costmap2D& map, const Cell& cell, unsigned char cost, bool laser) {
  map.setCost(static_cast<unsigned int>(cell.x), static_cast<unsigned int>(cell.y), cost);
  map.SetLaserObstacle(static_cast<unsigned int>(cell.x), static_cast<unsigned int>(cell.y), laser);
}

class ObstacleBlockingTest : public testing::Test {
 protected:
  LogCapture log_;
};

TEST(SlowLineOfTheTests, TakesTheKnownCells) {
  EXPECT_THAT(SlowLine({0, 0}, {3, 1}), ElementsAre(Cell{0, 0}, Cell{1, 0}, Cell{2, 1}, Cell{3, 1}));
  EXPECT_THAT(SlowLine({0, 0}, {1, 2}), ElementsAre(Cell{0, 0}, Cell{1, 1}, Cell{1, 2}));
  EXPECT_THAT(SlowLine({1, 2}, {0, 0}), ElementsAre(Cell{1, 2}, Cell{0, 1}, Cell{0, 0}));
  EXPECT_THAT(SlowLine({4, 4}, {4, 4}), ElementsAre(Cell{4, 4}));
}

TEST_F(ObstacleBlockingTest, TheLineFromTheOriginToThreeOneTestsItsFourCellsInOrder) {
  Costmap2D map(5, 5, 1.0, 0.0, 0.0);
  Put(map, {0, 0}, 1, false);
  Put(map, {1, 0}, 2, false);
  Put(map, {2, 1}, 3, false);
  Put(map, {3, 1}, 4, false);
  EXPECT_FALSE(IsBlockingLaserBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(3.5, 1.5)));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: , 1, 2, 3, 4")));
}

TEST_F(ObstacleBlockingTest, TheLaserLineVisitsTheCellsOfEveryPairInOrder) {
  Costmap2D map = NineByNine();
  const std::vector<Cell> cells = AllCells();
  const auto byte_of = [](const Cell& cell) { return 3 * (kSide * cell.y + cell.x); };  // all different, 0 .. 240
  for (const Cell& cell : cells) {
    Put(map, cell, static_cast<unsigned char>(byte_of(cell)), false);
  }
  for (const Cell& start : cells) {
    for (const Cell& end : cells) {
      std::string costs;
      for (const Cell& cell : SlowLine(start, end)) {
        costs += ", " + std::to_string(Signed(byte_of(cell)));
      }
      log_.Clear();
      ASSERT_FALSE(IsBlockingLaserBetweenPoints(&map, CenterOf(map, start), CenterOf(map, end)));
      ASSERT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: " + costs))) << start << " to " << end;
    }
  }
}

TEST_F(ObstacleBlockingTest, OneObstacleBlocksExactlyTheLinesThroughItsCell) {
  const LogCapture from_info(ros::console::levels::Info);
  const std::vector<Cell> cells = AllCells();
  for (const Cell& obstacle : cells) {
    Costmap2D lethal = NineByNine();
    Put(lethal, obstacle, costmap_2d::LETHAL_OBSTACLE, false);
    Costmap2D laser = NineByNine();
    Put(laser, obstacle, costmap_2d::FREE_SPACE, true);
    for (const Cell& start : cells) {
      for (const Cell& end : cells) {
        const Point from = CenterOf(lethal, start);
        const Point to = CenterOf(lethal, end);
        const bool crossed = Holds(SlowLine(start, end), obstacle);
        ASSERT_EQ(IsBlockingBetweenPoints(&lethal, from, to), crossed) << start << " to " << end << ", " << obstacle;
        ASSERT_EQ(IsBlockingLaserBetweenPoints(&laser, from, to), crossed)
            << start << " to " << end << ", " << obstacle;
        ASSERT_FALSE(IsBlockingBetweenPoints(&laser, from, to));
        ASSERT_FALSE(IsBlockingLaserBetweenPoints(&lethal, from, to));
      }
    }
  }
}

TEST_F(ObstacleBlockingTest, LongLinesOnALargeMapTakeTheirCells) {
  Costmap2D map(300, 70, 0.05, 0.0, 0.0);
  const std::vector<std::pair<Cell, Cell>> lines = {
      {{0, 0}, {299, 69}}, {{299, 0}, {0, 69}}, {{7, 69}, {290, 1}}, {{250, 3}, {200, 68}}, {{0, 5}, {299, 5}}};
  for (const auto& [start, end] : lines) {
    for (const Cell& cell : SlowLine(start, end)) {
      Put(map, cell, 254, false);
      ASSERT_TRUE(IsBlockingBetweenPoints(&map, CenterOf(map, start), CenterOf(map, end)));
      Put(map, cell, 0, false);
    }
    ASSERT_FALSE(IsBlockingBetweenPoints(&map, CenterOf(map, start), CenterOf(map, end)));
  }
}

TEST_F(ObstacleBlockingTest, ALineInsideOneCellTestsThatCell) {
  const Costmap2D map = MapFromText({"...",  //
                                     ".X.",  //
                                     "..."},
                                    1.0);
  EXPECT_TRUE(IsBlockingBetweenPoints(&map, PointAt(1.1, 1.1), PointAt(1.9, 1.9)));
  EXPECT_TRUE(IsBlockingLaserBetweenPoints(&map, PointAt(1.5, 1.5), PointAt(1.5, 1.5)));
  EXPECT_FALSE(IsBlockingBetweenPoints(&map, PointAt(0.1, 1.1), PointAt(0.9, 1.9)));
  log_.Clear();
  EXPECT_FALSE(IsBlockingLaserBetweenPoints(&map, PointAt(2.5, 1.5), PointAt(2.5, 1.5)));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: , 0")));
}

TEST_F(ObstacleBlockingTest, LethalIsInscribedOrLethalAndNothingElse) {
  Costmap2D map(3, 1, 1.0, 0.0, 0.0);
  for (int byte = 0; byte < 256; ++byte) {
    Put(map, {1, 0}, static_cast<unsigned char>(byte), true);
    EXPECT_EQ(IsBlockingBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(2.5, 0.5)), byte == 253 || byte == 254) << byte;
    EXPECT_EQ(IsBlockingPathInflateObstacle(&map, PathOf({{1.5, 0.5}})), byte == 253 || byte == 254) << byte;
  }
}

TEST_F(ObstacleBlockingTest, EveryCostPrintsAsASignedByte) {
  Costmap2D map(1, 1, 1.0, 0.0, 0.0);
  for (int byte = 0; byte < 256; ++byte) {
    Put(map, {0, 0}, static_cast<unsigned char>(byte), false);
    log_.Clear();
    EXPECT_FALSE(IsBlockingLaserBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(0.5, 0.5)));
    EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: , " + std::to_string(Signed(byte)))));
  }
}

TEST_F(ObstacleBlockingTest, InscribedPrintsAsMinusThree) {
  const Costmap2D map = MapFromText({".i#?hn"}, 1.0);
  EXPECT_FALSE(IsBlockingLaserBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(5.5, 0.5)));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: , 0, -3, -2, -1, 127, -128")));
}

TEST_F(ObstacleBlockingTest, AFoundLaserCellIsLoggedWithTheStartPointAlone) {
  const Costmap2D map = MapFromText({"..LL"}, 1.0);
  EXPECT_TRUE(IsBlockingLaserBetweenPoints(&map, PointAt(0.126, 0.5), PointAt(3.5, 0.5)));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("IsLaserObstacle: (0.13,0.50)")));
}

TEST_F(ObstacleBlockingTest, ALineWithAnEndOffTheMapIsNotBlocked) {
  const Costmap2D map = MapFromText({"XXX"}, 1.0);
  const Point on_map = PointAt(1.5, 0.5);
  for (const Point& off_map :
       {PointAt(-0.1, 0.5), PointAt(3.0, 0.5), PointAt(1.5, 1.0), PointAt(1.5, -1e-9), PointAt(kNan, 0.5),
        PointAt(1.5, kNan), PointAt(kInfinity, 0.5), PointAt(1.5, -kInfinity), PointAt(1e308, 1e308)}) {
    for (const auto& [start, end] :
         {std::pair(on_map, off_map), std::pair(off_map, on_map), std::pair(off_map, off_map)}) {
      EXPECT_FALSE(IsBlockingBetweenPoints(&map, start, end));
      log_.Clear();
      EXPECT_FALSE(IsBlockingLaserBetweenPoints(&map, start, end));
      EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: ")));
    }
  }
}

TEST_F(ObstacleBlockingTest, PointsOnTheMapsEdgesTakeTheCellsTheyBegin) {
  const Costmap2D map = MapFromText({"..#",  //
                                     "#.."},
                                    1.0);
  EXPECT_TRUE(IsBlockingBetweenPoints(&map, PointAt(0, 0), PointAt(0, 0)));
  EXPECT_TRUE(IsBlockingBetweenPoints(&map, PointAt(2, 1), PointAt(2, 1)));
  EXPECT_FALSE(IsBlockingBetweenPoints(&map, PointAt(1, 0), PointAt(1, 0)));
}

TEST_F(ObstacleBlockingTest, HeightIsIgnored) {
  const Costmap2D map = MapFromText({".X."}, 1.0);
  EXPECT_TRUE(IsBlockingBetweenPoints(&map, PointAt(0.5, 0.5, 100), PointAt(2.5, 0.5, kNan)));
  nav_msgs::Path path = PathOf({{0.5, 0.5}, {1.5, 0.5}});
  path.poses[1].pose.position.z = kNan;
  path.poses[1].pose.orientation = QuaternionOf(kNan, kNan, kNan, kNan);
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, path));
  EXPECT_TRUE(IsBlockingPathLaserObstacle(&map, path));
}

TEST_F(ObstacleBlockingTest, TheLethalLineLogsNothing) {
  const Costmap2D map = MapFromText({"..#."}, 1.0);
  EXPECT_TRUE(IsBlockingBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(3.5, 0.5)));
  EXPECT_FALSE(IsBlockingBetweenPoints(&map, PointAt(0.5, 0.5), PointAt(1.5, 0.5)));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(ObstacleBlockingTest, WithoutAMapOrPosesNoPathIsBlocked) {
  const Costmap2D map = MapFromText({"XXX"}, 1.0);
  const nav_msgs::Path path = PathOf({{0.5, 0.5}, {1.5, 0.5}});
  EXPECT_FALSE(IsBlockingPathInflateObstacle(nullptr, path));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(nullptr, path));
  EXPECT_FALSE(IsBlockingPathInflateObstacle(nullptr, nav_msgs::Path()));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(nullptr, nav_msgs::Path()));
  EXPECT_FALSE(IsBlockingPathInflateObstacle(&map, nav_msgs::Path()));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(&map, nav_msgs::Path()));
  EXPECT_FALSE(IsBilateralObstacle(&map, nav_msgs::Path()));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(ObstacleBlockingTest, ALethalCellUnderAnyPoseBlocksThePath) {
  const Costmap2D map = MapFromText({"..#.."}, 1.0);
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, PathThrough(map, {{0, 0}, {1, 0}, {2, 0}})));
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, PathThrough(map, {{2, 0}, {3, 0}})));
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, PathThrough(map, {{2, 0}})));
  EXPECT_FALSE(IsBlockingPathInflateObstacle(&map, PathThrough(map, {{0, 0}, {1, 0}, {3, 0}, {4, 0}})));
}

TEST_F(ObstacleBlockingTest, ABlockedPathIsLoggedOncePerCall) {
  const Costmap2D map = MapFromText({"###.."}, 1.0);
  const nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {2, 0}});
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, path));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("IsBlockingPathInflateObstacle: path check failed")));
  EXPECT_FALSE(IsBlockingPathInflateObstacle(&map, PathThrough(map, {{3, 0}})));
  EXPECT_THAT(log_.Lines(), SizeIs(1));
}

TEST_F(ObstacleBlockingTest, PosesOffTheMapAreSkipped) {
  const Costmap2D map = MapFromText({"..#"}, 1.0);
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, PathOf({{-5, 0}, {kNan, 0.5}, {kInfinity, 0}, {2.5, 0.5}})));
  EXPECT_FALSE(IsBlockingPathInflateObstacle(&map, PathOf({{-5, 0}, {kNan, 0.5}, {3.0, 0.5}, {1.5, 0.5}})));
}

TEST_F(ObstacleBlockingTest, ALethalFirstPoseIsNoLaserBlock) {
  const Costmap2D map = MapFromText({"X..."}, 1.0);
  const nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {2, 0}});
  EXPECT_TRUE(IsBlockingPathInflateObstacle(&map, path));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(&map, path));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(&map, PathThrough(map, {{0, 0}})));
}

TEST_F(ObstacleBlockingTest, ALaserBlockNeedsALethalPoseAndALaserCellOnTheWayToIt) {
  const auto blocked = [](const char* row, const std::vector<Cell>& cells) {
    const Costmap2D map = MapFromText({row}, 1.0);
    return IsBlockingPathLaserObstacle(&map, PathThrough(map, cells));
  };
  EXPECT_TRUE(blocked("..X", {{0, 0}, {2, 0}}));           // both in one cell
  EXPECT_TRUE(blocked(".L#", {{0, 0}, {2, 0}}));           // the laser cell between the poses
  EXPECT_TRUE(blocked("L.#", {{0, 0}, {2, 0}}));           // under the pose before
  EXPECT_FALSE(blocked("..#", {{0, 0}, {2, 0}}));          // no laser cell
  EXPECT_FALSE(blocked(".LL", {{0, 0}, {2, 0}}));          // no lethal pose
  EXPECT_FALSE(blocked("L.#", {{0, 0}, {1, 0}, {2, 0}}));  // the laser cell on an earlier stretch
  EXPECT_TRUE(blocked("#.#X", {{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
}

TEST_F(ObstacleBlockingTest, AStretchThatBeginsOffTheMapIsNoLaserBlock) {
  const Costmap2D map = MapFromText({"XX.X"}, 1.0);
  EXPECT_FALSE(IsBlockingPathLaserObstacle(&map, PathOf({{-0.5, 0.5}, {0.5, 0.5}})));
  EXPECT_TRUE(IsBlockingPathLaserObstacle(&map, PathOf({{-0.5, 0.5}, {0.5, 0.5}, {1.5, 0.5}})));
  EXPECT_FALSE(IsBlockingPathLaserObstacle(&map, PathOf({{3.5, 0.5}, {4.5, 0.5}, {kNan, kNan}})));
}

TEST_F(ObstacleBlockingTest, TheLaserTestLogsWhatItsLinesLog) {
  const Costmap2D map = MapFromText({".#.#X"}, 1.0);
  EXPECT_TRUE(IsBlockingPathLaserObstacle(&map, PathThrough(map, {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}})));
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("debug_str: , 0, -2"), Debug("debug_str: , 0, -2"),
                                        Debug("IsLaserObstacle: (3.50,0.50)")));
}

TEST_F(ObstacleBlockingTest, TheSegmentIsTheFirstRunOfLethalPoses) {
  const Costmap2D map = MapFromText({"...###...#"}, 1.0);
  nav_msgs::Path path =
      PathThrough(map, {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {8, 0}, {9, 0}});
  path.header.seq = 11;
  path.header.stamp = ros::Time(12, 13);
  path.header.frame_id = "somewhere";
  for (std::uint32_t i = 0; i < 10; ++i) {
    path.poses[i].header.seq = i;
  }
  const nav_msgs::Path segment = FindObstacleSegment(&map, path);
  EXPECT_EQ(segment.header, path.header);
  EXPECT_THAT(segment.poses, ElementsAre(path.poses[3], path.poses[4], path.poses[5]));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(ObstacleBlockingTest, ARunToThePathsEndIsReturnedWhole) {
  const Costmap2D map = MapFromText({"..##"}, 1.0);
  const nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {2, 0}, {3, 0}});
  EXPECT_THAT(FindObstacleSegment(&map, path).poses, ElementsAre(path.poses[2], path.poses[3]));
  const nav_msgs::Path all = PathThrough(map, {{2, 0}, {3, 0}});
  EXPECT_EQ(FindObstacleSegment(&map, all), all);
}

TEST_F(ObstacleBlockingTest, WithoutALethalPoseTheSegmentHasTheHeaderAlone) {
  const Costmap2D map = MapFromText({"...?n"}, 1.0);
  nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {3, 0}, {4, 0}});
  path.header.seq = 5;
  for (const nav_msgs::Path& asked : {path, PathOf({})}) {
    const nav_msgs::Path segment = FindObstacleSegment(&map, asked);
    EXPECT_EQ(segment.header, asked.header);
    EXPECT_THAT(segment.poses, IsEmpty());
  }
}

TEST_F(ObstacleBlockingTest, PosesOffTheMapAreSkippedBeforeTheRunAndEndIt) {
  const Costmap2D map = MapFromText({"###"}, 1.0);
  const nav_msgs::Path path = PathOf({{-2, 0}, {kNan, 0}, {0.5, 0.5}, {1.5, 0.5}, {9, 9}, {2.5, 0.5}});
  EXPECT_THAT(FindObstacleSegment(&map, path).poses, ElementsAre(path.poses[2], path.poses[3]));
}

TEST_F(ObstacleBlockingTest, ASegmentKeepsDuplicatePoses) {
  const Costmap2D map = MapFromText({".#."}, 1.0);
  const nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {1, 0}, {1, 0}, {2, 0}});
  EXPECT_THAT(FindObstacleSegment(&map, path).poses, SizeIs(3));
}

void ExpectAt(const Point& point, double x, double y) {
  EXPECT_NEAR(point.x, x, 1e-12);
  EXPECT_NEAR(point.y, y, 1e-12);
  EXPECT_EQ(point.z, 0.0);
}

TEST_F(ObstacleBlockingTest, TheFirstPerpendicularPointLiesToTheLeft) {
  const auto [left, right] = CalculatePerpendicularPoints(PoseAt(1, 2), PoseAt(5, 2), 0.2);
  ExpectAt(left, 3.0, 2.2);
  ExpectAt(right, 3.0, 1.8);
  const auto [left_back, right_back] = CalculatePerpendicularPoints(PoseAt(5, 2), PoseAt(1, 2), 0.2);
  ExpectAt(left_back, 3.0, 1.8);
  ExpectAt(right_back, 3.0, 2.2);
  const auto [left_up, right_up] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(0, 2), 0.5);
  ExpectAt(left_up, -0.5, 1.0);
  ExpectAt(right_up, 0.5, 1.0);
  const auto [left_slanting, right_slanting] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(3, 4), 5.0);
  ExpectAt(left_slanting, 1.5 - 4.0, 2.0 + 3.0);
  ExpectAt(right_slanting, 1.5 + 4.0, 2.0 - 3.0);
}

TEST_F(ObstacleBlockingTest, PerpendicularPointsIgnoreHeightAndHeading) {
  PoseStamped start = PoseAt(1, 2, 2.5);
  start.pose.position.z = 7;
  const auto [left, right] = CalculatePerpendicularPoints(start, PoseAt(5, 2, -1.0), 0.2);
  ExpectAt(left, 3.0, 2.2);
  ExpectAt(right, 3.0, 1.8);
}

TEST_F(ObstacleBlockingTest, PerpendicularPointsOfOnePlaceAreThatPlace) {
  const auto [left, right] = CalculatePerpendicularPoints(PoseAt(1, 2), PoseAt(1, 2), 0.2);
  EXPECT_EQ(left, PointAt(1, 2));
  EXPECT_EQ(right, PointAt(1, 2));
}

TEST_F(ObstacleBlockingTest, PerpendicularPointsTakeAnyDistance) {
  const auto [same, same_too] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(2, 0), 0.0);
  ExpectAt(same, 1, 0);
  ExpectAt(same_too, 1, 0);
  const auto [swapped, swapped_too] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(2, 0), -0.5);
  ExpectAt(swapped, 1, -0.5);
  ExpectAt(swapped_too, 1, 0.5);
  const auto [close, close_too] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(1e-300, 0), 0.5);
  ExpectAt(close, 0, 0.5);
  ExpectAt(close_too, 0, -0.5);
}

TEST_F(ObstacleBlockingTest, PerpendicularPointsAreLoggedAtInfo) {
  CalculatePerpendicularPoints(PoseAt(1.234, -2), PoseAt(5, 2.005), 0.2);
  EXPECT_THAT(log_.Lines(), ElementsAre(Info("start (1.23,-2.00), end (5.00,2.00), mid:(3.12,0.00)")));
  log_.Clear();
  CalculatePerpendicularPoints(PoseAt(1, 1), PoseAt(1, 1), 0.2);
  EXPECT_THAT(log_.Lines(), ElementsAre(Info("start (1.00,1.00), end (1.00,1.00), mid:(1.00,1.00)")));
}

TEST_F(ObstacleBlockingTest, PerpendicularPointsOfNoPlaceAreNoPlace) {
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    const auto [left, right] = CalculatePerpendicularPoints(PoseAt(0, 0), PoseAt(bad, 0), 0.2);
    EXPECT_FALSE(std::isfinite(left.x) && std::isfinite(left.y));
    EXPECT_FALSE(std::isfinite(right.x) && std::isfinite(right.y));
  }
}

// A path along x through a wall of 10 cm cells; its run lies on the middle row, the side points two rows up and down.
class BilateralTest : public testing::Test {
 protected:
  static constexpr double kCell = 0.1;  // metres

  static bool Bilateral(const std::vector<std::string>& rows, const std::vector<Cell>& cells) {
    const Costmap2D map = MapFromText(rows, kCell);
    return IsBilateralObstacle(&map, PathThrough(map, cells));
  }

  LogCapture log_;
};

TEST_F(BilateralTest, AWallThatReachesBothSidePointsIsBilateral) {
  const std::vector<Cell> along = {{0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {6, 3}};
  EXPECT_TRUE(Bilateral({"...#...",  //
                         "...#...",  //
                         "...#...",  //
                         "..###..",  //
                         "...#...",  //
                         "...#...",  //
                         "...#..."},
                        along));
  EXPECT_THAT(log_.Lines(), ElementsAre(Info("start (0.25,0.35), end (0.45,0.35), mid:(0.35,0.35)")));
}

TEST_F(BilateralTest, AFreeSidePointIsAWayRound) {
  const std::vector<Cell> along = {{0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {6, 3}};
  EXPECT_FALSE(Bilateral({"...#...",  //
                          ".......",  // the left side point is free
                          "...#...",  //
                          "..###..",  //
                          "...#...",  //
                          "...#...",  //
                          "...#..."},
                         along));
  EXPECT_FALSE(Bilateral({"...#...",  //
                          "...#...",  //
                          "...#...",  //
                          "..###..",  //
                          "...#...",  //
                          ".......",  // the right one
                          "...#..."},
                         along));
  EXPECT_FALSE(Bilateral({".......",  //
                          ".......",  //
                          ".......",  //
                          "..###..",  //
                          ".......",  //
                          ".......",  //
                          "......."},
                         along));
}

TEST_F(BilateralTest, OnlyTheSidePointsCellsCount) {
  const std::vector<Cell> along = {{0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {6, 3}};
  EXPECT_TRUE(Bilateral({".......",  //
                         "...i...",  // inscribed closes as well
                         ".......",  //
                         "..###..",  //
                         ".......",  //
                         "...#...",  //
                         "......."},
                        along));
  EXPECT_FALSE(Bilateral({".......",  //
                          "...?...",  // unknown and laser cells do not
                          ".......",  //
                          "..###..",  //
                          ".......",  //
                          "...L...",  //
                          "......."},
                         along));
}

TEST_F(BilateralTest, ARunOfOnePoseIsNot) {
  const std::vector<std::string> rows = {"..#..",  //
                                         "..#..",  //
                                         "..#..",  //
                                         "..#..",  //
                                         "..#.."};
  EXPECT_FALSE(Bilateral(rows, {{0, 2}, {1, 2}, {2, 2}, {3, 2}}));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(BilateralTest, ARunOfTwoPosesAtOnePlaceIsItsOwnSide) {
  EXPECT_TRUE(Bilateral({".....",  //
                         "..#..",  //
                         "....."},
                        {{0, 1}, {2, 1}, {2, 1}}));
}

TEST_F(BilateralTest, OffTheMapCountsAsClosed) {
  EXPECT_TRUE(Bilateral({".###."}, {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}}));
  EXPECT_TRUE(Bilateral({"...#...",  // left closed, right off the map
                         ".......",  //
                         "..###.."},
                        {{2, 0}, {3, 0}, {4, 0}}));
  EXPECT_TRUE(Bilateral({"..###..",  // left off the map, right closed
                         ".......",  //
                         "...#..."},
                        {{2, 2}, {3, 2}, {4, 2}}));
  EXPECT_FALSE(Bilateral({".......",  //
                          ".......",  //
                          "..###.."},
                         {{2, 0}, {3, 0}, {4, 0}}));
}

TEST_F(BilateralTest, TheSidesAreThoseOfTheFirstRun) {
  const std::vector<std::string> rows = {"........#.",  //
                                         "..........",  //
                                         ".###...###",  //
                                         "..........",  //
                                         "........#."};
  EXPECT_FALSE(Bilateral(rows, {{0, 2}, {1, 2}, {2, 2}, {3, 2}, {4, 2}, {7, 2}, {8, 2}, {9, 2}}));
  EXPECT_TRUE(Bilateral(rows, {{4, 2}, {7, 2}, {8, 2}, {9, 2}}));
}

TEST_F(BilateralTest, TheSidesLieBesideTheLineFromFirstToLastPose) {
  // Upwards: the side points lie left and right.
  const std::vector<std::string> rows = {".......",  //
                                         "...#...",  //
                                         ".#.#.#.",  //
                                         "...#...",  //
                                         "......."};
  EXPECT_TRUE(Bilateral(rows, {{3, 0}, {3, 1}, {3, 2}, {3, 3}, {3, 4}}));
  EXPECT_FALSE(Bilateral({".......",  //
                          "...#...",  //
                          ".#.#...",  //
                          "...#...",  //
                          "......."},
                         {{3, 0}, {3, 1}, {3, 2}, {3, 3}, {3, 4}}));
}

TEST_F(BilateralTest, AThousandCyclesOfAStuckRobotLogALineEach) {
  const LogCapture from_info(ros::console::levels::Info);
  const Costmap2D map = MapFromText({".####"}, kCell);
  const nav_msgs::Path path = PathThrough(map, {{0, 0}, {1, 0}, {2, 0}, {3, 0}});
  for (int i = 0; i < 1000; ++i) {
    IsBlockingPathInflateObstacle(&map, path);
    IsBlockingPathLaserObstacle(&map, path);
    IsBlockingBetweenPoints(&map, path.poses.front().pose.position, path.poses.back().pose.position);
    IsBilateralObstacle(&map, path);
  }
  EXPECT_THAT(from_info.Lines(), SizeIs(1000));
  EXPECT_THAT(from_info.Lines(), Each(Info("start (0.15,0.05), end (0.35,0.05), mid:(0.25,0.05)")));
}

// A random map of 8 x 8 cells of 0.1 m around the origin and a path on it and a little beyond.
Costmap2D AnyMap() {
  Costmap2D map(8, 8, 0.1, -0.4, -0.4);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      Put(map, {x, y}, *rc::gen::element<unsigned char>(0, 0, 90, 200, 253, 254, 255), *rc::gen::inRange(0, 4) == 0);
    }
  }
  return map;
}

nav_msgs::Path AnyPath() { return PathOf(*PointLists(0, 14, 11, 0.04).as("path")); }

bool IsLethalAt(const Costmap2D& map, const Point& point) {
  unsigned int mx = 0;
  unsigned int my = 0;
  return map.worldToMap(point.x, point.y, mx, my) && map.IsLethalObstacle(mx, my);
}

RC_GTEST_FIXTURE_PROP(ObstacleBlockingTest, APathIsBlockedWhereAPoseIsLethal, ()) {
  const Costmap2D map = AnyMap();
  const nav_msgs::Path path = AnyPath();
  std::size_t first = 0;
  while (first < path.poses.size() && !IsLethalAt(map, path.poses[first].pose.position)) {
    ++first;
  }
  std::size_t last = first;
  while (last < path.poses.size() && IsLethalAt(map, path.poses[last].pose.position)) {
    ++last;
  }
  const std::vector<PoseStamped> run(path.poses.begin() + static_cast<std::ptrdiff_t>(first),
                                     path.poses.begin() + static_cast<std::ptrdiff_t>(last));
  RC_ASSERT(FindObstacleSegment(&map, path).poses == run);
  RC_ASSERT(log_.Lines().empty());
  RC_ASSERT(IsBlockingPathInflateObstacle(&map, path) == !run.empty());
  RC_ASSERT(log_.Lines().size() == (run.empty() ? 0u : 1u));

  bool laser = false;
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    laser = laser || (IsLethalAt(map, path.poses[i].pose.position) &&
                      IsBlockingLaserBetweenPoints(&map, path.poses[i - 1].pose.position, path.poses[i].pose.position));
  }
  RC_ASSERT(IsBlockingPathLaserObstacle(&map, path) == laser);

  bool bilateral = run.size() >= 2;
  if (bilateral) {
    const auto [left, right] = CalculatePerpendicularPoints(run.front(), run.back(), 0.2);
    for (const Point& side : {left, right}) {
      bilateral = bilateral && (!map.IsInmap(side.x, side.y) || IsLethalAt(map, side));
    }
  }
  RC_ASSERT(IsBilateralObstacle(&map, path) == bilateral);
}

RC_GTEST_FIXTURE_PROP(ObstacleBlockingTest, PerpendicularPointsAreTheMiddlesNeighbours, ()) {
  const Xy a = *Points(200, 0.01).as("a");
  const Xy b = *Points(200, 0.01).as("b");
  const double distance = *Multiples(0, 100, 0.01).as("distance");
  const auto [left, right] = CalculatePerpendicularPoints(PoseAt(a.x, a.y), PoseAt(b.x, b.y), distance);
  const Xy middle{(a.x + b.x) / 2, (a.y + b.y) / 2};
  RC_ASSERT(std::abs(left.x + right.x - 2 * middle.x) < 1e-12);
  RC_ASSERT(std::abs(left.y + right.y - 2 * middle.y) < 1e-12);
  RC_PRE(a.x != b.x || a.y != b.y);
  RC_ASSERT(std::abs(std::hypot(left.x - middle.x, left.y - middle.y) - distance) < 1e-12);
  const double along = (b.x - a.x) * (left.x - middle.x) + (b.y - a.y) * (left.y - middle.y);
  const double turn = (b.x - a.x) * (left.y - middle.y) - (b.y - a.y) * (left.x - middle.x);
  RC_ASSERT(std::abs(along) < 1e-12);
  RC_ASSERT(turn >= 0.0);
}

}  // namespace
}  // namespace controller_base_test
