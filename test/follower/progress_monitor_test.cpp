#include "follower/progress_monitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "follower/geometry.h"
#include "test/follower/recorder.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::PoseAt;
using controller_base_test::SetNow;
using controller_base_test::Wait;
using testing::ElementsAre;
using testing::StartsWith;

class ProgressMonitorTest : public testing::Test {
 protected:
  void SetUp() override {
    SetNow(ros::Time(500.0));
    Start(10.0, 80.0);
  }

  void Start(double total_distance, double total_time) {
    nav_controller::ControlProgress budget;
    budget.total_distance = total_distance;
    budget.total_time = total_time;
    monitor_.Start(budget);
  }

  // The failure reported for a robot at x after so many seconds; empty without one.
  std::string After(double seconds, double x) {
    Wait(seconds);
    const std::optional<NoProgress> failure = monitor_.Check(PoseAt(x, 0.0));
    return failure ? failure->Text() : "";
  }

  controller_base_test::Recorder recorder_;
  Reporter reporter_{&recorder_};
  Parameters parameters_;
  ProgressMonitor monitor_{parameters_, reporter_};
};

TEST_F(ProgressMonitorTest, WayTimeAndSpeedAreAddedUpFromTheSecondSampleOn) {
  After(7.0, 3.0);
  EXPECT_EQ(monitor_.progress().moved_distance, 0.0);
  After(0.5, 3.2);
  EXPECT_NEAR(monitor_.speed(), 0.4, 1e-9);
  After(0.5, 3.1);
  EXPECT_NEAR(monitor_.progress().moved_distance, 0.3, 1e-9);
  EXPECT_NEAR(monitor_.progress().elapsed_time, 1.0, 1e-9);
  EXPECT_NEAR(monitor_.progress().distance_ratio, 0.03, 1e-9);
  EXPECT_NEAR(monitor_.progress().time_ratio, 1.0 / 80.0, 1e-9);
}

TEST_F(ProgressMonitorTest, TwoSamplesAtOneTimeHaveNoSpeed) {
  After(0.0, 1.0);
  After(0.0, 1.1);
  EXPECT_EQ(monitor_.speed(), 0.0);
  EXPECT_NEAR(monitor_.progress().moved_distance, 0.1, 1e-9);
}

TEST_F(ProgressMonitorTest, TheSumsAreThoseOfTheChecker) {
  Start(1.0, 1.0);
  After(0.0, 0.0);
  EXPECT_EQ(After(0.1, 2.9), "");
  EXPECT_THAT(After(0.1, 3.0), testing::HasSubstr("dis:(3.00/1.00), time:(0.20/1.00)"));
  EXPECT_NEAR(monitor_.progress().moved_distance, 3.0, 1e-9);
}

TEST_F(ProgressMonitorTest, AcrossAJumpNothingIsAddedAndTheStallStartsOver) {
  After(0.0, 0.0);
  EXPECT_EQ(After(19.9, 0.1), "");
  monitor_.Restart();
  EXPECT_EQ(After(3600.0, 5.0), "");
  EXPECT_NEAR(monitor_.progress().moved_distance, 0.1, 1e-9);
  EXPECT_NEAR(monitor_.progress().elapsed_time, 19.9, 1e-9);
  EXPECT_EQ(After(19.9, 5.0), "");
  EXPECT_THAT(After(0.2, 5.0), StartsWith("stalled"));
}

TEST_F(ProgressMonitorTest, EachFailureIsToldByItsCause) {
  After(0.0, 0.0);
  EXPECT_THAT(After(20.0, 0.0),
              StartsWith("stalled, less than 0.2 m in 20 s: CheckBaseLine failed, baseline_pose:(0.00,0.00)"));
  Start(1.0, 100.0);
  After(0.0, 0.0);
  EXPECT_THAT(After(1.0, 3.0),
              StartsWith("the path's budget is used up, three times its length driven: CheckProgress failed"));
  Start(100.0, 1.0);
  After(0.0, 0.0);
  EXPECT_THAT(After(3.0, 1.0), StartsWith("the path's budget is used up, three times its time: CheckProgress failed"));
}

// A robot that stands still until its time budget is spent has both failures: the stall is reported, as the cause.
TEST_F(ProgressMonitorTest, AStallThatUsesUpTheBudgetIsAStall) {
  Start(100.0, 5.0);
  After(0.0, 0.0);
  const std::string text = After(20.0, 0.0);
  EXPECT_THAT(text, StartsWith("stalled"));
  EXPECT_THAT(text, testing::HasSubstr("CheckProgress failed"));
}

TEST_F(ProgressMonitorTest, AnExcursionIsToldWhenItBeginsAndWhenItEnds) {
  for (const double deviation : {0.1, 0.3, 0.31, 0.5, 0.3, 0.1}) {
    monitor_.Tell({}, {7, 100, deviation}, "path");
  }
  EXPECT_THAT(recorder_.Told("deviation"),
              ElementsAre("0.31 m off the path: farther than 0.3 m", "0.30 m off the path: within 0.3 m again"));
}

TEST_F(ProgressMonitorTest, ANewPathForgetsTheExcursion) {
  monitor_.Tell({}, {7, 100, 0.5}, "path");
  Start(1.0, 1.0);
  monitor_.Tell({}, {7, 100, 0.1}, "path");
  EXPECT_EQ(recorder_.Told("deviation").size(), 1u);
}

TEST_F(ProgressMonitorTest, ProgressIsToldEveryFiveSeconds) {
  for (int second = 0; second < 11; ++second) {
    monitor_.Tell({}, {7, 100, 0.05}, "detour");
    Wait(1.0);
  }
  const std::string text = "index 7 of 100, 0.05 m off the path, state: detour";
  EXPECT_THAT(recorder_.Told("progress"), ElementsAre(text, text));
}

}  // namespace
}  // namespace controller_base::follower
