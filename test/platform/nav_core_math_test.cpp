// Points and oriented rectangles.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "nav_core/math/box2d.h"
#include "nav_core/math/vec2d.h"
#include "test/support/generators.h"

namespace controller_base_test {
namespace {

using nav_core::math::Box2d;
using nav_core::math::Vec2d;

static_assert(std::is_same_v<decltype(&Box2d::GetAllCorners), const std::vector<Vec2d>& (Box2d::*)() const>);
static_assert(std::is_same_v<decltype(&Box2d::IsPointIn), bool (Box2d::*)(const Vec2d&) const>);
static_assert(std::is_same_v<decltype(Vec2d::x), double> && std::is_same_v<decltype(Vec2d::y), double>);
static_assert(!std::is_polymorphic_v<Box2d>);

constexpr double kPi = 3.14159265358979323846;
constexpr double kTolerance = 1e-9;  // metres that still count as the edge

void ExpectCorners(const Box2d& box, const std::vector<Xy>& corners) {
  ASSERT_EQ(box.GetAllCorners().size(), corners.size());
  for (std::size_t i = 0; i < corners.size(); ++i) {
    EXPECT_NEAR(box.GetAllCorners()[i].x, corners[i].x, 1e-12) << "corner " << i;
    EXPECT_NEAR(box.GetAllCorners()[i].y, corners[i].y, 1e-12) << "corner " << i;
  }
}

// Twice the area that the corners enclose; positive when they run counter-clockwise.
double SignedDoubleArea(const std::vector<Vec2d>& corners) {
  double sum = 0.0;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Vec2d& a = corners[i];
    const Vec2d& b = corners[(i + 1) % corners.size()];
    sum += a.x * b.y - b.x * a.y;
  }
  return sum;
}

// The point `along` the heading and `across` it (to the left) from the centre.
Vec2d Beside(const Vec2d& center, double heading, double along, double across) {
  return {center.x + along * std::cos(heading) - across * std::sin(heading),
          center.y + along * std::sin(heading) + across * std::cos(heading)};
}

TEST(Vec2d, StartsAtZeroOrAsGiven) {
  EXPECT_EQ(Vec2d().x, 0.0);
  EXPECT_EQ(Vec2d().y, 0.0);
  EXPECT_EQ(Vec2d(3, -4).x, 3.0);
  EXPECT_EQ(Vec2d(3, -4).y, -4.0);
}

TEST(Box2d, LengthLiesAlongTheHeading) {
  ExpectCorners(Box2d({1, 2}, 0.0, 4.0, 2.0), {{-1, 1}, {3, 1}, {3, 3}, {-1, 3}});
  ExpectCorners(Box2d({0, 0}, kPi / 2, 4.0, 2.0), {{1, -2}, {1, 2}, {-1, 2}, {-1, -2}});
  const double h = std::sqrt(0.5);
  ExpectCorners(Box2d({0, 0}, kPi / 4, 2.0, 2.0), {{0, -2 * h}, {2 * h, 0}, {0, 2 * h}, {-2 * h, 0}});
}

TEST(Box2d, HoldsItsInside) {
  const Box2d box({1, 2}, 0.0, 4.0, 2.0);
  EXPECT_TRUE(box.IsPointIn({1, 2}));
  EXPECT_TRUE(box.IsPointIn({2.9, 2.9}));
  EXPECT_TRUE(box.IsPointIn({-0.9, 1.1}));
  EXPECT_FALSE(box.IsPointIn({1, 3.1}));
  EXPECT_FALSE(box.IsPointIn({3.1, 2}));
  EXPECT_FALSE(box.IsPointIn({-1.1, 2}));
  EXPECT_FALSE(box.IsPointIn({1, 0.9}));
}

TEST(Box2d, HoldsItsEdgeAndABillionthBeyond) {
  const Vec2d center(3, -2);
  for (const double heading : {0.0, 0.3, kPi / 4, 1.0, kPi / 2, 2.5, kPi, -0.7, -kPi / 2, 100.0}) {
    const Box2d box(center, heading, 0.8, 0.3);
    for (const double side : {-1.0, 1.0}) {
      for (const double share : {-1.0, -0.5, 0.0, 0.7, 1.0}) {
        const auto is_in = [&](double along, double across) {
          return box.IsPointIn(Beside(center, heading, along, across));
        };
        EXPECT_TRUE(is_in(side * 0.4, share * 0.15)) << heading;
        EXPECT_TRUE(is_in(share * 0.4, side * 0.15)) << heading;
        EXPECT_TRUE(is_in(side * (0.4 + 0.9 * kTolerance), share * 0.15)) << heading;
        EXPECT_TRUE(is_in(share * 0.4, side * (0.15 + 0.9 * kTolerance))) << heading;
        EXPECT_FALSE(is_in(side * (0.4 + 1.1 * kTolerance), share * 0.15)) << heading;
        EXPECT_FALSE(is_in(share * 0.4, side * (0.15 + 1.1 * kTolerance))) << heading;
      }
    }
  }
}

TEST(Box2d, WithoutWidthIsALine) {
  const Box2d line({0, 0}, 0.0, 2.0, 0.0);
  EXPECT_TRUE(line.IsPointIn({0.5, 0}));
  EXPECT_TRUE(line.IsPointIn({-1, 0}));
  EXPECT_FALSE(line.IsPointIn({0.5, 1e-6}));
  EXPECT_FALSE(line.IsPointIn({1.1, 0}));
}

TEST(Box2d, WithoutSizeIsAPoint) {
  const Box2d point({5, 6}, 1.0, 0.0, 0.0);
  EXPECT_TRUE(point.IsPointIn({5, 6}));
  EXPECT_FALSE(point.IsPointIn({5, 6.001}));
}

TEST(Box2d, WhatIsNoPlaceIsOutside) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const Box2d box({0, 0}, 0.5, 2.0, 2.0);
  for (const double nowhere : {nan, infinity, -infinity, 1e308}) {
    EXPECT_FALSE(box.IsPointIn({nowhere, 0}));
    EXPECT_FALSE(box.IsPointIn({0, nowhere}));
    EXPECT_FALSE(box.IsPointIn({nowhere, nowhere}));
  }
  EXPECT_FALSE(Box2d({nan, 0}, 0.0, 2.0, 2.0).IsPointIn({0, 0}));
  EXPECT_FALSE(Box2d({0, infinity}, 0.0, 2.0, 2.0).IsPointIn({0, 0}));
  EXPECT_FALSE(Box2d({0, 0}, nan, 2.0, 2.0).IsPointIn({0, 0}));
  EXPECT_FALSE(Box2d({0, 0}, infinity, 2.0, 2.0).IsPointIn({0, 0}));
}

TEST(Box2d, CopiesAreIndependent) {
  Box2d box({0, 0}, 0.0, 2.0, 2.0);
  const Box2d copy = box;
  box = Box2d({10, 10}, 1.0, 1.0, 1.0);
  EXPECT_TRUE(copy.IsPointIn({0, 0}));
  EXPECT_FALSE(box.IsPointIn({0, 0}));
  ExpectCorners(copy, {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}});
}

RC_GTEST_PROP(Box2dProperty, CornersRunCounterClockwiseAroundTheBox, ()) {
  const Xy center = *Points(1000, 0.01).as("center");
  const double heading = *Multiples(-700, 700, 0.01).as("heading");
  const double length = *Multiples(1, 500, 0.01).as("length");
  const double width = *Multiples(1, 500, 0.01).as("width");
  const Box2d box({center.x, center.y}, heading, length, width);
  const std::vector<Vec2d>& corners = box.GetAllCorners();
  RC_ASSERT(corners.size() == 4u);
  RC_ASSERT(std::abs(SignedDoubleArea(corners) - 2 * length * width) < 1e-9);
  for (const Vec2d& corner : corners) {
    RC_ASSERT(box.IsPointIn(corner));
    const double reach = std::hypot(corner.x - center.x, corner.y - center.y);
    RC_ASSERT(std::abs(reach - std::hypot(length, width) / 2) < 1e-12);
  }
}

RC_GTEST_PROP(Box2dProperty, APointIsInWhenItIsLeftOfEveryEdge, ()) {
  const Xy center = *Points(200, 0.01).as("center");
  const double heading = *Multiples(-700, 700, 0.01).as("heading");
  const double length = *Multiples(1, 300, 0.01).as("length");
  const double width = *Multiples(1, 300, 0.01).as("width");
  const Xy point = *Points(400, 0.01).as("point");
  const Box2d box({center.x, center.y}, heading, length, width);
  const std::vector<Vec2d>& corners = box.GetAllCorners();
  double least = std::numeric_limits<double>::infinity();  // signed distance to the edges, positive inside
  for (std::size_t i = 0; i < 4; ++i) {
    const Vec2d& a = corners[i];
    const Vec2d& b = corners[(i + 1) % 4];
    const double cross = (b.x - a.x) * (point.y - a.y) - (b.y - a.y) * (point.x - a.x);
    least = std::min(least, cross / std::hypot(b.x - a.x, b.y - a.y));
  }
  RC_PRE(std::abs(least + kTolerance) > 1e-12);
  RC_ASSERT(box.IsPointIn({point.x, point.y}) == (least > -kTolerance));
}

}  // namespace
}  // namespace controller_base_test
