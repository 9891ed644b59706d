#include "demo/pictures/clip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace controller_base::demo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Points = std::vector<cv::Point2d>;

const cv::Rect2d kArea(0.0, 0.0, 10.0, 5.0);
constexpr double kHuge = 1e300;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ClipLine, WhatLiesInsideStaysAsItIs) {
  const Points line{{0.0, 0.0}, {0.1, 0.3}, {0.1, 0.3}, {10.0, 5.0}};
  EXPECT_THAT(ClipLine(line, kArea), ElementsAre(line));
}

TEST(ClipLine, ALineThatLeavesAndComesBackIsTwo) {
  EXPECT_THAT(ClipLine({{1.0, 1.0}, {1.0, 9.0}, {3.0, 9.0}, {3.0, 1.0}}, kArea),
              ElementsAre(Points{{1.0, 1.0}, {1.0, 5.0}}, Points{{3.0, 5.0}, {3.0, 1.0}}));
}

TEST(ClipLine, ASegmentBetweenPointsOutsideIsCutAtBothEnds) {
  EXPECT_THAT(ClipLine({{-2.0, 1.0}, {12.0, 1.0}}, kArea), ElementsAre(Points{{0.0, 1.0}, {10.0, 1.0}}));
  EXPECT_THAT(ClipLine({{-2.0, 3.0}, {3.0, 8.0}}, kArea), ElementsAre(Points{{0.0, 5.0}, {0.0, 5.0}}));  // a corner
  EXPECT_THAT(ClipLine({{-2.0, 4.0}, {3.0, 9.0}}, kArea), IsEmpty());
}

TEST(ClipLine, FarAwayIsAsGoodAsNear) {
  EXPECT_THAT(ClipLine({{1.0, 1.0}, {kHuge, 1.0}, {kHuge, kHuge}, {-kHuge, kHuge}}, kArea),
              ElementsAre(Points{{1.0, 1.0}, {10.0, 1.0}}));
  EXPECT_THAT(ClipLine({{kHuge, 1.0}, {1.0, 1.0}}, kArea), ElementsAre(Points{{10.0, 1.0}, {1.0, 1.0}}));
  EXPECT_THAT(ClipLine({{-kHuge, 1.0}, {kHuge, 1.0}}, kArea), ElementsAre(Points{{0.0, 1.0}, {10.0, 1.0}}));
}

TEST(ClipLine, WhatIsNotFiniteIsLeftOut) {
  EXPECT_THAT(ClipLine({{1.0, 1.0}, {2.0, 1.0}, {kNan, 1.0}, {3.0, 1.0}, {4.0, 1.0}, {kInfinity, 1.0}}, kArea),
              ElementsAre(Points{{1.0, 1.0}, {2.0, 1.0}}, Points{{3.0, 1.0}, {4.0, 1.0}}));
}

TEST(ClipLine, FewerThanTwoPointsAreNoLine) {
  EXPECT_THAT(ClipLine({}, kArea), IsEmpty());
  EXPECT_THAT(ClipLine({{1.0, 1.0}}, kArea), IsEmpty());
}

TEST(ClipPolygon, WhatLiesInsideStaysAsItIs) {
  const Points box{{1.0, 1.0}, {2.0, 1.0}, {2.0, 3.0}, {1.0, 3.0}};
  EXPECT_EQ(ClipPolygon(box, kArea), box);
}

TEST(ClipPolygon, WhatReachesBeyondIsCutOff) {
  EXPECT_THAT(ClipPolygon({{8.0, 1.0}, {kHuge, 1.0}, {kHuge, 2.0}, {8.0, 2.0}}, kArea),
              testing::UnorderedElementsAre(cv::Point2d(8.0, 1.0), cv::Point2d(10.0, 1.0), cv::Point2d(10.0, 2.0),
                                            cv::Point2d(8.0, 2.0)));
}

TEST(ClipPolygon, OneAroundTheAreaIsTheArea) {
  EXPECT_THAT(ClipPolygon({{-9.0, -9.0}, {99.0, -9.0}, {99.0, 99.0}, {-9.0, 99.0}}, kArea),
              testing::UnorderedElementsAre(cv::Point2d(0.0, 0.0), cv::Point2d(10.0, 0.0), cv::Point2d(10.0, 5.0),
                                            cv::Point2d(0.0, 5.0)));
}

TEST(ClipPolygon, OneElsewhereIsNothing) {
  EXPECT_THAT(ClipPolygon({{11.0, 1.0}, {12.0, 1.0}, {12.0, 2.0}}, kArea), IsEmpty());
  EXPECT_THAT(ClipPolygon({{1.0, 1.0}, {kNan, 1.0}, {2.0, 2.0}}, kArea), IsEmpty());
  EXPECT_THAT(ClipPolygon({}, kArea), IsEmpty());
}

RC_GTEST_PROP(ClipLine, NothingOfALineInsideIsLostAndNothingOutsideKept, ()) {
  const auto coordinate = rc::gen::map(rc::gen::inRange(-200, 300), [](int tenths) { return 0.1 * tenths; });
  const auto points = *rc::gen::container<Points>(
      rc::gen::map(rc::gen::pair(coordinate, coordinate),
                   [](const std::pair<double, double>& xy) { return cv::Point2d(xy.first, xy.second); }));
  const std::vector<Points> parts = ClipLine(points, kArea);
  double clipped = 0.0;
  for (const Points& part : parts) {
    RC_ASSERT(part.size() >= 2u);
    for (std::size_t i = 0; i < part.size(); ++i) {
      RC_ASSERT(part[i].x >= -1e-9 && part[i].x <= 10.0 + 1e-9 && part[i].y >= -1e-9 && part[i].y <= 5.0 + 1e-9);
      clipped += i == 0 ? 0.0 : cv::norm(part[i] - part[i - 1]);
    }
  }
  double sampled = 0.0;  // the length inside, from small steps
  constexpr int kSteps = 2000;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2d way = points[i] - points[i - 1];
    for (int step = 0; step < kSteps; ++step) {
      const cv::Point2d middle = points[i - 1] + (step + 0.5) / kSteps * way;
      const bool is_inside = middle.x >= 0.0 && middle.x <= 10.0 && middle.y >= 0.0 && middle.y <= 5.0;
      sampled += is_inside ? cv::norm(way) / kSteps : 0.0;
    }
  }
  RC_ASSERT(std::abs(clipped - sampled) <= 0.05 * static_cast<double>(points.size()));
}

}  // namespace
}  // namespace controller_base::demo
