#include "demo/pictures/plots.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace controller_base::demo {
namespace {

const cv::Scalar kBlue(200, 0, 0);
const cv::Scalar kRed(0, 0, 200);

int Pixels(const cv::Mat& picture, const cv::Scalar& color) {
  cv::Mat found;
  cv::inRange(picture, color, color, found);
  return cv::countNonZero(found);
}

TEST(Charts, ShowEveryLineInItsColor) {
  const Chart chart{"speed, m/s", 1.0, {{"a", kBlue, {{0, 0}, {10, 1}}}, {"b", kRed, {{0, 1}, {10, 0}}}}, {}};
  const cv::Mat picture = DrawCharts("title", "subtitle", {chart, chart}, {}, 10.0);
  EXPECT_EQ(picture.type(), CV_8UC3);
  EXPECT_GT(Pixels(picture, kBlue), 500);
  EXPECT_GT(Pixels(picture, kRed), 500);
}

TEST(Charts, ALineHasGapsWhereItIsNotFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const auto pixels_of = [](const std::vector<cv::Point2d>& points) {
    return Pixels(DrawCharts("t", "s", {{"c", 1.0, {{"a", kBlue, points}}, {}}}, {}, 10.0), kBlue);
  };
  const int whole = pixels_of({{0, 0.5}, {2, 0.5}, {4, 0.5}, {6, 0.5}, {8, 0.5}, {10, 0.5}});
  const int with_gap = pixels_of({{0, 0.5}, {2, 0.5}, {4, nan}, {6, inf}, {8, 0.5}, {10, 0.5}});
  EXPECT_GT(whole, 500);
  EXPECT_NEAR(with_gap, 0.4 * whole, 0.05 * whole);
  EXPECT_EQ(pixels_of({{0, nan}, {10, inf}}), 0);
  const double largest = std::numeric_limits<double>::max();
  EXPECT_EQ(pixels_of({{0, 0.5}, {2, 0.5}, {4, largest}, {6, -largest}, {8, 0.5}, {10, 0.5}}), with_gap);
}

TEST(Charts, ADriveWithoutDurationIsDrawn) {
  const cv::Mat picture = DrawCharts("t", "s", {{"c", 1.0, {{"a", kBlue, {{0, 0.5}}}}, {}}}, {{0.0, 1, kRed}}, 0.0);
  EXPECT_GT(Pixels(picture, kRed), 100);  // the mark
}

}  // namespace
}  // namespace controller_base::demo
