// The figures of a run: gaps that it passed, and contacts with what no laser sees.

#include <gtest/gtest.h>

#include <cmath>

#include "demo/judge/gap_meter.h"
#include "demo/judge/hidden_contacts.h"
#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

class RunFigures : public testing::TestWithParam<simulation::Shapes> {
 protected:
  RunFigures()
      : map_(Hall(6.0)),
        world_(map_, {Box(6.0, 2.6, 0.4, 0.4), Box(6.0, 3.4, 0.4, 0.4, true), Box(9.0, 3.0, 0.4, 0.4, true)},
               GetParam()) {}

  // A cycle in which the robot is at `pose`, drives at `speed` and touches what `touched` names.
  void Tell(const follower::Pose2d& pose, double speed, const std::vector<simulation::World::Overlap>& touched = {}) {
    const simulation::CycleReport cycle{1.0, pose, input_, output_, {speed, 0.0}, laser_, 0, touched, path_, world_};
    gaps_.OnCycle(cycle);
    hidden_.OnCycle(cycle);
  }
  // What a robot of 0.17 m radius overlaps with there.
  std::vector<simulation::World::Overlap> At(double x, double y) const { return world_.Overlaps({x, y}, 0.17); }

  costmap_2d::Costmap2D map_;
  simulation::World world_;
  GapMeter gaps_;
  HiddenContacts hidden_;
  follower::FollowerInput input_;
  follower::FollowerOutput output_;
  std::vector<nav_core::math::Vec2d> laser_;
  nav_msgs::Path path_;
};

// The gap reaches from y = 2.8 m to 3.2 m.
TEST_P(RunFigures, AGapIsAsWideAsItIsAcrossTheWay) {
  Tell({5.0, 3.0, 0.0}, 0.4);
  EXPECT_TRUE(std::isinf(gaps_.narrowest()));
  Tell({6.0, 3.05, 0.0}, 0.4);
  EXPECT_NEAR(gaps_.narrowest(), 0.4, 1e-6);
}

TEST_P(RunFigures, NoGapIsPassedOnTheSpotOrAcross) {
  Tell({6.0, 3.0, 0.0}, 0.0);
  Tell({6.0, 3.0, 1.5707963}, 0.4);
  EXPECT_TRUE(std::isinf(gaps_.narrowest()));
}

TEST_P(RunFigures, ABackwardsWayCountsAsWell) {
  Tell({6.0, 3.0, 0.0}, -0.1);
  EXPECT_NEAR(gaps_.narrowest(), 0.4, 1e-6);
}

TEST_P(RunFigures, AContactWithSomethingHiddenCountsUntilItIsFreeAgain) {
  Tell({5.65, 3.4, 0.0}, 0.0, At(5.65, 3.4));
  Tell({5.65, 3.4, 0.0}, 0.0, At(5.65, 3.4));
  EXPECT_EQ(hidden_.contacts(), 1);
  Tell({5.5, 3.4, 0.0}, 0.0, At(5.5, 3.4));
  Tell({5.65, 3.4, 0.0}, 0.0, At(5.65, 3.4));
  EXPECT_EQ(hidden_.contacts(), 2);
  EXPECT_EQ(hidden_.touched(), 1);
  Tell({8.65, 3.0, 0.0}, 0.0, At(8.65, 3.0));
  EXPECT_EQ(hidden_.contacts(), 3);
  EXPECT_EQ(hidden_.touched(), 2);
}

TEST_P(RunFigures, WhatCanBeSeenIsNotHidden) {
  Tell({5.65, 2.6, 0.0}, 0.0, At(5.65, 2.6));
  Tell({0.1, 3.0, 0.0}, 0.0, At(0.1, 3.0));
  EXPECT_EQ(hidden_.contacts(), 0);
  EXPECT_EQ(hidden_.touched(), 0);
}

INSTANTIATE_TEST_SUITE_P(Shapes, RunFigures, testing::Values(simulation::Shapes::kCells, simulation::Shapes::kTrue),
                         [](const auto& shapes) {
                           return shapes.param == simulation::Shapes::kCells ? "Cells" : "True";
                         });

}  // namespace
}  // namespace controller_base::demo
