#include "follower/input_watchdog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/follower/recorder.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::SetNow;
using controller_base_test::Wait;
using Clock = InputWatchdog::Clock;
using testing::ElementsAre;
using testing::IsEmpty;

class InputWatchdogTest : public testing::Test {
 protected:
  void SetUp() override {
    SetNow(ros::Time(500.0));
    watchdog_.Reset();
  }

  Clock After(double seconds) {
    Wait(seconds);
    return watchdog_.WatchClock(robot_);
  }

  bool PoseAt(double x) {
    robot_.x = x;
    return watchdog_.WatchPose(robot_);
  }

  controller_base_test::Recorder recorder_;
  Reporter reporter_{&recorder_};
  Parameters parameters_;
  InputWatchdog watchdog_{parameters_, reporter_};
  Pose2d robot_;
};

TEST_F(InputWatchdogTest, ACycleOfASecondIsNoJumpAndALongerOneIs) {
  EXPECT_EQ(After(0.05), Clock::kRuns);
  EXPECT_EQ(After(1.0), Clock::kRuns);
  EXPECT_THAT(recorder_.events, IsEmpty());
  EXPECT_EQ(After(1.001), Clock::kJumped);
  EXPECT_THAT(recorder_.Told("clock"), ElementsAre("the clock jumped by +1.00 s: contacts and progress start over"));
  EXPECT_EQ(After(0.05), Clock::kRuns);
}

TEST_F(InputWatchdogTest, AClockThatGoesBackHasJumped) {
  EXPECT_EQ(After(-0.01), Clock::kJumped);
  EXPECT_THAT(recorder_.Told("clock"), ElementsAre("the clock jumped by -0.01 s: contacts and progress start over"));
}

TEST_F(InputWatchdogTest, AClockStandsStillFromTheTwentiethCycleAndIsGivenUpAtTheSixHundredth) {
  for (int cycle = 1; cycle < 20; ++cycle) {
    EXPECT_EQ(After(0.0), Clock::kRuns) << cycle;
  }
  EXPECT_FALSE(watchdog_.IsClockStill());
  for (int cycle = 20; cycle < 600; ++cycle) {
    EXPECT_EQ(After(0.0), Clock::kStandsStill) << cycle;
  }
  EXPECT_TRUE(watchdog_.IsClockStill());
  EXPECT_EQ(After(0.0), Clock::kHasStoodStill);
  EXPECT_EQ(watchdog_.still_cycles(), 600);
  EXPECT_THAT(recorder_.Told("clock"), ElementsAre("the clock stands still: waiting for it"));  // once
}

TEST_F(InputWatchdogTest, AClockThatGoesOnAfterItStoodStillHasJumped) {
  for (int cycle = 0; cycle < 19; ++cycle) {
    After(0.0);
  }
  EXPECT_EQ(After(0.05), Clock::kRuns);  // one cycle fewer than a clock that stands still takes
  for (int cycle = 0; cycle < 20; ++cycle) {
    After(0.0);
  }
  EXPECT_EQ(After(0.05), Clock::kJumped);
  EXPECT_EQ(recorder_.Told("clock").back(), "the clock goes on: contacts and progress start over");
  EXPECT_FALSE(watchdog_.IsClockStill());
}

TEST_F(InputWatchdogTest, AStepOfThirtyCentimetresIsNoJumpAndALongerOneIs) {
  EXPECT_FALSE(PoseAt(7.0));  // the first
  EXPECT_FALSE(PoseAt(7.3 - 1e-9));
  EXPECT_TRUE(PoseAt(7.61));
  EXPECT_THAT(recorder_.Told("pose"), ElementsAre("the pose jumped by 0.31 m: back to the path from there"));
  EXPECT_FALSE(PoseAt(7.62));  // from where it jumped to
}

TEST_F(InputWatchdogTest, AfterAJumpOfTheClockAndForANewPathTheNextPoseIsTheFirst) {
  PoseAt(1.0);
  After(5.0);
  EXPECT_FALSE(PoseAt(9.0));
  watchdog_.Reset();
  EXPECT_FALSE(PoseAt(1.0));
  EXPECT_TRUE(PoseAt(9.0));
}

TEST_F(InputWatchdogTest, TheLimitsAreParameters) {
  parameters_.longest_clock_step = 3.0;
  parameters_.longest_pose_step = 2.0;
  EXPECT_EQ(After(2.9), Clock::kRuns);
  PoseAt(0.0);
  EXPECT_FALSE(PoseAt(1.9));
}

}  // namespace
}  // namespace controller_base::follower
