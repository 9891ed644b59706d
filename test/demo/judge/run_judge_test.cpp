#include "demo/judge/run_judge.h"

#include <gtest/gtest.h>

#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

// A hall with a visible box and a low one, and a judge that is given cycles.
class Judge : public testing::Test {
 protected:
  Judge()
      : map_(Hall(6.0)),
        obstacles_{Box(6.0, 3.0, 0.4, 0.4), Box(9.0, 3.0, 0.4, 0.4, true)},
        world_(map_, obstacles_),
        judge_(map_, obstacles_) {}

  using Points = std::vector<nav_core::math::Vec2d>;

  // A cycle at `time` seconds: the robot at `x` in the middle of the hall, what the laser hits, what the robot touches.
  void Tell(double time, double x, const Points& laser, const Points& touched) {
    std::vector<simulation::World::Overlap> overlaps;
    for (const nav_core::math::Vec2d& point : touched) {
      overlaps.push_back({static_cast<int>(point.x / 0.05), static_cast<int>(point.y / 0.05), point});
    }
    const follower::Pose2d pose{x, 3.0, 0.0};
    judge_.OnCycle({time, pose, input_, output_, {}, laser, 0, overlaps, path_, world_});
  }

  costmap_2d::Costmap2D map_;
  std::vector<simulation::Obstacle> obstacles_;
  simulation::World world_;
  RunJudge judge_;
  follower::FollowerInput input_;
  follower::FollowerOutput output_;
  nav_msgs::Path path_;
  const Points box_{{5.825, 3.025}};  // on the visible one
  const Points low_{{8.825, 3.025}};
  const Points wall_{{6.025, 0.025}};
};

TEST_F(Judge, ATouchHalfASecondAfterTheFirstSightWasAvoidable) {
  Tell(1.0, 2.0, box_, {});
  Tell(1.5, 2.0, {}, box_);
  EXPECT_EQ(judge_.touches(), 1);
}

TEST_F(Judge, ASoonerOneWasNot) {
  Tell(1.0, 2.0, box_, {});
  Tell(1.4, 2.0, box_, box_);
  EXPECT_EQ(judge_.touches(), 0);
}

TEST_F(Judge, NeitherIsATouchOfWhatNoLaserSawOrSees) {
  Tell(0.0, 2.0, wall_, {});
  Tell(1.0, 2.0, {}, box_);
  Tell(2.0, 2.0, {}, {});
  Tell(3.0, 2.0, low_, {});  // where a ray ends above the low box there is something else
  Tell(9.0, 2.0, {}, low_);
  EXPECT_EQ(judge_.touches(), 0);
}

TEST_F(Judge, WallsOfTheMapAreKnownFromTheBeginning) {
  Tell(0.0, 2.0, {}, wall_);
  EXPECT_EQ(judge_.touches(), 1);
}

TEST_F(Judge, TheMapsEdgeIsAWall) {
  Tell(0.0, 2.0, {}, {{-0.5, 3.0}});
  EXPECT_EQ(judge_.touches(), 1);
}

TEST_F(Judge, APressedBumperCountsOnceUntilItIsFreeAgain) {
  Tell(1.0, 2.0, box_, {});
  Tell(2.0, 2.0, {}, box_);
  Tell(2.1, 2.0, {}, box_);
  EXPECT_EQ(judge_.touches(), 1);
  Tell(2.2, 2.0, {}, {});
  Tell(2.3, 2.0, {}, box_);
  EXPECT_EQ(judge_.touches(), 2);
}

// The low box is touched first and the visible one later: these are two contacts.
TEST_F(Judge, AnInnocentTouchDoesNotHideAnother) {
  Tell(1.0, 2.0, box_, {});
  Tell(2.0, 2.0, {}, low_);
  Tell(2.1, 2.0, {}, {low_[0], box_[0]});
  EXPECT_EQ(judge_.touches(), 1);
}

// The box begins at x = 5.80 m; cells up to 0.215 m from its cells' centres are lethal.
TEST_F(Judge, EachLethalCellThatIsEnteredCounts) {
  Tell(0.0, 5.57, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 0);
  Tell(0.1, 5.63, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 1);
  Tell(0.2, 5.64, {}, {});  // the same cell
  EXPECT_EQ(judge_.lethal_cells(), 1);
  Tell(0.3, 5.67, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 2);
  Tell(0.4, 5.57, {}, {});
  Tell(0.5, 5.63, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 3);
}

TEST_F(Judge, CellsAroundALowObstacleAreNotLethalAndThoseOffTheMapAre) {
  Tell(0.0, 8.7, {}, {});
  Tell(0.1, 8.75, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 0);
  Tell(0.2, -1.0, {}, {});
  EXPECT_EQ(judge_.lethal_cells(), 1);
}

}  // namespace
}  // namespace controller_base::demo
