#include "follower/path_geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "test/support/paths.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PathOf;
using controller_base_test::PoseAt;
using controller_base_test::Xy;

// Poses 0.05 m apart along the x axis up to `length`.
nav_msgs::Path Straight(double length) {
  std::vector<Xy> points;
  for (int i = 0; i <= static_cast<int>(std::lround(length / 0.05)); ++i) {
    points.push_back({0.05 * i, 0.0});
  }
  return PathOf(points);
}

// Poses 0.05 m apart along the x axis to `corner`, and 0.3 m on from there in the direction `turn` (radians).
nav_msgs::Path Bent(double corner, double turn) {
  nav_msgs::Path path = Straight(corner);
  for (int i = 1; i <= 6; ++i) {
    path.poses.push_back(PoseAt(corner + 0.05 * i * std::cos(turn), 0.05 * i * std::sin(turn)));
  }
  return path;
}

TEST(PathLength, IsTheSumOfTheSteps) {
  EXPECT_EQ(PathLength({}), 0.0);
  EXPECT_EQ(PathLength(PathOf({{1, 1}})), 0.0);
  EXPECT_DOUBLE_EQ(PathLength(PathOf({{0, 0}, {3, 4}, {3, 4}, {3, 3}})), 6.0);
}

TEST(Beginning, EndsBeforeTheWayExceedsItsLength) {
  const nav_msgs::Path path = PathOf({{0, 0}, {1, 0}, {1, 1}, {2, 1}});
  EXPECT_EQ(Beginning(path, 0.0).poses.size(), 1u);
  EXPECT_EQ(Beginning(path, 0.99).poses.size(), 1u);
  EXPECT_EQ(Beginning(path, 1.0).poses.size(), 2u);
  EXPECT_EQ(Beginning(path, 2.5).poses.size(), 3u);
  EXPECT_EQ(Beginning(path, 100.0).poses.size(), 4u);
  EXPECT_TRUE(Beginning({}, 1.0).poses.empty());
  EXPECT_EQ(Beginning(path, 1.0).header.frame_id, "map");
}

TEST(TargetOn, IsTheFirstPoseThatIsFarEnoughAndNeverTheOneThatWasPassed) {
  const nav_msgs::Path path = Straight(1.0);
  EXPECT_DOUBLE_EQ(TargetOn(path, {0.0, 0.0, 0.0}, 0.38).x, 0.4);
  EXPECT_DOUBLE_EQ(TargetOn(path, {0.0, 0.0, 0.0}, 5.0).x, 1.0);
  EXPECT_DOUBLE_EQ(TargetOn(path, {0.3, 0.0, 0.0}, 0.05).x, 0.05);  // the first pose is behind the robot
  EXPECT_DOUBLE_EQ(TargetOn(PathOf({{2, 3}}), {0.0, 0.0, 0.0}, 0.4).x, 2.0);
}

TEST(TargetAlong, IsMeasuredAlongThePath) {
  const nav_msgs::Path path = PathOf({{0, 0}, {0.1, 0}, {0, 0}, {-0.1, 0}});
  EXPECT_DOUBLE_EQ(TargetAlong(path, 0.15).x, 0.0);
  EXPECT_DOUBLE_EQ(TargetAlong(path, 0.25).x, -0.1);
  EXPECT_DOUBLE_EQ(TargetAlong(path, 5.0).x, -0.1);
  EXPECT_DOUBLE_EQ(TargetAlong(PathOf({{2, 3}}), 0.15).x, 2.0);
}

TEST(TurnsBack, ABendOfMoreThanATwelfthPastARightAngleCounts) {
  const double degree = kPi / 180;
  EXPECT_FALSE(TurnsBack(Straight(1.0)));
  EXPECT_FALSE(TurnsBack(Bent(0.3, 119 * degree)));
  EXPECT_TRUE(TurnsBack(Bent(0.3, 121 * degree)));
  EXPECT_TRUE(TurnsBack(Bent(0.3, -121 * degree)));
  EXPECT_TRUE(TurnsBack(Bent(0.3, 180 * degree)));
}

TEST(TurnsBack, OnlyWithinTheNextSixtyCentimetresAndWithThreePosesOnBothSides) {
  EXPECT_TRUE(TurnsBack(Bent(0.40, kPi)));
  EXPECT_FALSE(TurnsBack(Bent(0.60, kPi)));  // the horizon ends at the bend
  EXPECT_TRUE(TurnsBack(Bent(0.15, kPi)));
  EXPECT_FALSE(TurnsBack(Bent(0.05, kPi)));
  EXPECT_FALSE(TurnsBack({}));
  EXPECT_FALSE(TurnsBack(PathOf({{0, 0}, {1, 0}, {0, 0}})));
}

TEST(IndexOf, IsTheFirstPoseAtThatPlace) {
  const nav_msgs::Path path = PathOf({{0, 0}, {1, 0}, {2, 0}, {1, 0}});
  EXPECT_EQ(IndexOf(path, PoseAt(1, 0)), 1);
  EXPECT_EQ(IndexOf(path, PoseAt(1, 1e-9)), 4);
  EXPECT_EQ(IndexOf({}, PoseAt(0, 0)), 0);
}

TEST(PathFromRobot, LeadsFromTheRobotToThePathInPosesAsCloseAsItsOwn) {
  const nav_msgs::Path path = PathFromRobot(PoseAt(0.0, 0.3), Straight(0.5));
  ASSERT_GT(path.poses.size(), 11u);
  EXPECT_DOUBLE_EQ(path.poses.front().pose.position.y, 0.3);
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    EXPECT_LE(Distance(path.poses[i - 1].pose.position, path.poses[i].pose.position), kTrackingSpacing + 1e-12);
  }
  EXPECT_DOUBLE_EQ(path.poses.back().pose.position.x, 0.5);
  EXPECT_TRUE(PathFromRobot(PoseAt(0.0, 0.3), {}).poses.empty());
}

}  // namespace
}  // namespace controller_base::follower
