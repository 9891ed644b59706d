#include "follower/detour_in_use.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/follower/recorder.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PathOf;
using controller_base_test::PoseAt;
using controller_base_test::SetNow;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A detour of 2 m that leads back to the path at (2, 0); the map shows all of it.
class DetourInUseTest : public testing::Test {
 protected:
  void SetUp() override {
    SetNow(ros::Time(500.0));
    found_.path = PathOf({{0, 0}, {2, 0}});
    found_.detour = PathOf({{0, 0}, {1, 0.5}, {2, 0}});
    found_.goal_repaired = false;
    found_.smoothed = true;
  }

  bool IsBlockedForLong(double seconds, const nav_msgs::Path& blocked) {
    SetNow(ros::Time(500.0 + seconds));
    return detour_.IsBlockedForLong(blocked);
  }

  bool GetsNowhere(double seconds, double speed) {
    SetNow(ros::Time(500.0 + seconds));
    yaw_ += turn_;
    return detour_.GetsNowhere({0.0, 0.0, yaw_}, {speed, 1.0});
  }

  double yaw_ = 0.0;   // rad
  double turn_ = 1.6;  // rad in each cycle
  Parameters parameters_;
  controller_base_test::Recorder recorder_;
  Reporter reporter_{&recorder_};
  DetourInUse detour_{parameters_, reporter_};
  DetourReport found_{};
  costmap_2d::Costmap2D map_{120, 120, 0.05, -3.0, -3.0};
  nav_msgs::Path blocked_ = PathOf({{1, 0.5}, {1.1, 0.45}});
};

TEST_F(DetourInUseTest, OneThatIsTakenIsToldOf) {
  EXPECT_FALSE(detour_.IsDriven());
  detour_.Start(found_);
  EXPECT_TRUE(detour_.IsDriven());
  EXPECT_EQ(detour_.report()->detour.poses.size(), 3u);
  EXPECT_DOUBLE_EQ(detour_.end().x, 2.0);
  EXPECT_EQ(recorder_.detours.size(), 1u);
  EXPECT_THAT(recorder_.Told("detour"), ElementsAre(HasSubstr("back on the path at (2.00, 0.00)")));
  EXPECT_THAT(recorder_.Told("repair"), IsEmpty());
}

TEST_F(DetourInUseTest, ARepairedGoalIsToldOfFirst) {
  found_.goal_repaired = true;
  found_.detour.poses.back() = PoseAt(1.8, 0.0);
  detour_.Start(found_);
  EXPECT_THAT(recorder_.Told("repair"), ElementsAre(HasSubstr("(2.00, 0.00) is occupied: falls back to (1.80, 0.00)")));
  EXPECT_EQ(Name(recorder_.events.front().kind), std::string("repair"));
}

TEST_F(DetourInUseTest, OneThatIsDroppedIsNoLongerDriven) {
  detour_.Start(found_);
  detour_.Drop();
  EXPECT_FALSE(detour_.IsDriven());
  EXPECT_EQ(detour_.report(), nullptr);
}

TEST_F(DetourInUseTest, ItIsDoneNearItsEndAndWhereTheMapShowsNothingOfIt) {
  parameters_.rejoin_distance = 0.2;
  detour_.Start(found_);
  const nav_msgs::Path ahead = detour_.Track(PoseAt(0.1, 0.0), map_);
  EXPECT_DOUBLE_EQ(ahead.poses.back().pose.position.x, 2.0);
  EXPECT_FALSE(detour_.IsDone({0.1, 0.0, 0.0}, ahead));
  EXPECT_FALSE(detour_.IsDone({1.79, 0.0, 0.0}, ahead));
  EXPECT_TRUE(detour_.IsDone({1.81, 0.0, 0.0}, ahead));
  EXPECT_TRUE(detour_.IsDone({0.1, 0.0, 0.0}, {}));
}

TEST_F(DetourInUseTest, ABlockageCountsFromItsFirstCycleWithoutAGap) {
  parameters_.blockage_timeout = 1.0;
  detour_.Start(found_);
  EXPECT_FALSE(IsBlockedForLong(0.0, blocked_));
  EXPECT_FALSE(IsBlockedForLong(0.9, blocked_));
  EXPECT_FALSE(IsBlockedForLong(0.95, {}));
  EXPECT_FALSE(IsBlockedForLong(1.0, blocked_));
  EXPECT_FALSE(IsBlockedForLong(1.9, blocked_));
  EXPECT_TRUE(IsBlockedForLong(2.0, blocked_));
}

TEST_F(DetourInUseTest, OneOnWhichTheRobotOnlyTurnsGetsItNowhere) {
  parameters_.max_turn_rate = 2.0 * kPi;  // a whole turn in a second, and two seconds of pauses
  detour_.Start(found_);
  EXPECT_FALSE(GetsNowhere(0.0, 0.0));
  EXPECT_FALSE(GetsNowhere(2.9, 0.02));
  EXPECT_TRUE(GetsNowhere(3.0, 0.0));
  EXPECT_TRUE(GetsNowhere(3.4, 0.2));  // 0.08 m
  EXPECT_TRUE(GetsNowhere(6.1, 0.0));  // three seconds later these no longer count
  EXPECT_TRUE(GetsNowhere(6.4, 0.2));
  EXPECT_FALSE(GetsNowhere(6.6, 0.2));  // 0.12 m
  EXPECT_FALSE(GetsNowhere(9.5, 0.0));
  EXPECT_TRUE(GetsNowhere(9.6, 0.0));
}

TEST_F(DetourInUseTest, OneOnWhichTheRobotDoesNotEvenTurnIsNotToBlame) {
  parameters_.max_turn_rate = 2.0 * kPi;
  turn_ = 1.0;
  detour_.Start(found_);
  for (const double seconds : {1.0, 2.0, 3.0}) {  // less than half a turn in all
    EXPECT_FALSE(GetsNowhere(seconds, 0.0)) << seconds;
  }
}

TEST_F(DetourInUseTest, TheNextDetourHasItsOwnTimeToTurn) {
  parameters_.max_turn_rate = 2.0 * kPi;
  detour_.Start(found_);
  EXPECT_FALSE(GetsNowhere(0.0, 0.0));
  EXPECT_FALSE(GetsNowhere(2.0, 0.0));
  detour_.Start(found_);
  EXPECT_FALSE(GetsNowhere(3.0, 0.0));
  EXPECT_FALSE(GetsNowhere(4.9, 0.0));
  EXPECT_TRUE(GetsNowhere(5.0, 0.0));
}

TEST_F(DetourInUseTest, ABlockageOfTheLastDetourIsNoneOfTheNext) {
  parameters_.blockage_timeout = 1.0;
  detour_.Start(found_);
  EXPECT_FALSE(IsBlockedForLong(0.0, blocked_));
  detour_.Start(found_);
  EXPECT_FALSE(IsBlockedForLong(1.0, blocked_));
  EXPECT_TRUE(IsBlockedForLong(2.0, blocked_));
}

}  // namespace
}  // namespace controller_base::follower
