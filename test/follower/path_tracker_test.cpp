#include "follower/path_tracker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "follower/path_geometry.h"
#include "test/support/log_capture.h"
#include "test/support/paths.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PathOf;
using controller_base_test::PointAt;
using controller_base_test::PoseAt;

class PathTrackerTest : public testing::Test {
 protected:
  void SetUp() override { ros::Time::init(); }

  nav_msgs::Path Track(double x, double y) { return tracker_.Track(PoseAt(x, y), map_); }

  // Cycles along x, close enough together for the index to follow the robot.
  void DriveTo(double x) {
    for (double at = 0.0; at <= x; at += 0.2) {
      Track(at, 0.0);
    }
  }

  Parameters parameters_;
  PathTracker tracker_{parameters_};
  costmap_2d::Costmap2D map_{120, 120, 0.05, -3.0, -3.0};
};

TEST_F(PathTrackerTest, TheStretchAheadReachesAsFarAsTheLocalMap) {
  tracker_.Start(PathOf({{0, 0}, {10, 0}}));
  const nav_msgs::Path stretch = Track(0.02, 0.1);
  EXPECT_DOUBLE_EQ(stretch.poses.front().pose.position.x, 0.0);
  EXPECT_NEAR(stretch.poses.back().pose.position.x, 3.0, 0.06);
  EXPECT_NEAR(tracker_.deviation(), 0.1, 1e-12);
  EXPECT_EQ(tracker_.size(), 202u);  // 0.05 m between poses, or slightly less
  EXPECT_FALSE(tracker_.EndsAtGoal(stretch));
}

TEST_F(PathTrackerTest, TheBudgetIsThePathsLengthAndTime) {
  tracker_.Start(PathOf({{0, 0}, {6, 0}}));
  EXPECT_NEAR(tracker_.Budget().total_distance, 6.0, 1e-9);
  EXPECT_NEAR(tracker_.Budget().total_time, 50.0, 1e-9);
}

TEST_F(PathTrackerTest, ItHasArrivedWithinTheToleranceOfTheLastPose) {
  tracker_.Start(PathOf({{0, 0}, {2, 0}}));
  DriveTo(2.0);
  const nav_msgs::Path stretch = Track(1.96, 0.0);
  EXPECT_TRUE(tracker_.EndsAtGoal(stretch));
  EXPECT_TRUE(tracker_.HasArrived({1.96, 0.0, 0.0}, stretch));
  EXPECT_TRUE(tracker_.HasArrived({1.951, 0.0, 1.0}, stretch));
  EXPECT_FALSE(tracker_.HasArrived({1.949, 0.0, 0.0}, stretch));
  EXPECT_FALSE(tracker_.HasArrived({1.96, 0.0, 0.0}, {}));
  parameters_.goal_tolerance = 0.2;
  EXPECT_TRUE(tracker_.HasArrived({1.85, 0.0, 0.0}, stretch));
}

// The robot has not arrived at the start of a path that begins and ends at one place.
TEST_F(PathTrackerTest, BesideTheGoalWithTheWayBeforeItItHasNotArrived) {
  tracker_.Start(PathOf({{0, 0}, {1, 0}, {1, 0.5}, {0, 0.02}}));
  const nav_msgs::Path stretch = Track(0.0, 0.0);
  EXPECT_TRUE(tracker_.EndsAtGoal(stretch));
  EXPECT_FALSE(tracker_.HasArrived({0.0, 0.01, 0.0}, stretch));
}

TEST_F(PathTrackerTest, TheDeviationOfBeforeStaysWhereTheMapShowsNothingOfThePath) {
  tracker_.Start(PathOf({{0, 0}, {2, 0}}));
  Track(0.5, 0.2);
  map_ = costmap_2d::Costmap2D(10, 10, 0.05, 30.0, 30.0);
  EXPECT_TRUE(Track(0.5, 0.4).poses.empty());
  EXPECT_NEAR(tracker_.deviation(), 0.2, 0.001);
}

// A bend of 3 m is cut off: from its beginning the index alone would not see its end.
TEST_F(PathTrackerTest, TheIndexIsWalkedAlongWhatADetourReplaced) {
  const nav_msgs::Path path = PathOf({{0, 0}, {0, 1.5}, {0.5, 1.5}, {0.5, 0}, {2, 0}});
  tracker_.Start(path);
  Track(0.0, 0.0);
  Track(0.5, 0.0);
  EXPECT_LT(tracker_.index(), 20u);
  const nav_msgs::Path stretch = PathFromRobot(PoseAt(0.0, 0.0), PathOf({{0, 1.5}, {0.5, 1.5}, {0.5, 0}, {1, 0}}));
  tracker_.WalkAlong(stretch, PointAt(0.5, 0.0), 0.05);
  Track(0.5, 0.0);
  EXPECT_NEAR(0.05 * static_cast<double>(tracker_.index()), 3.5, 0.15);
  EXPECT_LT(tracker_.deviation(), 0.05);
}

TEST_F(PathTrackerTest, AWalkBeginsAtTheIndexSoThatNoDeviationIsWarnedOf) {
  tracker_.Start(PathOf({{0, 0}, {4, 0}}));
  const nav_msgs::Path stretch = Track(0.0, 0.0);
  DriveTo(1.5);
  const controller_base_test::LogCapture log(ros::console::levels::Warn);
  tracker_.WalkAlong(stretch, PointAt(2.5, 0.0), 0.05);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
  EXPECT_NEAR(0.05 * static_cast<double>(tracker_.index()), 2.5, 0.15);
}

TEST_F(PathTrackerTest, ANewPathStartsAtItsBeginning) {
  tracker_.Start(PathOf({{0, 0}, {2, 0}}));
  DriveTo(1.5);
  EXPECT_GT(tracker_.index(), 20u);
  tracker_.Start(PathOf({{0, 0}, {2, 0}}));
  EXPECT_EQ(tracker_.index(), 0u);
  EXPECT_DOUBLE_EQ(tracker_.goal().x, 2.0);
}

}  // namespace
}  // namespace controller_base::follower
