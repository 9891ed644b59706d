#include "demo/messages/markers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace controller_base::demo {
namespace {

using visualization_msgs::Marker;

const MarkerLook kLook{Rgb(1.0, 0.5, 0.0, 0.8), 0.04, 0.1};
const ros::Time kNow(103.0);

geometry_msgs::Point At(double x, double y) {
  geometry_msgs::Point point;
  point.x = x;
  point.y = y;
  return point;
}

void ExpectSound(const Marker& marker) {
  SCOPED_TRACE(marker.ns);
  EXPECT_FALSE(marker.ns.empty());
  EXPECT_EQ(marker.id, 0);
  EXPECT_EQ(marker.header.stamp, kNow);
  EXPECT_EQ(marker.action, Marker::ADD);
  EXPECT_EQ(marker.pose.orientation.w, 1.0);
  EXPECT_EQ(marker.color.a, 0.8F);
  EXPECT_GT(marker.scale.x + marker.scale.z, 0.0);
}

TEST(Markers, AreSound) {
  for (const Marker& marker :
       {LineMarker("line", {At(0, 0), At(1, 1)}, kLook, kNow), DotsMarker("dots", {At(0, 0)}, kLook, kNow),
        BoxesMarker("boxes", {{At(0, 0), 0.0}}, kLook, kNow), TextMarker("text", At(0, 0), "hello", kLook, kNow)}) {
    ExpectSound(marker);
    EXPECT_EQ(marker.header.frame_id, "map");
    EXPECT_EQ(marker.pose.position.z, 0.1);
  }
  for (const Marker& marker : {BodyMarker(kLook, kNow), NoseMarker(kLook, kNow)}) {
    ExpectSound(marker);
    EXPECT_EQ(marker.header.frame_id, "base_link");
  }
}

TEST(Markers, WithNothingToShowRemoveTheOneBefore) {
  for (const Marker& marker : {LineMarker("line", {At(0, 0)}, kLook, kNow), DotsMarker("dots", {}, kLook, kNow),
                               BoxesMarker("boxes", {}, kLook, kNow), TextMarker("text", At(0, 0), "", kLook, kNow)}) {
    EXPECT_EQ(marker.action, Marker::DELETE) << marker.ns;
    EXPECT_EQ(marker.id, 0);
    EXPECT_EQ(marker.header.frame_id, "map");
  }
}

TEST(Markers, ABoxIsOutlinedByFourEdgesAroundItsCentre) {
  const Marker marker = BoxesMarker("boxes", {{At(3, 4), 0.5 * follower::kPi}, {At(0, 0), 0.0}}, kLook, kNow);
  ASSERT_EQ(marker.points.size(), 16u);
  const auto [low_x, high_x] = std::minmax_element(marker.points.begin(), marker.points.begin() + 8,
                                                   [](const auto& a, const auto& b) { return a.x < b.x; });
  const auto [low_y, high_y] = std::minmax_element(marker.points.begin(), marker.points.begin() + 8,
                                                   [](const auto& a, const auto& b) { return a.y < b.y; });
  EXPECT_NEAR(low_x->x, 2.95, 1e-12);  // 0.1 m across the heading
  EXPECT_NEAR(high_x->x, 3.05, 1e-12);
  EXPECT_NEAR(low_y->y, 3.9, 1e-12);  // 0.2 m along it
  EXPECT_NEAR(high_y->y, 4.1, 1e-12);
  for (std::size_t i = 1; i + 1 < 8; i += 2) {
    EXPECT_EQ(follower::Distance(marker.points[i], marker.points[i + 1]),
              0.0);  // each edge begins where the last one ends
  }
}

TEST(Markers, ObstaclesAreShownWhereAndWhenTheyAreThere) {
  simulation::Obstacle box{"box", {1.0, 2.0}, 0.0, 0.4, 0.2};
  box.appears_at = 5.0;
  box.vanishes_at = 9.0;
  simulation::Obstacle sill{"sill", {3.0, 2.0}, 0.0, 0.4, 0.2, true};
  const auto at = [&](double time, bool low) { return ObstaclesMarker("o", {box, sill}, time, low, kLook, kNow); };
  EXPECT_EQ(at(4.9, false).action, Marker::DELETE);
  EXPECT_EQ(at(9.0, false).action, Marker::DELETE);
  const Marker shown = at(5.0, false);
  ExpectSound(shown);
  ASSERT_EQ(shown.points.size(), 6u);  // two triangles
  for (const geometry_msgs::Point& corner : shown.points) {
    EXPECT_NEAR(std::abs(corner.x - 1.0), 0.2, 1e-12);
    EXPECT_NEAR(std::abs(corner.y - 2.0), 0.1, 1e-12);
  }
  const Marker low = at(0.0, true);
  ASSERT_EQ(low.points.size(), 6u);
  EXPECT_NEAR(std::abs(low.points[0].x - 3.0), 0.2, 1e-12);
}

TEST(Markers, ADiscIsShownAsOne) {
  simulation::Obstacle disc;
  disc.center = {1.0, 2.0};
  disc.radius = 0.3;
  const Marker shown = ObstaclesMarker("o", {disc}, 0.0, false, kLook, kNow);
  EXPECT_GE(shown.points.size(), 3u * 12u);
  for (const geometry_msgs::Point& corner : shown.points) {
    EXPECT_NEAR(follower::Distance(corner, At(1.0, 2.0)), 0.3, 1e-12);
  }
}

TEST(Markers, WhatMovesIsShownWhereItIsThen) {
  simulation::Obstacle cart{"cart", {1.0, 2.0}, 0.0, 0.4, 0.2};
  cart.destination = nav_core::math::Vec2d(1.0, 4.0);
  cart.speed = 0.5;
  const Marker shown = ObstaclesMarker("o", {cart}, 3.0, false, kLook, kNow);
  ASSERT_EQ(shown.points.size(), 6u);
  for (const geometry_msgs::Point& corner : shown.points) {
    EXPECT_NEAR(std::abs(corner.x - 1.0), 0.2, 1e-12);
    EXPECT_NEAR(std::abs(corner.y - 3.5), 0.1, 1e-12);
  }
}

TEST(Markers, ACircleIsClosedAndGoesWithItsRadius) {
  const Marker circle = CircleMarker("circle", {1.0, 2.0, 0.0}, 0.3, kLook, kNow);
  ExpectSound(circle);
  EXPECT_NEAR(follower::Distance(circle.points.front(), circle.points.back()), 0.0, 1e-12);
  for (const geometry_msgs::Point& point : circle.points) {
    EXPECT_NEAR(follower::Distance(point, At(1.0, 2.0)), 0.3, 1e-12);
  }
  EXPECT_EQ(CircleMarker("circle", {1.0, 2.0, 0.0}, 0.0, kLook, kNow).action, Marker::DELETE);
}

TEST(Markers, TheTextStandsAtItsPlace) {
  const Marker marker = TextMarker("text", At(3, 4), "hello", kLook, kNow);
  EXPECT_EQ(marker.text, "hello");
  EXPECT_EQ(marker.pose.position.x, 3.0);
  EXPECT_EQ(marker.pose.position.y, 4.0);
  EXPECT_EQ(marker.scale.z, kLook.width);
}

}  // namespace
}  // namespace controller_base::demo
