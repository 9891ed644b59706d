// Following the robot along its path: the bounded search, the deviation warning, the budget and the local stretch.
#include "controller_base/trajectory_analyzer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "controller_base/path_interpolation.h"
#include "test/support/generators.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using geometry_msgs::Point;
using geometry_msgs::Pose;
using geometry_msgs::PoseStamped;
using nav_controller::ControlProgress;
using nav_controller::LocalMap;
using nav_controller::TrajectoryAnalyzer;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

template <typename Class, typename Result, typename... Arguments>
using ConstMember = Result (Class::*)(Arguments...) const;

static_assert(!std::is_polymorphic_v<TrajectoryAnalyzer>);
static_assert(std::is_constructible_v<TrajectoryAnalyzer, const nav_msgs::Path&>);
static_assert(!std::is_default_constructible_v<TrajectoryAnalyzer>);
static_assert(std::is_same_v<LocalMap, costmap_2d::Costmap2D>);
static_assert(std::is_same_v<decltype(&TrajectoryAnalyzer::IsPathInitialized), ConstMember<TrajectoryAnalyzer, bool>>);
static_assert(
    std::is_same_v<decltype(&TrajectoryAnalyzer::GetPathSize), ConstMember<TrajectoryAnalyzer, std::uint64_t>>);
static_assert(
    std::is_same_v<decltype(&TrajectoryAnalyzer::GetCurrentIndex), ConstMember<TrajectoryAnalyzer, std::uint64_t>>);
static_assert(std::is_same_v<decltype(&TrajectoryAnalyzer::DistanceToPathSegment),
                             ConstMember<TrajectoryAnalyzer, double, const Point&, const Pose&, const Pose&>>);
static_assert(std::is_same_v<decltype(&TrajectoryAnalyzer::QueryNearestPoint),
                             ConstMember<TrajectoryAnalyzer, Point, const Point&>>);
static_assert(std::is_same_v<decltype(&TrajectoryAnalyzer::PathTransformToLocalMap),
                             ConstMember<TrajectoryAnalyzer, nav_msgs::Path, const LocalMap*>>);
static_assert(std::is_same_v<decltype(&TrajectoryAnalyzer::GenerateControllProgress),
                             void (TrajectoryAnalyzer::*)(ControlProgress*)>);

static_assert(std::is_aggregate_v<ControlProgress> && sizeof(ControlProgress) == 6 * sizeof(double));

constexpr double kStep = 0.04;  // metres; shorter than the resampling's spacing, so that poses keep their numbers
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// `count` poses along x, one every kStep.
nav_msgs::Path StraightPath(int count) {
  std::vector<Xy> points;
  for (int i = 0; i < count; ++i) {
    points.push_back({i * kStep, 0});
  }
  return PathOf(points);
}

// A map of 8 m x 8 m around the origin: everything the tests draw lies on it.
LocalMap WideMap() { return LocalMap(160, 160, 0.05, -4.0, -4.0); }

std::vector<PoseStamped> StoredPoses(const TrajectoryAnalyzer& analyzer) {
  const LocalMap map = WideMap();
  return analyzer.PathTransformToLocalMap(&map).poses;
}

void Drive(TrajectoryAnalyzer& analyzer, double x, double y) { analyzer.UpdateIndex(PoseAt(x, y)); }

// Takes the robot along a straight path until the index is `index`.
void DriveToIndex(TrajectoryAnalyzer& analyzer, int index) {
  for (int i = 0; i <= index; ++i) {
    Drive(analyzer, (i + 0.5) * kStep, 0);
  }
  ASSERT_EQ(analyzer.GetCurrentIndex(), static_cast<std::uint64_t>(index));
}

class TrajectoryAnalyzerTest : public SimTimeTest {
 protected:
  LogCapture log_;
};

TEST(ControlProgressRecord, StartsAtZeroInItsOrder) {
  const auto& [moved_distance, total_distance, distance_ratio, elapsed_time, total_time, time_ratio] =
      ControlProgress{1, 2, 3, 4, 5, 6};
  EXPECT_THAT(
      (std::vector<double>{moved_distance, total_distance, distance_ratio, elapsed_time, total_time, time_ratio}),
      ElementsAre(1, 2, 3, 4, 5, 6));
  const ControlProgress fresh;
  EXPECT_EQ(fresh.moved_distance, 0.0);
  EXPECT_EQ(fresh.total_distance, 0.0);
  EXPECT_EQ(fresh.distance_ratio, 0.0);
  EXPECT_EQ(fresh.elapsed_time, 0.0);
  EXPECT_EQ(fresh.total_time, 0.0);
  EXPECT_EQ(fresh.time_ratio, 0.0);
}

TEST_F(TrajectoryAnalyzerTest, HasNoPathBeforeOneWithPosesArrives) {
  TrajectoryAnalyzer analyzer{nav_msgs::Path()};
  EXPECT_FALSE(analyzer.IsPathInitialized());
  EXPECT_EQ(analyzer.GetPathSize(), 0u);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
  analyzer.InitializePath(PathOf({{1, 2}}));
  EXPECT_TRUE(analyzer.IsPathInitialized());
  EXPECT_EQ(analyzer.GetPathSize(), 1u);
}

TEST_F(TrajectoryAnalyzerTest, ResamplesAtFiveCentimetres) {
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{0, 0}, {0.04, 0}})).GetPathSize(), 2u);
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{0, 0}, {std::nextafter(0.05, 0.0), 0}})).GetPathSize(), 2u);
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{0, 0}, {0.05, 0}})).GetPathSize(), 3u);
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{0, 0}, {0.10, 0}})).GetPathSize(), 4u);
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{0, 0}, {1, 0}, {1, 1}})).GetPathSize(), 43u);
}

TEST_F(TrajectoryAnalyzerTest, ForcesWOfEveryOrientationToOneAndKeepsTheRest) {
  nav_msgs::Path path = PathOf({{0, 0}, {0.01, 0}, {0.02, 0}});
  path.poses[0].pose.orientation = QuaternionOf(0, 0, 0, 0);
  path.poses[1].pose.orientation = QuaternionOf(0, 0, 0.7071, 0.7071);
  path.poses[2].pose.orientation = QuaternionOf(0.1, 0.2, 0.3, -5.0);
  const std::vector<PoseStamped> stored = StoredPoses(TrajectoryAnalyzer(path));
  ASSERT_EQ(stored.size(), 3u);
  EXPECT_EQ(stored[0].pose.orientation, QuaternionOf(0, 0, 0, 1));
  EXPECT_EQ(stored[1].pose.orientation, QuaternionOf(0, 0, 0.7071, 1));
  EXPECT_EQ(stored[2].pose.orientation, QuaternionOf(0.1, 0.2, 0.3, 1));
}

TEST_F(TrajectoryAnalyzerTest, BlendsTheOrientationsAfterForcingW) {
  nav_msgs::Path path = PathOf({{0, 0}, {0.05, 0}});
  path.poses[0].pose.orientation = QuaternionOf(0, 0, 0, 0);
  path.poses[1].pose.orientation = QuaternionOf(0, 0, 1, 0);
  const std::vector<PoseStamped> stored = StoredPoses(TrajectoryAnalyzer(path));
  ASSERT_EQ(stored.size(), 3u);
  const double norm = std::sqrt(0.5 * 0.5 + 1.0);
  EXPECT_NEAR(stored[1].pose.orientation.z, 0.5 / norm, 1e-12);
  EXPECT_NEAR(stored[1].pose.orientation.w, 1.0 / norm, 1e-12);
}

TEST_F(TrajectoryAnalyzerTest, LeavesTheCallersPathAlone) {
  nav_msgs::Path path = PathOf({{0, 0}, {1, 0}});
  path.poses[0].pose.orientation = QuaternionOf(0, 0, 0.5, 0.5);
  const nav_msgs::Path before = path;
  const TrajectoryAnalyzer analyzer(path);
  EXPECT_EQ(path, before);
}

TEST_F(TrajectoryAnalyzerTest, AnEmptyPathKeepsPathIndexAndDeviation) {
  TrajectoryAnalyzer analyzer(StraightPath(50));
  DriveToIndex(analyzer, 20);
  Drive(analyzer, 20.5 * kStep, 1.0);
  ASSERT_THAT(log_.Lines(), SizeIs(1));
  analyzer.InitializePath(nav_msgs::Path());
  EXPECT_EQ(analyzer.GetPathSize(), 50u);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 20u);
  Drive(analyzer, 20.5 * kStep, 1.0);
  EXPECT_THAT(log_.Lines(), SizeIs(1));  // still the same excursion
}

TEST_F(TrajectoryAnalyzerTest, ANewPathRestartsIndexAndDeviation) {
  TrajectoryAnalyzer analyzer(StraightPath(50));
  DriveToIndex(analyzer, 20);
  Drive(analyzer, 20.5 * kStep, 1.0);
  analyzer.InitializePath(StraightPath(30));
  EXPECT_EQ(analyzer.GetPathSize(), 30u);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
  Drive(analyzer, 0, 1.0);
  EXPECT_THAT(log_.Lines(), SizeIs(2));
}

TEST_F(TrajectoryAnalyzerTest, UpdatingWithoutAPathDoesNothing) {
  TrajectoryAnalyzer analyzer{nav_msgs::Path()};
  Drive(analyzer, 5, 5);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(TrajectoryAnalyzerTest, APathOfOnePoseCountsAsInfinitelyFar) {
  TrajectoryAnalyzer analyzer(PathOf({{1, 2}}));
  for (int i = 0; i < 3; ++i) {
    Drive(analyzer, 1, 2);
  }
  EXPECT_THAT(
      log_.Lines(),
      ElementsAre(Warn(AllOf(
          StartsWith("Robot has deviated from path! Distance: 179769313486231570"), EndsWith(".00m"),
          SizeIs(std::string("Robot has deviated from path! Distance: ").size() + 309 + std::string(".00m").size())))));
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
}

TEST_F(TrajectoryAnalyzerTest, TwoPosesHaveOneSegment) {
  TrajectoryAnalyzer analyzer(PathOf({{0, 0}, {0.04, 0}}));
  for (const double x : {-0.2, 0.02, 0.04, 0.2}) {
    Drive(analyzer, x, 0);
    EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
  }
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(TrajectoryAnalyzerTest, DuplicatePosesCountAsTheirPoint) {
  TrajectoryAnalyzer analyzer(PathOf({{1, 1}, {1, 1}, {1, 1}}));
  Drive(analyzer, 1.2, 1);
  Drive(analyzer, 1, 1.5);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
  EXPECT_THAT(log_.Lines(), ElementsAre(Warn("Robot has deviated from path! Distance: 0.50m")));
}

TEST_F(TrajectoryAnalyzerTest, FollowsTheRobotAlongThePath) {
  TrajectoryAnalyzer analyzer(StraightPath(60));
  for (int i = 0; i < 59; ++i) {
    Drive(analyzer, (i + 0.5) * kStep, 0.1);
    EXPECT_EQ(analyzer.GetCurrentIndex(), static_cast<std::uint64_t>(i));
  }
  Drive(analyzer, 59 * kStep, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 58u);  // never the last pose
  Drive(analyzer, 200 * kStep, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 58u);
}

TEST_F(TrajectoryAnalyzerTest, OfEqualSegmentsTheEarlierWins) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  Drive(analyzer, 5 * kStep, 0.1);  // straight above pose 5, the end of segment 4 and the start of segment 5
  EXPECT_EQ(analyzer.GetCurrentIndex(), 4u);
  TrajectoryAnalyzer there_and_back(PathOf({{0, 0}, {0.04, 0}, {0, 0}, {0.04, 0}}));
  Drive(there_and_back, 0.02, 0.1);
  EXPECT_EQ(there_and_back.GetCurrentIndex(), 0u);
}

TEST_F(TrajectoryAnalyzerTest, MovesAtMostNineForwardPerCycle) {
  TrajectoryAnalyzer analyzer(StraightPath(100));
  const double far_end = 99 * kStep;
  Drive(analyzer, far_end, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 9u);
  Drive(analyzer, far_end, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 18u);
  for (int i = 0; i < 8; ++i) {
    Drive(analyzer, far_end, 0);
  }
  EXPECT_EQ(analyzer.GetCurrentIndex(), 90u);
  Drive(analyzer, far_end, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 98u);
}

TEST_F(TrajectoryAnalyzerTest, MovesAtMostTenBackPerCycle) {
  TrajectoryAnalyzer analyzer(StraightPath(100));
  DriveToIndex(analyzer, 31);
  for (const std::uint64_t index : {21u, 11u, 1u, 0u, 0u}) {
    Drive(analyzer, -1.0, 0);
    EXPECT_EQ(analyzer.GetCurrentIndex(), index);
  }
}

TEST_F(TrajectoryAnalyzerTest, ASpanThatJustReachesThePathsStartIncludesIt) {
  for (const int from : {9, 10}) {
    TrajectoryAnalyzer analyzer(StraightPath(100));
    DriveToIndex(analyzer, from);
    Drive(analyzer, -1.0, 0);
    EXPECT_EQ(analyzer.GetCurrentIndex(), 0u) << from;
  }
}

TEST_F(TrajectoryAnalyzerTest, ASpanThatJustReachesThePathsEndIncludesTheLastSegment) {
  constexpr int kLastSegment = 38;
  for (const int from : {28, 29, 30, 31}) {
    TrajectoryAnalyzer analyzer(StraightPath(kLastSegment + 2));
    DriveToIndex(analyzer, from);
    Drive(analyzer, 10.0, 0);
    EXPECT_EQ(analyzer.GetCurrentIndex(), static_cast<std::uint64_t>(std::min(from + 9, kLastSegment))) << from;
  }
}

TEST_F(TrajectoryAnalyzerTest, DoesNotJumpToAReturnLegThatPassesCloseBy) {
  std::vector<Xy> points;
  for (int i = 0; i <= 50; ++i) {
    points.push_back({i * kStep, 0});
  }
  for (int i = 50; i >= 0; --i) {
    points.push_back({i * kStep, 0.02});
  }
  TrajectoryAnalyzer analyzer(PathOf(points));
  DriveToIndex(analyzer, 20);
  Drive(analyzer, 20.5 * kStep, 0.019);  // 1 mm from the return leg, 19 mm from the outbound one
  EXPECT_EQ(analyzer.GetCurrentIndex(), 20u);
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(20.5 * kStep, 0.019)).y, 0.02);  // over the whole path
}

TEST_F(TrajectoryAnalyzerTest, ExactlyThirtyCentimetresIsNoDeviation) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  Drive(analyzer, 0.02, 0.3);
  EXPECT_THAT(log_.Lines(), IsEmpty());
  Drive(analyzer, 0.02, std::nextafter(0.3, 1.0));
  EXPECT_THAT(log_.Lines(), ElementsAre(Warn("Robot has deviated from path! Distance: 0.30m")));
}

TEST_F(TrajectoryAnalyzerTest, WarnsOncePerExcursionWithItsFirstDistance) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  Drive(analyzer, 0.02, 0.456);
  Drive(analyzer, 0.02, 2.0);
  Drive(analyzer, 0.02, 0.31);
  EXPECT_THAT(log_.Lines(), ElementsAre(Warn("Robot has deviated from path! Distance: 0.46m")));
  Drive(analyzer, 0.02, 0.3);
  Drive(analyzer, 0.02, -1.0);
  EXPECT_THAT(log_.Lines(), ElementsAre(Warn("Robot has deviated from path! Distance: 0.46m"),
                                        Warn("Robot has deviated from path! Distance: 1.00m")));
}

TEST_F(TrajectoryAnalyzerTest, FollowsADeviatedRobotToo) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  Drive(analyzer, 6.5 * kStep, 3.0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 6u);
  Drive(analyzer, 8.5 * kStep, 3.0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 8u);
}

TEST_F(TrajectoryAnalyzerTest, AThousandCyclesOfADeviatedRobotLogOneLine) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  for (int i = 0; i < 1000; ++i) {
    Drive(analyzer, 0.3, 1.0);
  }
  EXPECT_THAT(log_.Lines(), SizeIs(1));
}

TEST_F(TrajectoryAnalyzerTest, AThousandCyclesOnThePathLogNothing) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  for (int i = 0; i < 1000; ++i) {
    Drive(analyzer, 0.3, 0.29);
  }
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(TrajectoryAnalyzerTest, ARobotWithoutAPlaceIsDeviatedAndKeepsItsIndex) {
  for (const Xy& nowhere : {Xy{kNan, 0}, Xy{0, kNan}, Xy{kInfinity, 0}, Xy{0, -kInfinity}, Xy{1e200, 1e200}}) {
    TrajectoryAnalyzer analyzer(StraightPath(50));
    DriveToIndex(analyzer, 20);
    log_.Clear();
    Drive(analyzer, nowhere.x, nowhere.y);
    Drive(analyzer, nowhere.x, nowhere.y);
    EXPECT_EQ(analyzer.GetCurrentIndex(), 20u) << nowhere;
    EXPECT_THAT(log_.Lines(), ElementsAre(Warn(StartsWith("Robot has deviated from path! Distance: 1797693134"))));
  }
}

TEST_F(TrajectoryAnalyzerTest, SegmentsThatAreNotFiniteAreNeverNearest) {
  TrajectoryAnalyzer analyzer(PathOf({{kNan, 0}, {0, 0}, {0.04, 0}, {kInfinity, 0}, {0.08, 0}, {0.12, 0}}));
  Drive(analyzer, 0.02, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 1u);
  Drive(analyzer, 0.10, 0);
  EXPECT_EQ(analyzer.GetCurrentIndex(), 4u);
}

class SegmentDistance : public testing::Test {
 protected:
  double Distance(const Point& p, const Point& a, const Point& b) const {
    Pose from;
    from.position = a;
    Pose to;
    to.position = b;
    return analyzer_.DistanceToPathSegment(p, from, to);
  }

 private:
  TrajectoryAnalyzer analyzer_{nav_msgs::Path()};
};

TEST_F(SegmentDistance, IsPerpendicularBesideTheSegment) {
  EXPECT_DOUBLE_EQ(Distance(PointAt(1, 0.5), PointAt(0, 0), PointAt(2, 0)), 0.5);
  EXPECT_DOUBLE_EQ(Distance(PointAt(1, -0.5), PointAt(0, 0), PointAt(2, 0)), 0.5);
  EXPECT_DOUBLE_EQ(Distance(PointAt(1, 0), PointAt(0, 0), PointAt(2, 0)), 0.0);
  EXPECT_NEAR(Distance(PointAt(0, 2), PointAt(0, 0), PointAt(2, 2)), std::sqrt(2.0), 1e-12);
}

TEST_F(SegmentDistance, IsTheDistanceToTheNearerEndBeyondIt) {
  EXPECT_DOUBLE_EQ(Distance(PointAt(-3, 4), PointAt(0, 0), PointAt(2, 0)), 5.0);
  EXPECT_DOUBLE_EQ(Distance(PointAt(5, 4), PointAt(0, 0), PointAt(2, 0)), 5.0);
}

TEST_F(SegmentDistance, IgnoresHeight) {
  EXPECT_DOUBLE_EQ(Distance(PointAt(1, 0.5, 9), PointAt(0, 0, -7), PointAt(2, 0, 100)), 0.5);
}

TEST_F(SegmentDistance, TakesAShortSegmentAsItsFirstPoint) {
  EXPECT_DOUBLE_EQ(Distance(PointAt(3, 4), PointAt(0, 0), PointAt(0, 0)), 5.0);
  EXPECT_EQ(Distance(PointAt(1, 0), PointAt(0, 0), PointAt(std::nextafter(1e-6, 0.0), 0)), 1.0);
  EXPECT_DOUBLE_EQ(Distance(PointAt(1, 0), PointAt(0, 0), PointAt(1e-6, 0)), 1.0 - 1e-6);
}

TEST_F(SegmentDistance, OfNoPlaceIsNotANumber) {
  EXPECT_TRUE(std::isnan(Distance(PointAt(kNan, 0), PointAt(0, 0), PointAt(1, 0))));
  EXPECT_TRUE(std::isnan(Distance(PointAt(0, 0), PointAt(kNan, 0), PointAt(1, 0))));
  EXPECT_TRUE(std::isnan(Distance(PointAt(0, 0), PointAt(0, 0), PointAt(1, kNan))));
}

RC_GTEST_FIXTURE_PROP(SegmentDistance, IsTheLeastOverThePointsOfTheSegment, ()) {
  const Xy p = *Points(40, 0.05).as("p");
  const Xy a = *Points(40, 0.05).as("a");
  const Xy b = *Points(40, 0.05).as("b");
  const double distance = Distance(PointAt(p.x, p.y), PointAt(a.x, a.y), PointAt(b.x, b.y));
  constexpr int kSamples = 1000;
  double least = kInfinity;
  for (int i = 0; i <= kSamples; ++i) {
    const double t = static_cast<double>(i) / kSamples;
    least = std::min(least, std::hypot(a.x + t * (b.x - a.x) - p.x, a.y + t * (b.y - a.y) - p.y));
  }
  const double half_gap = std::hypot(b.x - a.x, b.y - a.y) / kSamples / 2;
  RC_ASSERT(distance <= least + 1e-12);
  RC_ASSERT(distance >= least - half_gap - 1e-12);
}

TEST_F(TrajectoryAnalyzerTest, NearestPointIsTheStoredStartOfTheSegmentNotTheFoot) {
  nav_msgs::Path path = StraightPath(30);
  path.poses[7].pose.position.z = 1.5;
  const TrajectoryAnalyzer analyzer(path);
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(7.9 * kStep, 2.0, -3.0)), PointAt(7 * kStep, 0, 1.5));
}

TEST_F(TrajectoryAnalyzerTest, NearestPointLooksAtTheWholePath) {
  const TrajectoryAnalyzer analyzer(StraightPath(90));
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(-1, 0)), PointAt(0, 0));
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(50.5 * kStep, 0)), PointAt(50 * kStep, 0));
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(100, 0)), PointAt(88 * kStep, 0));  // never the last pose
  EXPECT_EQ(analyzer.GetCurrentIndex(), 0u);
}

TEST_F(TrajectoryAnalyzerTest, NearestPointOfEqualSegmentsIsTheEarlier) {
  const TrajectoryAnalyzer analyzer(StraightPath(30));
  EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(5 * kStep, 1)), PointAt(4 * kStep, 0));
}

TEST_F(TrajectoryAnalyzerTest, NearestPointOfOneOrTwoPosesIsTheFirst) {
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{1, 2}})).QueryNearestPoint(PointAt(9, 9)), PointAt(1, 2));
  EXPECT_EQ(TrajectoryAnalyzer(PathOf({{1, 2}, {1.04, 2}})).QueryNearestPoint(PointAt(9, 9)), PointAt(1, 2));
}

TEST_F(TrajectoryAnalyzerTest, NearestPointToNoPlaceIsStillAPoseOfThePath) {
  const TrajectoryAnalyzer analyzer(StraightPath(30));
  for (const double bad : {kNan, kInfinity, -kInfinity, 1e300}) {
    EXPECT_EQ(analyzer.QueryNearestPoint(PointAt(bad, bad)).y, 0.0);
  }
}

TEST_F(TrajectoryAnalyzerTest, NearestTargetIsAlwaysTheOrigin) {
  const TrajectoryAnalyzer analyzer(PathOf({{1, 2}, {3, 4}}));
  EXPECT_EQ(analyzer.QueryNearestTarget(1.0, 2.0, 3.0), PointAt(0, 0, 0));
  EXPECT_EQ(analyzer.QueryNearestTarget(PoseAt(1, 2), 3.0), PointAt(0, 0, 0));
}

ControlProgress BudgetOf(const nav_msgs::Path& path) {
  TrajectoryAnalyzer analyzer(path);
  ControlProgress progress;
  analyzer.GenerateControllProgress(&progress);
  return progress;
}

TEST_F(TrajectoryAnalyzerTest, BudgetIsTheLengthAtTwelveCentimetresPerSecond) {
  const ControlProgress progress = BudgetOf(PathOf({{0, 0}, {2, 0}, {2, 1}}));
  EXPECT_NEAR(progress.total_distance, 3.0, 1e-12);
  EXPECT_NEAR(progress.total_time, 25.0, 1e-10);
}

TEST_F(TrajectoryAnalyzerTest, BudgetTimeIsThatOfAtLeastOneMetre) {
  EXPECT_EQ(BudgetOf(PathOf({{0, 0}, {0.5, 0}})).total_time, 8.333333333333334);
  EXPECT_NEAR(BudgetOf(PathOf({{0, 0}, {0.5, 0}})).total_distance, 0.5, 1e-12);
  EXPECT_EQ(BudgetOf(PathOf({{0, 0}, {0.99, 0}})).total_time, 8.333333333333334);
  EXPECT_NEAR(BudgetOf(PathOf({{0, 0}, {1.02, 0}})).total_time, 8.5, 1e-10);
}

TEST_F(TrajectoryAnalyzerTest, BudgetOfOnePoseHasNoLength) {
  const ControlProgress progress = BudgetOf(PathOf({{3, 4}}));
  EXPECT_EQ(progress.total_distance, 0.0);
  EXPECT_EQ(progress.total_time, 8.333333333333334);
}

TEST_F(TrajectoryAnalyzerTest, BudgetIgnoresHeight) {
  nav_msgs::Path path = PathOf({{0, 0}, {2, 0}});
  path.poses[1].pose.position.z = 50.0;
  EXPECT_NEAR(BudgetOf(path).total_distance, 2.0, 1e-12);
}

TEST_F(TrajectoryAnalyzerTest, BudgetIsTheSumOverTheStoredSteps) {
  const std::vector<Xy> points = {{0.1, 0.2}, {1.3, 0.7}, {0.4, -0.9}, {0.4, -0.9}, {2.2, 2.1}};
  nav_msgs::Path path = PathOf(points);
  for (PoseStamped& pose : path.poses) {
    pose.pose.orientation.w = 1.0;
  }
  const nav_msgs::Path dense = nav_core::math::LinearInterpolation(path, 0.05);
  double sum = 0.0;
  for (std::size_t i = 1; i < dense.poses.size(); ++i) {
    const Point& a = dense.poses[i - 1].pose.position;
    const Point& b = dense.poses[i].pose.position;
    sum += std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y));
  }
  EXPECT_DOUBLE_EQ(BudgetOf(path).total_distance, sum);
  EXPECT_DOUBLE_EQ(BudgetOf(path).total_time, sum / 0.12);
}

TEST_F(TrajectoryAnalyzerTest, BudgetWritesTheTotalsOnly) {
  TrajectoryAnalyzer analyzer(PathOf({{0, 0}, {3, 0}}));
  ControlProgress progress{1, 2, 3, 4, 5, 6};
  analyzer.GenerateControllProgress(&progress);
  EXPECT_EQ(progress.moved_distance, 1);
  EXPECT_NEAR(progress.total_distance, 3.0, 1e-12);  // replaced, not added to
  EXPECT_EQ(progress.distance_ratio, 3);
  EXPECT_EQ(progress.elapsed_time, 4);
  EXPECT_NEAR(progress.total_time, 25.0, 1e-10);
  EXPECT_EQ(progress.time_ratio, 6);
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchHasThePathsHeaderAndTheCurrentTime) {
  nav_msgs::Path path = StraightPath(5);
  path.header.seq = 42;
  path.header.stamp = ros::Time(1, 2);
  path.poses[3].header.seq = 7;
  path.poses[3].header.stamp = ros::Time(3, 4);
  path.poses[3].header.frame_id = "another";
  const TrajectoryAnalyzer analyzer(path);
  SetNow(ros::Time(321, 654));
  const LocalMap map = WideMap();
  const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
  EXPECT_EQ(ahead.header.seq, 42u);
  EXPECT_EQ(ahead.header.stamp, ros::Time(321, 654));
  EXPECT_EQ(ahead.header.frame_id, "map");
  ASSERT_EQ(ahead.poses.size(), 5u);
  EXPECT_EQ(ahead.poses[3].header, path.poses[3].header);
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchOfAnotherFrameIsEmptyAndAnError) {
  const LocalMap map = WideMap();
  for (const char* frame : {"", "/map", "Map", "map ", "odom"}) {
    nav_msgs::Path path = StraightPath(30);
    path.header.frame_id = frame;
    path.header.seq = 9;
    TrajectoryAnalyzer analyzer(path);
    DriveToIndex(analyzer, 12);
    log_.Clear();
    EXPECT_EQ(analyzer.PathTransformToLocalMap(&map), nav_msgs::Path()) << frame;
    EXPECT_THAT(log_.Lines(), ElementsAre(Error("[TrajectoryAnalyzer] Path frame is not map")));
    EXPECT_EQ(analyzer.GetCurrentIndex(), 12u);
    EXPECT_EQ(analyzer.GetPathSize(), 30u);
  }
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchWithoutAPathIsEmptyAndAnError) {
  const LocalMap map = WideMap();
  EXPECT_EQ(TrajectoryAnalyzer{nav_msgs::Path()}.PathTransformToLocalMap(&map), nav_msgs::Path());
  EXPECT_THAT(log_.Lines(), ElementsAre(Error("[TrajectoryAnalyzer] Path frame is not map")));
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchLogsNothing) {
  const TrajectoryAnalyzer analyzer(StraightPath(30));
  const LocalMap map = WideMap();
  EXPECT_THAT(analyzer.PathTransformToLocalMap(&map).poses, SizeIs(30));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchStartsAtTheCurrentIndex) {
  TrajectoryAnalyzer analyzer(StraightPath(30));
  DriveToIndex(analyzer, 12);
  const LocalMap map = WideMap();
  const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
  ASSERT_EQ(ahead.poses.size(), 18u);
  EXPECT_EQ(ahead.poses.front().pose.position.x, 12 * kStep);
  EXPECT_EQ(ahead.poses.back().pose.position.x, 29 * kStep);
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchIncludesThePathsLastPose) {
  const TrajectoryAnalyzer analyzer(PathOf({{1, 1}}));
  const LocalMap map = WideMap();
  EXPECT_THAT(analyzer.PathTransformToLocalMap(&map).poses, SizeIs(1));
}

// Poses that step to and fro between x = 0 and x = 0.04, for a map of one cell that holds only those at x = 0.
std::size_t PosesWithinRadius(double cell_size) {
  std::vector<Xy> points;
  for (int i = 0; i < 20; ++i) {
    points.push_back({i % 2 == 0 ? 0.0 : 0.04, 0.0});
  }
  const TrajectoryAnalyzer analyzer(PathOf(points));
  const LocalMap map(1, 1, cell_size, 0.0, 0.0);
  return analyzer.PathTransformToLocalMap(&map).poses.size();
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchReachesHalfTheMapAndFifteenCentimetres) {
  // The poses at x = 0 lie at arc lengths 0, 0.08, 0.16, 0.24; the radius is half a cell + 0.15.
  EXPECT_EQ(PosesWithinRadius(0.02), 3u);    // radius 0.16: a pose exactly there still counts
  EXPECT_EQ(PosesWithinRadius(0.0199), 2u);  // radius 0.15995
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchMeasuresTheLongerSide) {
  std::vector<Xy> points;
  for (int i = 0; i < 200; ++i) {
    points.push_back({i % 2 == 0 ? 0.0 : 0.04, 0.0});
  }
  const TrajectoryAnalyzer analyzer(PathOf(points));
  const LocalMap wide(40, 2, 0.05, -1.0, -0.05);
  const LocalMap high(2, 40, 0.05, -0.05, -1.0);
  // Radius 1.15: arc lengths 0, 0.04 .. 1.12.
  EXPECT_THAT(analyzer.PathTransformToLocalMap(&wide).poses, SizeIs(29));
  EXPECT_THAT(analyzer.PathTransformToLocalMap(&high).poses, SizeIs(29));
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchMeasuresFromTheCurrentIndex) {
  TrajectoryAnalyzer analyzer(StraightPath(100));
  DriveToIndex(analyzer, 30);
  const LocalMap map(20, 20, 0.05, 1.0, -0.5);  // x from 1 to 2; radius 0.65
  const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
  ASSERT_EQ(ahead.poses.size(), 17u);  // arc lengths 0 .. 0.64
  EXPECT_EQ(ahead.poses.front().pose.position.x, 30 * kStep);
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchSkipsPosesOffTheMapButCountsTheirWay) {
  // Out of the map's right side at x = 0.5, and back in.
  std::vector<Xy> points;
  for (int i = 0; i <= 15; ++i) {
    points.push_back({i * kStep, 0.0});
  }
  for (int i = 14; i >= 0; --i) {
    points.push_back({i * kStep, 0.1});
  }
  const TrajectoryAnalyzer analyzer(PathOf(points));
  const LocalMap map(20, 20, 0.05, -0.5, -0.5);  // radius 0.65
  const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
  ASSERT_EQ(ahead.poses.size(), 13u);  // x = 0 .. 0.48; at the right edge 0.5 and beyond nothing, then 0.65 is used up
  EXPECT_EQ(ahead.poses.back().pose.position.x, 12 * kStep);

  const LocalMap larger(36, 36, 0.05, -1.3, -0.9);  // the same right side; radius 1.05
  const nav_msgs::Path farther = analyzer.PathTransformToLocalMap(&larger);
  ASSERT_GT(farther.poses.size(), 13u);
  EXPECT_EQ(farther.poses[13].pose.position.y, 0.1);
  EXPECT_EQ(farther.poses[13].pose.position.x, 12 * kStep);
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchOfAPathBesideTheMapIsEmptyWithAHeader) {
  const TrajectoryAnalyzer analyzer(PathOf({{100, 100}, {101, 100}}));
  const LocalMap map = WideMap();
  const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
  EXPECT_THAT(ahead.poses, IsEmpty());
  EXPECT_EQ(ahead.header.frame_id, "map");
  EXPECT_EQ(ahead.header.stamp, ros::Time(100, 0));
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchLeavesOutPosesThatAreNotFinite) {
  for (const double bad : {kNan, kInfinity}) {
    const TrajectoryAnalyzer analyzer(PathOf({{0, 0}, {bad, 0}, {0.02, 0}}));
    const LocalMap map = WideMap();
    const nav_msgs::Path ahead = analyzer.PathTransformToLocalMap(&map);
    for (const PoseStamped& pose : ahead.poses) {
      EXPECT_TRUE(std::isfinite(pose.pose.position.x));
    }
    EXPECT_EQ(ahead.poses.front().pose.position.x, 0.0);
  }
}

TEST_F(TrajectoryAnalyzerTest, LocalStretchAtBothEndsOfTime) {
  const TrajectoryAnalyzer analyzer(StraightPath(3));
  const LocalMap map = WideMap();
  for (const ros::Time& now : {ros::Time(0, 0), ros::Time(4294967295u, 999999999u)}) {
    SetNow(now);
    EXPECT_EQ(analyzer.PathTransformToLocalMap(&map).header.stamp, now);
  }
}

// The path as the analyzer stores it.
nav_msgs::Path Stored(nav_msgs::Path path) {
  for (PoseStamped& pose : path.poses) {
    pose.pose.orientation.w = 1.0;
  }
  return nav_core::math::LinearInterpolation(path, 0.05);
}

RC_GTEST_FIXTURE_PROP(TrajectoryAnalyzerTest, UpdateIndexIsTheNearestSegmentOfItsSpan, ()) {
  const nav_msgs::Path path = PathOf(*PointLists(2, 8, 25, 0.04).as("path"));
  const std::vector<Xy> drive = *PointLists(1, 30, 30, 0.04).as("drive");
  const std::vector<PoseStamped> poses = Stored(path).poses;
  const auto last_segment = static_cast<std::int64_t>(poses.size()) - 2;

  TrajectoryAnalyzer analyzer(path);
  bool deviated = false;
  std::size_t warnings = 0;
  for (const Xy& robot : drive) {
    const auto before = static_cast<std::int64_t>(analyzer.GetCurrentIndex());
    analyzer.UpdateIndex(PoseAt(robot.x, robot.y));
    const auto after = static_cast<std::int64_t>(analyzer.GetCurrentIndex());

    RC_ASSERT(after >= before - 10 && after <= before + 9 && after >= 0 && after <= last_segment);
    std::vector<double> distances;  // of the segments of the span
    const std::int64_t first = std::max<std::int64_t>(before - 10, 0);
    for (std::int64_t i = first; i <= std::min(before + 9, last_segment); ++i) {
      const auto k = static_cast<std::size_t>(i);
      distances.push_back(analyzer.DistanceToPathSegment(PointAt(robot.x, robot.y), poses[k].pose, poses[k + 1].pose));
    }
    const auto nearest = std::min_element(distances.begin(), distances.end());  // the first of equals
    RC_ASSERT(after == first + (nearest - distances.begin()));

    warnings += *nearest > 0.3 && !deviated ? 1u : 0u;
    deviated = *nearest > 0.3;
    RC_ASSERT(log_.Lines().size() == warnings);
  }
}

RC_GTEST_FIXTURE_PROP(TrajectoryAnalyzerTest, LocalStretchIsWhatLiesOnTheMapWithinTheRadius, ()) {
  const nav_msgs::Path path = PathOf(*PointLists(1, 8, 40, 0.04).as("path"));
  const auto columns = *rc::gen::inRange(1u, 40u).as("columns");
  const auto rows = *rc::gen::inRange(1u, 40u).as("rows");
  const LocalMap map(columns, rows, 0.05, -0.5, -0.3);
  TrajectoryAnalyzer analyzer(path);
  analyzer.UpdateIndex(PoseAt(0, 0));
  const std::vector<PoseStamped> poses = Stored(path).poses;

  std::vector<PoseStamped> expected;
  double arc_length = 0.0;
  for (std::size_t i = analyzer.GetCurrentIndex(); i < poses.size(); ++i) {
    const Point& here = poses[i].pose.position;
    if (i > analyzer.GetCurrentIndex()) {
      const Point& before = poses[i - 1].pose.position;
      const double dx = here.x - before.x;
      const double dy = here.y - before.y;
      arc_length += std::sqrt(dx * dx + dy * dy);
    }
    const bool on_map =
        here.x >= -0.5 && here.x < -0.5 + columns * 0.05 && here.y >= -0.3 && here.y < -0.3 + rows * 0.05;
    if (arc_length <= std::max(columns, rows) * 0.05 * 0.5 + 0.15 && on_map) {
      expected.push_back(poses[i]);
    }
  }
  RC_ASSERT(analyzer.PathTransformToLocalMap(&map).poses == expected);
}

}  // namespace
}  // namespace controller_base_test
