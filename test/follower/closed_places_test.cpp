#include "follower/closed_places.h"

#include <gtest/gtest.h>

#include "costmap_2d/cost_values.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PointAt;
using controller_base_test::SetNow;
using controller_base_test::Wait;

class ClosedPlacesTest : public testing::Test {
 protected:
  void SetUp() override { SetNow(ros::Time(500.0)); }

  // At (1, 1) and a distance along x.
  unsigned char CostBeside(double distance) const {
    costmap_2d::Costmap2D map(40, 40, 0.05, 0.0, 0.0);
    places_.CloseOn(robot_, &map);
    unsigned int mx = 0;
    unsigned int my = 0;
    EXPECT_TRUE(map.worldToMap(1.02 + distance, 1.02, mx, my));
    return map.getCost(mx, my);
  }

  void Close(const geometry_msgs::Point& place) {
    places_.Note(place);
    places_.Note(PointAt(5.0, 5.0));
    places_.Note(place);
  }

  ClosedPlaces places_;
  Pose2d robot_{0.5, 1.0, 0.0};
};

TEST_F(ClosedPlacesTest, APlaceIsClosedWhenTheRobotCameBackToItInVain) {
  places_.Note(PointAt(1.0, 1.0));
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
  places_.Note(PointAt(0.2, 1.0));  // another one
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
  Wait(5.0);
  places_.Note(PointAt(1.02, 1.02));  // noise moves it
  EXPECT_EQ(CostBeside(0.0), costmap_2d::LETHAL_OBSTACLE);
  EXPECT_EQ(CostBeside(0.15), 127);
  EXPECT_EQ(CostBeside(0.3), costmap_2d::FREE_SPACE);
}

TEST_F(ClosedPlacesTest, APlaceThatNoiseBlocksNowAndThenIsNotClosed) {
  for (int time = 0; time < 5; ++time) {
    places_.Note(PointAt(1.0, 1.0));
    Wait(1.0);
  }
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
}

TEST_F(ClosedPlacesTest, TwoPlacesAreNotOne) {
  places_.Note(PointAt(1.0, 1.0));
  places_.Note(PointAt(1.0, 1.3));
  places_.Note(PointAt(1.0, 0.7));
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
}

TEST_F(ClosedPlacesTest, WhatWasClosedMayBeOpenHalfAMinuteLater) {
  Close(PointAt(1.0, 1.0));
  Wait(29.0);
  EXPECT_EQ(CostBeside(0.0), costmap_2d::LETHAL_OBSTACLE);
  Wait(2.0);
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
  places_.Note(PointAt(1.0, 1.0));  // a first time again
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
}

TEST_F(ClosedPlacesTest, NothingIsClosedAroundTheRobot) {
  Close(PointAt(1.0, 1.0));
  robot_.x = 0.9;
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
}

TEST_F(ClosedPlacesTest, APlaceOffTheMapClosesNothing) {
  Close(PointAt(9.0, 9.0));
  EXPECT_EQ(CostBeside(0.0), costmap_2d::FREE_SPACE);
}

}  // namespace
}  // namespace controller_base::follower
