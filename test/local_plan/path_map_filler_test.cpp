#include "controller_base/path_map_filler.h"

#include <costmap_2d/costmap_2d.h>
#include <gmock/gmock.h>
#include <nav_msgs/OccupancyGrid.h>
#include <rapidcheck.h>
#include <sys/resource.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/core/version.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "test/local_plan/grid_paths.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/received.h"
#include "test/support/ros_graph.h"
#include "test/support/same_message.h"
#include "test/support/sim_time.h"
#include "test/support/stalled_subscriber.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;
using nav_controller::PathMapFiller;
using nav_msgs::OccupancyGrid;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTopic[] = "/DWB/limit_map";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

static_assert(std::is_copy_constructible_v<PathMapFiller> && std::is_copy_assignable_v<PathMapFiller>);

// The corridor by the drawing calls that define it, on the whole map: 1 inside, 0 outside.
cv::Mat PlainCorridor(int rows, int columns, const std::vector<cv::Point>& points, int width) {
  cv::Mat mask = cv::Mat::zeros(rows, columns, CV_8UC1);
  cv::polylines(mask, points, false, cv::Scalar(255), width, 8, 0);
  const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(width, width), cv::Point(-1, -1));
  cv::dilate(mask, mask, kernel, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
  cv::Mat grid = cv::Mat::zeros(rows, columns, CV_8UC1);
  grid.setTo(1, mask);
  return grid;
}

// The corridor as IsLethalObstacle answers, one string for each row, row 0 first: + inside, . outside.
std::vector<std::string> CorridorOf(const PathMapFiller& filler, const Costmap2D& map) {
  std::vector<std::string> rows(map.getSizeInCellsY(), std::string(map.getSizeInCellsX(), '.'));
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      rows[my][mx] = filler.IsLethalObstacle(mx, my) ? '.' : '+';
    }
  }
  return rows;
}

std::vector<std::string> AsRows(const cv::Mat& grid) {
  std::vector<std::string> rows;
  for (int y = 0; y < grid.rows; ++y) {
    rows.emplace_back();
    for (int x = 0; x < grid.cols; ++x) {
      rows.back() += grid.at<unsigned char>(y, x) == 1 ? '+' : '.';
    }
  }
  return rows;
}

std::vector<std::string> AsRows(const OccupancyGrid& grid) {
  std::vector<std::string> rows(grid.info.height);
  for (std::size_t i = 0; i < grid.data.size(); ++i) {
    rows.at(i / grid.info.width) += grid.data[i] == 0 ? '+' : grid.data[i] == 100 ? '.' : '!';
  }
  return rows;
}

// The most that this process ever held, in kilobytes.
long PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

class PathMapFillerTest : public SimTimeTest {
 protected:
  // Prepares the corridor and expects that cells, messages and the plain drawing calls agree.
  void ExpectPlainCorridor(const Costmap2D& map, const std::vector<Cell>& cells, int width) {
    SCOPED_TRACE("width " + std::to_string(width));
    filler_.prepare(width, &map, PathThrough(map, cells));
    const auto rows = static_cast<int>(map.getSizeInCellsY());
    const auto columns = static_cast<int>(map.getSizeInCellsX());
    std::vector<cv::Point> on_map;
    for (const Cell& cell : cells) {
      if (map.IsInmap(cell.first, cell.second)) {
        on_map.emplace_back(cell.first, cell.second);
      }
    }
    const std::vector<std::string> expected = AsRows(PlainCorridor(rows, columns, on_map, width));
    EXPECT_EQ(CorridorOf(filler_, map), expected);
    EXPECT_EQ(AsRows(filler_.getOccupancyGrid(&map)), expected);
  }

  Costmap2D map_{40, 30, 0.05, -1.0, 2.0};
  PathMapFiller filler_{5};
};

TEST_F(PathMapFillerTest, TheCorridorIsTheThickPolylineWidenedByADisc) {
  const std::vector<std::vector<Cell>> paths = {
      {{5, 15}, {30, 15}},                                                     // along a row
      {{20, 3}, {20, 25}},                                                     // along a column
      {{5, 5}, {25, 25}},                                                      // diagonal
      {{5, 5}, {30, 8}, {8, 22}},                                              // open: no third side
      {{0, 0}, {39, 0}, {39, 29}, {0, 29}},                                    // along the borders
      {{10, 10}, {10, 10}},                                                    // on the spot
      {{3, 20}, {3, 20}, {17, 20}, {17, 20}},                                  // repeated cells
      {{5, 5}, {60, 70}, {35, 5}},                                             // by way of a pose off the map
      {{-3, 5}, {5, 5}, {20, 20}, {20, 31}},                                   // both ends off the map
      {{30, 20}, {29, 20}, {28, 19}, {27, 19}, {26, 18}, {25, 18}, {24, 17}},  // cell by cell
  };
  for (std::size_t i = 0; i < paths.size(); ++i) {
    SCOPED_TRACE("path " + std::to_string(i));
    for (const int width : {1, 2, 3, 4, 5, 10, 11, 30, 100}) {
      ExpectPlainCorridor(map_, paths[i], width);
    }
  }
}

TEST_F(PathMapFillerTest, TheCorridorOfAnyPathIsThePlainOne) {
  EXPECT_TRUE(rc::check([this] {
    const int columns = *rc::gen::inRange(1, 50);
    const int rows = *rc::gen::inRange(1, 50);
    const auto cells = *rc::gen::container<std::vector<Cell>>(
        rc::gen::pair(rc::gen::inRange(-5, columns + 5), rc::gen::inRange(-5, rows + 5)));
    const Costmap2D map(static_cast<unsigned int>(columns), static_cast<unsigned int>(rows), 0.05, 1.0, -2.0);
    ExpectPlainCorridor(map, cells,
                        *rc::gen::weightedOneOf<int>({{9, rc::gen::inRange(1, 15)}, {1, rc::gen::inRange(15, 150)}}));
    RC_ASSERT(!HasFailure());
  }));
}

TEST_F(PathMapFillerTest, WidthThreeAlongARowGivesThreeRowsOnEachSide) {
  if (CV_VERSION_MAJOR != 4 || CV_VERSION_MINOR != 6) {
    GTEST_SKIP() << "another OpenCV may draw the border differently";
  }
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 15}, {12, 15}, {20, 15}, {34, 15}}));
  for (unsigned int my = 0; my < 30; ++my) {
    EXPECT_EQ(filler_.IsLethalObstacle(20, my), my < 12 || my > 18) << "row " << my;
  }
}

TEST_F(PathMapFillerTest, ThePathIsInsideAndTenRowsAwayIsOutside) {
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 15}, {34, 15}}));
  for (unsigned int mx = 5; mx <= 34; ++mx) {
    for (unsigned int my = 13; my <= 17; ++my) {
      EXPECT_FALSE(filler_.IsLethalObstacle(mx, my));
    }
    EXPECT_TRUE(filler_.IsLethalObstacle(mx, 5));
    EXPECT_TRUE(filler_.IsLethalObstacle(mx, 25));
  }
}

TEST_F(PathMapFillerTest, TheWidthOfTheCallCountsAndNotThatOfTheConstructor) {
  const nav_msgs::Path path = PathThrough(map_, {{5, 5}, {30, 20}});
  filler_.prepare(3, &map_, path);
  for (const int width : {-1, 0, 1, 20}) {
    PathMapFiller other(width);
    other.prepare(3, &map_, path);
    EXPECT_EQ(CorridorOf(other, map_), CorridorOf(filler_, map_));
  }
}

TEST_F(PathMapFillerTest, APathOfOnePoseHasNoCorridor) {
  ExpectPlainCorridor(map_, {{20, 15}}, 3);
  EXPECT_THAT(filler_.getOccupancyGrid(&map_).data, Each(100));
}

TEST_F(PathMapFillerTest, OnePoseOnTheMapIsNotEnoughForACorridor) {
  ExpectPlainCorridor(map_, {{-1, 15}, {20, 15}, {40, 15}}, 3);
  EXPECT_THAT(filler_.getOccupancyGrid(&map_).data, Each(100));
}

TEST_F(PathMapFillerTest, WithoutAPoseOnTheMapThereIsNoCorridorButStillAGrid) {
  const nav_msgs::Path off_map =
      PathOf({{kNaN, 2.5}, {0.0, kNaN}, {kInfinity, 2.5}, {0.0, -kInfinity}, {1e300, 1e300}, {-1.01, 2.5}, {1.0, 2.5}});
  Received<OccupancyGrid> grids(kTopic);
  filler_.prepare(3, &map_, nav_msgs::Path());
  filler_.prepare(3, &map_, off_map);
  const std::vector<OccupancyGrid> received = grids.AtLeast(2);
  ASSERT_EQ(received.size(), 2U);
  for (const OccupancyGrid& grid : received) {
    EXPECT_EQ(grid.data, std::vector<std::int8_t>(40 * 30, 100));
  }
  EXPECT_TRUE(filler_.IsLethalObstacle(20, 15));
}

TEST_F(PathMapFillerTest, PosesOffTheMapAreSkippedAndTheirNeighboursJoined) {
  nav_msgs::Path direct = PathThrough(map_, {{5, 5}, {35, 25}});
  nav_msgs::Path by_way_of = direct;
  for (const Xy& off_map : {Xy{kNaN, 2.5}, Xy{0.0, kInfinity}, Xy{-1e300, 2.5}, Xy{50.0, 50.0}}) {
    by_way_of.poses.insert(by_way_of.poses.begin() + 1, PoseAt(off_map.x, off_map.y));
  }
  filler_.prepare(3, &map_, direct);
  const std::vector<std::string> expected = CorridorOf(filler_, map_);
  filler_.prepare(3, &map_, by_way_of);
  EXPECT_EQ(CorridorOf(filler_, map_), expected);
}

TEST_F(PathMapFillerTest, OnlyThePlanePositionOfAPoseCounts) {
  nav_msgs::Path path = PathThrough(map_, {{5, 5}, {35, 25}});
  filler_.prepare(3, &map_, path);
  const std::vector<std::string> expected = CorridorOf(filler_, map_);
  path.header.frame_id = "odom";
  for (geometry_msgs::PoseStamped& pose : path.poses) {
    pose.header.frame_id = "elsewhere";
    pose.pose.position.z = kNaN;
    pose.pose.orientation = QuaternionOf(kNaN, 0, 0, 0);
  }
  filler_.prepare(3, &map_, path);
  EXPECT_EQ(CorridorOf(filler_, map_), expected);
}

TEST_F(PathMapFillerTest, ASecondCorridorReplacesTheFirst) {
  ExpectPlainCorridor(map_, {{5, 15}, {34, 15}}, 10);
  ExpectPlainCorridor(map_, {{5, 15}, {34, 15}}, 2);
  ExpectPlainCorridor(map_, {{20, 2}, {20, 27}}, 2);
  EXPECT_TRUE(filler_.IsLethalObstacle(5, 15));
}

TEST_F(PathMapFillerTest, ManyCorridorsOnOneMapLeaveNoTraceOfEachOther) {
  const std::vector<std::vector<Cell>> paths = {{{0, 0}, {39, 29}}, {},         {{5, 5}},           {{39, 0}, {30, 0}},
                                                {{0, 29}, {0, 20}}, {{-5, -5}}, {{20, 2}, {20, 27}}};
  for (const std::vector<Cell>& before : paths) {
    for (const std::vector<Cell>& after : paths) {
      ExpectPlainCorridor(map_, before, 5);
      EXPECT_THROW(filler_.prepare(-1, &map_, PathThrough(map_, before)), cv::Exception);
      ExpectPlainCorridor(map_, after, 2);
    }
  }
}

TEST_F(PathMapFillerTest, AMapOfAnotherSizeGetsACorridorOfItsSize) {
  ExpectPlainCorridor(map_, {{5, 15}, {34, 15}}, 3);
  ExpectPlainCorridor(Costmap2D(10, 90, 0.1, 0.0, 0.0), {{5, 15}, {5, 80}}, 3);
  ExpectPlainCorridor(Costmap2D(1, 1, 0.1, 0.0, 0.0), {{0, 0}, {0, 0}}, 3);
  ExpectPlainCorridor(Costmap2D(200, 3, 0.1, 0.0, 0.0), {{0, 0}, {199, 2}}, 3);
}

TEST_F(PathMapFillerTest, RowZeroIsTheLowestRowOfTheMap) {
  filler_.prepare(1, &map_, PathOf({{-0.975, 2.025}, {0.0, 2.025}}));  // 0.025 m above the map's lower edge
  EXPECT_FALSE(filler_.IsLethalObstacle(0, 0));
  EXPECT_FALSE(filler_.IsLethalObstacle(20, 0));
  EXPECT_TRUE(filler_.IsLethalObstacle(39, 0));
  EXPECT_TRUE(filler_.IsLethalObstacle(0, 29));
  const OccupancyGrid grid = filler_.getOccupancyGrid(&map_);
  EXPECT_EQ(grid.data[20], 0);
  EXPECT_EQ(grid.data[39], 100);
  EXPECT_EQ(grid.data[29 * 40], 100);
}

TEST_F(PathMapFillerTest, FillingMarksTheCorridorAndLeavesTheOtherCellsAlone) {
  const std::vector<cv::Point> points = {{2, 2}, {15, 9}};
  cv::Mat grid(12, 18, CV_8UC1, cv::Scalar(7));
  filler_.FillPathWidth(grid, points, 2);
  const cv::Mat plain = PlainCorridor(12, 18, points, 2);
  for (int y = 0; y < grid.rows; ++y) {
    for (int x = 0; x < grid.cols; ++x) {
      EXPECT_EQ(grid.at<unsigned char>(y, x), plain.at<unsigned char>(y, x) == 1 ? 1 : 7);
    }
  }
}

TEST_F(PathMapFillerTest, FillingDrawsOnlyWhatOfAPolylineLiesOnTheImage) {
  EXPECT_TRUE(rc::check([this] {
    const int columns = *rc::gen::inRange(1, 30);
    const int rows = *rc::gen::inRange(1, 30);
    std::vector<cv::Point> points(*rc::gen::inRange<std::size_t>(0, 5));
    for (cv::Point& point : points) {
      point = {*rc::gen::inRange(-60, columns + 60), *rc::gen::inRange(-60, rows + 60)};
    }
    const int width = *rc::gen::inRange(1, 60);
    cv::Mat grid = cv::Mat::zeros(rows, columns, CV_8UC1);
    filler_.FillPathWidth(grid, points, width);
    RC_ASSERT(AsRows(grid) == AsRows(PlainCorridor(rows, columns, points, width)));
  }));
}

TEST_F(PathMapFillerTest, FillingAddsToWhatIsMarkedAndSeesNoPointAsNothing) {
  cv::Mat grid = cv::Mat::zeros(12, 18, CV_8UC1);
  filler_.FillPathWidth(grid, {}, 2);
  filler_.FillPathWidth(grid, {{2, 2}}, 2);
  EXPECT_EQ(cv::countNonZero(grid), 0);
  filler_.FillPathWidth(grid, {{2, 2}, {15, 2}}, 2);
  filler_.FillPathWidth(grid, {{2, 9}, {15, 9}}, 2);
  EXPECT_EQ(grid.at<unsigned char>(2, 8), 1);
  EXPECT_EQ(grid.at<unsigned char>(9, 8), 1);
}

TEST_F(PathMapFillerTest, FillingAnotherImageChangesAndPublishesNothingOfItsOwn) {
  Received<OccupancyGrid> grids(kTopic);
  ExpectPlainCorridor(map_, {{5, 15}, {34, 15}}, 3);
  const std::vector<std::string> before = CorridorOf(filler_, map_);
  cv::Mat image = cv::Mat::zeros(30, 40, CV_8UC1);
  filler_.FillPathWidth(image, {{5, 5}, {5, 25}}, 3);
  EXPECT_EQ(CorridorOf(filler_, map_), before);
  filler_.PublishGridMap(&map_);
  EXPECT_EQ(grids.AtLeast(2).size(), 2U);
}

TEST_F(PathMapFillerTest, AWidthThatCannotBeDrawnThrowsAndLeavesTheFillerUsable) {
  Received<OccupancyGrid> grids(kTopic);
  const std::vector<int> widths = {0, -1, std::numeric_limits<int>::min(), 32768, std::numeric_limits<int>::max()};
  for (const int width : widths) {
    SCOPED_TRACE(width);
    filler_.prepare(3, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
    EXPECT_THROW(filler_.prepare(width, &map_, PathThrough(map_, {{5, 15}, {34, 15}})), cv::Exception);
    EXPECT_TRUE(filler_.IsLethalObstacle(20, 5));
    EXPECT_TRUE(filler_.IsLethalObstacle(20, 15));
    ExpectPlainCorridor(map_, {{5, 25}, {34, 25}}, 3);
  }
  filler_.prepare(7, &map_, nav_msgs::Path());
  EXPECT_EQ(grids.AtLeast(2 * widths.size() + 1).size(), 2 * widths.size() + 1);  // what threw published nothing
}

TEST_F(PathMapFillerTest, ACorridorFarWiderThanTheMapTakesNoMoreThanTheMap) {
  constexpr long kMegabytes = 1024;  // of ru_maxrss, in kilobytes
  for (const auto& [columns, rows] : {std::pair<unsigned int, unsigned int>{70, 70}, {1, 70}, {2000, 3}, {300, 300}}) {
    const Costmap2D map(columns, rows, 0.05, 0.0, 0.0);
    const nav_msgs::Path path = PathThrough(map, {{0, 0}, {static_cast<int>(columns) - 1, static_cast<int>(rows) - 1}});
    for (const int width : {8000, 20000, 32767}) {
      SCOPED_TRACE(std::to_string(columns) + " x " + std::to_string(rows) + ", width " + std::to_string(width));
      const long before = PeakMemory();
      const std::clock_t start = std::clock();
      filler_.prepare(width, &map, path);
      EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 2.0);  // seconds
      EXPECT_LT(PeakMemory() - before, 32 * kMegabytes);
      EXPECT_EQ(CorridorOf(filler_, map), std::vector<std::string>(rows, std::string(columns, '+')));
    }
  }
}

TEST_F(PathMapFillerTest, ADiscThatReachesBeyondTheMapMarksWhatTheWholeDiscMarks) {
  EXPECT_TRUE(rc::check([this] {
    const int columns = *rc::gen::inRange(1, 60);
    const int rows = *rc::gen::inRange(1, 8);
    std::vector<cv::Point> points(*rc::gen::inRange<std::size_t>(2, 4));
    for (cv::Point& point : points) {
      point = {*rc::gen::inRange(-90, columns + 90), *rc::gen::inRange(-90, rows + 90)};
    }
    const bool upright = *rc::gen::arbitrary<bool>();
    const int width = *rc::gen::inRange(1, 200);
    cv::Mat grid = upright ? cv::Mat::zeros(columns, rows, CV_8UC1) : cv::Mat::zeros(rows, columns, CV_8UC1);
    filler_.FillPathWidth(grid, points, width);
    RC_ASSERT(AsRows(grid) == AsRows(PlainCorridor(grid.rows, grid.cols, points, width)));
  }));
}

TEST_F(PathMapFillerTest, CopiesHaveCorridorsOfTheirOwn) {
  const nav_msgs::Path low = PathThrough(map_, {{5, 5}, {34, 5}});
  const nav_msgs::Path high = PathThrough(map_, {{5, 25}, {34, 25}});
  filler_.prepare(3, &map_, low);
  const std::vector<std::string> low_corridor = CorridorOf(filler_, map_);
  PathMapFiller constructed(filler_);
  PathMapFiller assigned(7);
  assigned.prepare(9, &map_, high);
  assigned = filler_;
  EXPECT_EQ(CorridorOf(constructed, map_), low_corridor);
  EXPECT_EQ(CorridorOf(assigned, map_), low_corridor);

  filler_.prepare(3, &map_, high);
  const std::vector<std::string> high_corridor = CorridorOf(filler_, map_);
  EXPECT_EQ(CorridorOf(constructed, map_), low_corridor);
  EXPECT_EQ(CorridorOf(assigned, map_), low_corridor);

  for (PathMapFiller* const copy : {&constructed, &assigned}) {
    copy->prepare(3, &map_, high);
    EXPECT_EQ(CorridorOf(*copy, map_), high_corridor);  // nothing of the copied one is left
    copy->prepare(3, &map_, low);
    EXPECT_EQ(CorridorOf(*copy, map_), low_corridor);
    EXPECT_EQ(AsRows(copy->getOccupancyGrid(&map_)), low_corridor);
    EXPECT_EQ(CorridorOf(filler_, map_), high_corridor);
  }
}

TEST_F(PathMapFillerTest, ACopyOfItselfChangesNothing) {
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
  const std::vector<std::string> corridor = CorridorOf(filler_, map_);
  PathMapFiller& same = filler_;
  filler_ = same;
  EXPECT_EQ(CorridorOf(filler_, map_), corridor);
  filler_ = std::move(same);
  EXPECT_EQ(CorridorOf(filler_, map_), corridor);
}

TEST_F(PathMapFillerTest, WhatWasMovedFromCanBePreparedAgain) {
  const nav_msgs::Path path = PathThrough(map_, {{5, 5}, {34, 5}});
  filler_.prepare(3, &map_, path);
  const std::vector<std::string> corridor = CorridorOf(filler_, map_);
  PathMapFiller constructed(std::move(filler_));
  EXPECT_EQ(CorridorOf(constructed, map_), corridor);
  PathMapFiller assigned(7);
  assigned.prepare(9, &map_, PathThrough(map_, {{5, 25}, {34, 25}}));
  assigned = std::move(constructed);
  EXPECT_EQ(CorridorOf(assigned, map_), corridor);

  Received<OccupancyGrid> grids(kTopic);
  for (PathMapFiller* const left : {&filler_, &constructed}) {  // NOLINT(bugprone-use-after-move): that is the question
    left->prepare(3, &map_, path);
    EXPECT_EQ(CorridorOf(*left, map_), corridor);
  }
  EXPECT_EQ(CorridorOf(assigned, map_), corridor);
  EXPECT_GE(grids.AtLeast(2).size(), 2U);
}

TEST_F(PathMapFillerTest, CopiesPublishOnOneTopicUntilTheLastIsGone) {
  Received<OccupancyGrid> grids(kTopic);
  auto original = std::make_unique<PathMapFiller>(3);
  PathMapFiller copy(*original);
  original.reset();
  copy.prepare(3, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
  ASSERT_EQ(grids.AtLeast(1).size(), 1U);
  EXPECT_EQ(AsRows(grids.AtLeast(1).front()), CorridorOf(copy, map_));
}

TEST_F(PathMapFillerTest, BeforeTheFirstCorridorTheGridHasNoCells) {
  Received<OccupancyGrid> grids(kTopic);
  OccupancyGrid expected;
  expected.header.stamp = ros::Time(100, 0);
  expected.header.frame_id = "map";
  expected.info.resolution = 0.05F;
  expected.info.origin.position = PointAt(-1.0, 2.0);
  EXPECT_THAT(filler_.getOccupancyGrid(&map_), SameMessage(expected));
  filler_.PublishGridMap(&map_);
  EXPECT_THAT(grids.AtLeast(1), ElementsAre(SameMessage(expected)));
}

TEST_F(PathMapFillerTest, PublishesEveryCorridorOnceWithEveryFieldAsTold) {
  Received<OccupancyGrid> grids(kTopic);
  const Costmap2D map(3, 2, 0.1, -7.5, 3.25);
  OccupancyGrid expected;
  expected.header.seq = 0;
  expected.header.stamp = ros::Time(1234, 567);
  expected.header.frame_id = "map";
  expected.info.map_load_time = ros::Time();
  expected.info.resolution = 0.1F;
  expected.info.width = 3;
  expected.info.height = 2;
  expected.info.origin.position = PointAt(-7.5, 3.25, 0.0);
  expected.info.origin.orientation = QuaternionOf(0.0, 0.0, 0.0, 0.0);
  expected.data = {100, 100, 100, 0, 0, 100};  // row 0, then row 1

  SetNow(ros::Time(1234, 567));
  filler_.prepare(1, &map, PathThrough(map, {{0, 1}, {1, 1}}));
  EXPECT_THAT(filler_.getOccupancyGrid(&map), SameMessage(expected));
  Wait(1.0);
  filler_.PublishGridMap(&map);
  OccupancyGrid again = expected;
  again.header.seq = 1;  // counted by the transport
  again.header.stamp = ros::Time(1235, 567);
  EXPECT_THAT(grids.AtLeast(2), ElementsAre(SameMessage(expected), SameMessage(again)));
}

TEST_F(PathMapFillerTest, SizeAndCellsComeFromTheCorridorResolutionAndOriginFromTheMapOfTheCall) {
  Received<OccupancyGrid> grids(kTopic);
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 15}, {34, 15}}));
  const OccupancyGrid own = filler_.getOccupancyGrid(&map_);
  const Costmap2D elsewhere(7, 9, 0.5, 100.0, -200.0);
  const OccupancyGrid moved = filler_.getOccupancyGrid(&elsewhere);
  EXPECT_EQ(moved.info.width, 40U);
  EXPECT_EQ(moved.info.height, 30U);
  EXPECT_EQ(moved.data, own.data);
  EXPECT_EQ(moved.info.resolution, 0.5F);
  EXPECT_EQ(moved.info.origin.position.x, 100.0);
  EXPECT_EQ(moved.info.origin.position.y, -200.0);

  filler_.PublishGridMap(&elsewhere);
  ASSERT_EQ(grids.AtLeast(2).size(), 2U);
  EXPECT_EQ(grids.AtLeast(2).back().info.resolution, 0.5F);
}

TEST_F(PathMapFillerTest, AdvertisesOneAbsoluteTopic) {
  EXPECT_THAT(AdvertisedTopics(), ElementsAre(kTopic));
  EXPECT_EQ(TypeOfTopic(kTopic), "nav_msgs/OccupancyGrid");
}

TEST(PathMapFiller, LeavesNoTopicBehind) {
  { const PathMapFiller filler(3); }
  EXPECT_THAT(AdvertisedTopics(), IsEmpty());
}

TEST_F(PathMapFillerTest, ALateSubscriberReceivesTheLastCorridorAtOnce) {
  Received<OccupancyGrid> early(kTopic);
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 25}, {34, 25}}));
  ASSERT_EQ(early.AtLeast(2).size(), 2U);  // both are sent and done with
  const std::vector<std::string> last = CorridorOf(filler_, map_);
  Received<OccupancyGrid> late(kTopic);
  ASSERT_EQ(late.AtLeast(1).size(), 1U);
  EXPECT_EQ(AsRows(late.AtLeast(1).front()), last);

  filler_.prepare(1, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
  const std::vector<OccupancyGrid> received = late.AtLeast(2);
  ASSERT_EQ(received.size(), 2U);  // the first corridor of all never came
  EXPECT_EQ(AsRows(received.back()), CorridorOf(filler_, map_));
}

TEST_F(PathMapFillerTest, OneCorridorWaitsForASlowSubscriber) {
  StalledSubscriber slow(kTopic);
  EXPECT_EQ(slow.ConnectionHeader().at("type"), "nav_msgs/OccupancyGrid");
  EXPECT_EQ(slow.ConnectionHeader().at("latching"), "1");

  Received<OccupancyGrid> prompt(kTopic);  // connected after the slow one, hence served after it
  const Costmap2D large(1000, kMoreThanAConnectionHolds / 1000, 0.05, 0.0, 0.0);
  filler_.prepare(1, &large, nav_msgs::Path());
  for (int i = 0; i < 5; ++i) {
    filler_.prepare(1, &map_, nav_msgs::Path());
  }
  ASSERT_EQ(prompt.AtLeast(6).size(), 6U);
  EXPECT_THAT(slow.DrainSequenceNumbers(5), ElementsAre(0, 5));
}

TEST_F(PathMapFillerTest, LogsNothing) {
  const LogCapture log;
  filler_.prepare(3, &map_, PathOf({{kNaN, 0.0}}));
  filler_.prepare(3, &map_, PathThrough(map_, {{5, 5}, {34, 5}}));
  EXPECT_THROW(filler_.prepare(-1, &map_, nav_msgs::Path()), cv::Exception);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
}  // namespace controller_base_test
