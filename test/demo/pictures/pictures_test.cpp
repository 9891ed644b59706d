#include "demo/pictures/pictures.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "demo/pictures/canvas.h"

namespace controller_base::demo {
namespace {

const cv::Scalar kRed(0, 0, 255);
const cv::Scalar kUnknown(205, 210, 205);
const cv::Scalar kObstacle(40, 150, 245);
constexpr int kPanelWidth = 460;

int Pixels(const cv::Mat& picture, const cv::Scalar& color) {
  cv::Mat found;
  cv::inRange(picture, color, color, found);
  return cv::countNonZero(found);
}

bool AreSame(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && cv::countNonZero(cv::Mat(a != b).reshape(1)) == 0;
}

bool IsDark(const cv::Mat& picture, int x, int y) { return picture.at<cv::Vec3b>(y, x)[0] < 200; }

// The number of dark runs between two pixels of the same row or column.
int DarkRuns(const cv::Mat& picture, cv::Point at, const cv::Point& end) {
  const cv::Point step = at.y == end.y ? cv::Point(1, 0) : cv::Point(0, 1);
  int runs = 0;
  bool was_dark = false;
  for (; at != end; at += step) {
    const bool is_dark = IsDark(picture, at.x, at.y);
    runs += is_dark && !was_dark ? 1 : 0;
    was_dark = is_dark;
  }
  return runs;
}

// A canvas of 4 m x 2 m, 100 pixels a metre, all red.
cv::Mat RedCanvas(double min_x, double min_y) {
  const Area area{min_x, min_y, min_x + 4.0, min_y + 2.0};
  Canvas canvas(area, 100.0);
  canvas.FillPolygon(
      {{area.min_x, area.min_y}, {area.max_x, area.min_y}, {area.max_x, area.max_y}, {area.min_x, area.max_y}}, kRed);
  return canvas.Finish();
}

cv::Rect RedPart(const cv::Mat& picture) {
  cv::Mat red;
  cv::inRange(picture, kRed, kRed, red);
  std::vector<cv::Point> pixels;  // row by row
  cv::findNonZero(red, pixels);
  return {pixels.front(), pixels.back() + cv::Point(1, 1)};
}

TEST(Canvas, HasTicksAlongItsEdges) {
  const cv::Mat picture = RedCanvas(0.0, 0.0);
  const cv::Rect red = RedPart(picture);
  EXPECT_NEAR(red.width, 400, 2);
  EXPECT_NEAR(red.height, 200, 2);
  const int below = red.br().y + 3;
  const int beside = red.x - 4;
  EXPECT_EQ(DarkRuns(picture, {red.x - 2, below}, {red.br().x + 2, below}), 9);    // every half metre from 0 to 4
  EXPECT_EQ(DarkRuns(picture, {beside, red.y - 2}, {beside, red.br().y + 2}), 5);  // every half metre from 0 to 2
}

TEST(Canvas, TellsItsCoordinates) {
  const cv::Mat here = RedCanvas(0.0, 0.0);
  const cv::Mat there = RedCanvas(2.0, 0.0);
  EXPECT_EQ(here.size(), there.size());
  EXPECT_FALSE(AreSame(here, there));
  const cv::Rect red = RedPart(here);
  const cv::Mat far_away = RedCanvas(-9999990.0, 9999990.0);
  EXPECT_EQ(RedPart(far_away).size(), red.size());
  EXPECT_GT(RedPart(far_away).x, red.x + 40);  // room for longer numbers
  for (int row = 0; row < far_away.rows; ++row) {
    EXPECT_FALSE(IsDark(far_away, 0, row)) << "cut off at row " << row;
  }
}

TEST(Canvas, WhatLiesFarAwayIsNotDrawn) {
  const auto begin = std::chrono::steady_clock::now();
  const auto draw = [](const std::vector<double>& distances) {
    Canvas canvas({0.0, 0.0, 4.0, 2.0}, 100.0);
    for (const double far : distances) {
      canvas.Dashes({{far, 1.0}, {far, far}, {2.0 * far, -far}}, kRed, 2);
      canvas.Line({{far, 1.0}, {far, far}}, kRed, 2);
      canvas.Polygon({{far, 0.0}, {far + 1.0, 0.0}, {far, 1.0}}, kRed, 2);
      canvas.FillPolygon({{far, 0.0}, {far + 1.0, 0.0}, {far, 1.0}}, kRed);
      canvas.Circle({far, 1.0}, 0.2, kRed, 2);
      canvas.Dot({far, 1.0}, 5, kRed);
      canvas.Cross({1.0, far}, 5, kRed, 2);
    }
    return canvas.Finish();
  };
  EXPECT_TRUE(AreSame(draw({}), draw({1e5, -1e6, 1e7, 1e12, 1e300, std::nan(""), HUGE_VAL})));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(Canvas, ALineThatLeadsFarAwayIsDrawnAsFarAsItShows) {
  const auto draw = [](double end) {
    Canvas canvas({0.0, 0.0, 4.0, 2.0}, 100.0);
    canvas.Line({{1.0, 1.0}, {end, 1.0}}, kRed, 3);
    return canvas.Finish();
  };
  EXPECT_GT(Pixels(draw(5.0), kRed), 500);
  EXPECT_TRUE(AreSame(draw(5.0), draw(1e300)));
}

TEST(Canvas, ANumberWhoseAnchorIsFarAwayStandsAtTheEdge) {
  Canvas canvas({0.0, 0.0, 4.0, 2.0}, 100.0);
  canvas.Number({1e300, -1e300}, 1, kRed);
  EXPECT_GT(Pixels(canvas.Finish(), kRed), 100);
}

// A drive of some metres along the x axis, on a map of free cells.
class DrivePicture : public testing::Test {
 protected:
  void DriveOn(const costmap_2d::Costmap2D& map, double length,
               const std::vector<simulation::Obstacle>& obstacles = {}) {
    const simulation::World world(map, obstacles);
    drive_.path.poses.resize(2);
    for (geometry_msgs::PoseStamped& pose : drive_.path.poses) {
      pose.pose.position.y = 0.4;
      pose.pose.orientation.w = 1.0;
    }
    drive_.path.poses[0].pose.position.x = 1.0;
    drive_.path.poses[1].pose.position.x = 1.0 + length;
    story_.OnPath(drive_.path);
    constexpr int kSamples = 20;
    for (int i = 0; i <= kSamples; ++i) {
      const follower::Pose2d pose{1.0 + length * i / kSamples, 0.4, 0.0};
      follower::FollowerInput input;
      follower::FollowerOutput output;
      drive_.trajectory.push_back({0.05 * i, pose, {0.4, 0.0}, 0, 0.0, "path", 0.0, 0.0});
      story_.OnCycle({0.05 * i, pose, input, output, {0.4, 0.0}, {}, 0, {}, drive_.path, world});
    }
  }

  simulation::DriveRecord drive_;
  Story story_;
};

TEST_F(DrivePicture, FarAwayObstaclesPathsAndPosesDoNotGrowIt) {
  const costmap_2d::Costmap2D map(120, 60, 0.05, 0.0, 0.0);
  DriveOn(map, 4.0, {{"far", {1e6, 1.0}, 0.0, 1.0, 1.0}, {"farther", {-1e300, 1.0}, 0.0, 1.0, 1.0}});
  const cv::Size usual = DrawDrive(map, drive_, story_).size();
  drive_.path.poses[0].pose.position.x = 1e7;
  story_.OnPath(drive_.path);
  drive_.trajectory.push_back({2.0, {1e5, -1e300, 0.0}, {0.4, 0.0}, 0, 0.0, "path", 0.0, 0.0});
  EXPECT_EQ(DrawDrive(map, drive_, story_).size(), usual);
}

TEST_F(DrivePicture, AMapOf65535CellsIsScaled) {
  const costmap_2d::Costmap2D map(65535, 16, 0.05, 0.0, 0.0);
  DriveOn(map, 3000.0);
  const cv::Mat picture = DrawDrive(map, drive_, story_);
  EXPECT_LE(picture.cols, 1100 + 100 + kPanelWidth);
  EXPECT_GE(picture.rows, 130);
}

TEST_F(DrivePicture, AWallOfOneCellIsSeenHoweverLargeTheMap) {
  costmap_2d::Costmap2D map(4000, 3000, 0.05, 0.0, 0.0);
  for (unsigned int my = 0; my < 3000; ++my) {
    map.setCost(1777, my, costmap_2d::LETHAL_OBSTACLE);
  }
  DriveOn(map, 190.0);
  drive_.path.poses[1].pose.position.y = 149.0;
  story_.OnPath(drive_.path);
  EXPECT_GE(Pixels(DrawDrive(map, drive_, story_), cv::Scalar(70, 70, 70)), 700);
}

TEST_F(DrivePicture, TheLegendExplainsUnknownCellsWhereThereAreSome) {
  costmap_2d::Costmap2D map(120, 60, 0.05, 0.0, 0.0);
  DriveOn(map, 4.0);
  const auto grey_in_panel = [&] {
    const cv::Mat picture = DrawDrive(map, drive_, story_);
    return Pixels(picture.colRange(picture.cols - kPanelWidth, picture.cols), kUnknown);
  };
  EXPECT_EQ(grey_in_panel(), 0);
  map.setCost(5, 50, costmap_2d::NO_INFORMATION);
  EXPECT_GT(grey_in_panel(), 50);
}

TEST_F(DrivePicture, ASmallMapIsLargeEnoughToRead) {
  const costmap_2d::Costmap2D map(60, 40, 0.02, 0.0, 0.0);
  DriveOn(map, 0.1);
  EXPECT_GE(DrawDrive(map, drive_, story_).cols, 600 + kPanelWidth);
}

}  // namespace
}  // namespace controller_base::demo
