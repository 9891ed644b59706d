// Whether the robot makes progress: the stall test, the budget test and the reason texts.
#include "controller_base/controller_progress_checker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

#include "test/support/generators.h"
#include "test/support/log_capture.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using geometry_msgs::PoseStamped;
using nav_controller::ControllerProgressChecker;
using nav_controller::ControlProgress;
using testing::IsEmpty;

using Checker = ControllerProgressChecker;
static_assert(!std::is_polymorphic_v<Checker> && std::is_default_constructible_v<Checker>);
static_assert(std::is_same_v<decltype(&Checker::Reset), void (Checker::*)(ControlProgress&)>);
static_assert(std::is_same_v<decltype(&Checker::Check), bool (Checker::*)(const PoseStamped&, std::string&)>);
static_assert(std::is_same_v<decltype(&Checker::UpdateProgress), void (Checker::*)(const PoseStamped&)>);
static_assert(std::is_same_v<decltype(&Checker::CheckBaseLine), bool (Checker::*)(const PoseStamped&)>);
static_assert(std::is_same_v<decltype(&Checker::CheckProgress), bool (Checker::*)(const PoseStamped&) const>);
static_assert(std::is_same_v<decltype(&Checker::IsRobotMovedEnough), bool (Checker::*)(const PoseStamped&) const>);
static_assert(std::is_same_v<decltype(&Checker::ResetBaselinePose), void (Checker::*)(const PoseStamped&)>);

ControlProgress Budget(double distance, double time) {
  ControlProgress progress;
  progress.total_distance = distance;
  progress.total_time = time;
  return progress;
}

// A budget that no test overruns by accident.
ControlProgress AmpleBudget() { return Budget(1e6, 1e9); }

class ProgressCheckerTest : public SimTimeTest {
 protected:
  bool Check(double x, double y) { return checker_.Check(PoseAt(x, y), reason_); }

  void Reset(ControlProgress progress) { checker_.Reset(progress); }

  ControllerProgressChecker checker_;
  std::string reason_ = "left from before";
};

TEST_F(ProgressCheckerTest, TheFirstCheckSucceedsWithAnEmptyReason) {
  EXPECT_TRUE(Check(3, 4));
  EXPECT_EQ(reason_, "");
}

TEST_F(ProgressCheckerTest, TheFirstCheckAfterResetSucceeds) {
  Check(3, 4);
  Wait(1000);
  EXPECT_FALSE(Check(3, 4));
  Reset(AmpleBudget());
  EXPECT_TRUE(Check(3, 4));
  EXPECT_EQ(reason_, "");
  Wait(19.9);
  EXPECT_TRUE(Check(3, 4));
}

TEST_F(ProgressCheckerTest, ARobotThatStandsStillFailsFromTheTwentiethSecondOn) {
  Check(1, 2);
  SetNow(ros::Time(119, 999999999));
  EXPECT_TRUE(Check(1, 2));
  EXPECT_EQ(reason_, "");
  SetNow(ros::Time(120, 0));
  EXPECT_FALSE(Check(1, 2));
  EXPECT_EQ(reason_, "CheckBaseLine failed, baseline_pose:(1.00,2.00)  ");
  SetNow(ros::Time(120, 1));
  EXPECT_FALSE(Check(1, 2));
  Wait(1000);
  EXPECT_FALSE(Check(1, 2));
}

TEST_F(ProgressCheckerTest, TheReasonShowsTheBaselineNotTheRobot) {
  Check(-1.234, 5.678);
  Wait(20);
  EXPECT_FALSE(Check(-1.1, 5.7));
  EXPECT_EQ(reason_, "CheckBaseLine failed, baseline_pose:(-1.23,5.68)  ");
}

TEST_F(ProgressCheckerTest, ExactlyTwentyCentimetresIsNotMoved) {
  Check(0, 0);
  Wait(20);
  EXPECT_FALSE(Check(0.2, 0));
  EXPECT_FALSE(Check(0, -0.2));
  EXPECT_TRUE(Check(std::nextafter(0.2, 1.0), 0));
  EXPECT_EQ(reason_, "");
}

TEST_F(ProgressCheckerTest, MovementIsMeasuredInThePlane) {
  Check(0, 0);
  EXPECT_FALSE(checker_.IsRobotMovedEnough(PoseAt(0.11, 0.16)));
  EXPECT_TRUE(checker_.IsRobotMovedEnough(PoseAt(0.13, 0.16)));
  PoseStamped high = PoseAt(0, 0);
  high.pose.position.z = 5.0;
  EXPECT_FALSE(checker_.IsRobotMovedEnough(high));
}

TEST_F(ProgressCheckerTest, BeforeAnyBaselineMovementIsMeasuredFromTheOrigin) {
  EXPECT_FALSE(checker_.IsRobotMovedEnough(PoseAt(0.2, 0)));
  EXPECT_TRUE(checker_.IsRobotMovedEnough(PoseAt(0.21, 0)));
}

TEST_F(ProgressCheckerTest, CreepingInsideTheCircleIsAStall) {
  Check(0, 0);
  for (int i = 1; i < 200; ++i) {
    Wait(0.1);
    EXPECT_TRUE(Check(0.15 * std::cos(i), 0.15 * std::sin(i)));
  }
  Wait(0.1);
  EXPECT_FALSE(Check(0.15, 0));
}

TEST_F(ProgressCheckerTest, EachStepOutOfTheCircleMovesTheBaseline) {
  Check(0, 0);
  Wait(15);
  EXPECT_TRUE(Check(0.3, 0));
  Wait(15);
  EXPECT_TRUE(Check(0.35, 0));  // 15 s after the baseline moved
  Wait(5);
  EXPECT_FALSE(Check(0.35, 0));
  EXPECT_EQ(reason_, "CheckBaseLine failed, baseline_pose:(0.30,0.00)  ");
  EXPECT_TRUE(Check(0.05, 0));  // 0.25 m from the baseline
}

TEST_F(ProgressCheckerTest, CheckBaseLineDoesNotMoveAnOldBaseline) {
  EXPECT_TRUE(checker_.CheckBaseLine(PoseAt(0, 0)));
  Wait(19);
  EXPECT_TRUE(checker_.CheckBaseLine(PoseAt(0.1, 0)));
  Wait(1);
  EXPECT_FALSE(checker_.CheckBaseLine(PoseAt(0.1, 0)));
  EXPECT_FALSE(checker_.CheckBaseLine(PoseAt(0.2, 0)));
  EXPECT_TRUE(checker_.CheckBaseLine(PoseAt(0.25, 0)));
}

TEST_F(ProgressCheckerTest, ResetBaselinePoseTakesPoseAndTime) {
  Check(0, 0);
  Wait(19);
  checker_.ResetBaselinePose(PoseAt(0.05, 0.07));
  Wait(19);
  EXPECT_TRUE(Check(0, 0));
  Wait(1);
  EXPECT_FALSE(Check(0, 0));
  EXPECT_EQ(reason_, "CheckBaseLine failed, baseline_pose:(0.05,0.07)  ");
}

TEST_F(ProgressCheckerTest, ResetBaselinePoseMakesAFirstBaselineToo) {
  checker_.ResetBaselinePose(PoseAt(0, 0));
  Wait(20);
  EXPECT_FALSE(checker_.CheckBaseLine(PoseAt(0.1, 0)));
}

TEST_F(ProgressCheckerTest, TheBudgetIsOverrunAtThreeTimesItsLength) {
  Reset(Budget(4.0, 4.0 / 0.12));
  Check(0, 0);
  Wait(1);
  EXPECT_TRUE(Check(11.75, 0));
  EXPECT_TRUE(Check(std::nextafter(12.0, 0.0), 0));
  EXPECT_EQ(reason_, "");
  EXPECT_FALSE(Check(12.0, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(12.00/4.00), time:(1.00/33.33)");
}

TEST_F(ProgressCheckerTest, TheBudgetIsOverrunAtThreeTimesItsTime) {
  Reset(Budget(4.0, 4.0 / 0.12));
  Check(0, 0);
  double x = 0.0;
  for (int i = 0; i < 9; ++i) {
    Wait(10);
    x += 0.5;
    EXPECT_TRUE(Check(x, 0));
  }
  SetNow(ros::Time(199, 999000000));
  EXPECT_TRUE(Check(x, 0));
  SetNow(ros::Time(200, 0));
  EXPECT_FALSE(Check(x, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(4.50/4.00), time:(100.00/33.33)");
}

TEST_F(ProgressCheckerTest, BothFailuresStandSideBySide) {
  Reset(Budget(4.0, 4.0 / 0.12));
  Check(0, 0);
  Wait(100);
  EXPECT_FALSE(Check(0.125, 0));
  EXPECT_EQ(reason_,
            "CheckBaseLine failed, baseline_pose:(0.00,0.00)  "
            "CheckProgress failed, dis:(0.12/4.00), time:(100.00/33.33)");
}

TEST_F(ProgressCheckerTest, AnOverrunByBothShowsBoth) {
  Reset(Budget(1.0, 10.0));
  Check(0, 0);
  Wait(40);
  EXPECT_FALSE(Check(50, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(50.00/1.00), time:(40.00/10.00)");
}

TEST_F(ProgressCheckerTest, BothTestsRunEvenWhenTheFirstFails) {
  Reset(Budget(0.01, 1e9));
  Check(0, 0);
  Wait(25);
  EXPECT_FALSE(Check(0.1, 0));
  EXPECT_EQ(reason_,
            "CheckBaseLine failed, baseline_pose:(0.00,0.00)  "
            "CheckProgress failed, dis:(0.10/0.01), time:(25.00/1000000000.00)");
}

TEST_F(ProgressCheckerTest, DistanceIsSummedOverTheStepsInThePlane) {
  Reset(Budget(1.0, 1e9));
  Wait(1);
  for (const auto& [x, y] : {Xy{0, 0}, Xy{0.75, 1}, Xy{0, 0}}) {  // 1.25 m each way
    EXPECT_TRUE(Check(x, y));
    Wait(1);
  }
  PoseStamped high = PoseAt(0, 0.25);
  high.pose.position.z = 100.0;
  EXPECT_TRUE(checker_.Check(high, reason_));  // 2.75 m
  Wait(1);
  EXPECT_FALSE(Check(0, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(3.00/1.00), time:(4.00/1000000000.00)");
}

TEST_F(ProgressCheckerTest, TheClockCountsNotTheStamps) {
  Reset(Budget(1e6, 1.0));
  PoseStamped pose = PoseAt(0, 0);
  pose.header.stamp = ros::Time(5000, 0);
  EXPECT_TRUE(checker_.Check(pose, reason_));
  pose.header.stamp = ros::Time(0, 0);
  Wait(2.5);
  EXPECT_TRUE(checker_.Check(pose, reason_));
  pose.header.stamp = ros::Time(1, 0);
  Wait(0.5);
  EXPECT_FALSE(checker_.Check(pose, reason_));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(0.00/1000000.00), time:(3.00/1.00)");
}

TEST_F(ProgressCheckerTest, TheCallersPoseStaysAsItIs) {
  const PoseStamped pose = PoseAt(1, 2);
  PoseStamped given = pose;
  checker_.Check(given, reason_);
  checker_.UpdateProgress(given);
  EXPECT_EQ(given, pose);
}

TEST_F(ProgressCheckerTest, TwoCallsAtOneInstantAddTheirDistanceAndNoTime) {
  Reset(Budget(1.0, 1.0));
  Check(0, 0);
  Wait(1);
  Check(1, 0);
  EXPECT_FALSE(Check(3, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(3.00/1.00), time:(1.00/1.00)");
}

TEST_F(ProgressCheckerTest, ABudgetBelowAMillimetreIsNone) {
  for (const double length : {0.0, -1.0, std::nextafter(0.001, 0.0)}) {
    Reset(Budget(length, 0.1));
    Check(0, 0);
    Wait(10);
    EXPECT_TRUE(Check(1000, 0)) << length;
  }
  Reset(Budget(0.001, 0.1));
  Check(0, 0);
  Wait(10);
  EXPECT_FALSE(Check(1000, 0));
}

TEST_F(ProgressCheckerTest, BeforeAnyResetThereIsNoBudget) {
  Check(0, 0);
  for (int i = 1; i < 1000; ++i) {
    Wait(1);
    EXPECT_TRUE(Check(i, 0));
  }
}

TEST_F(ProgressCheckerTest, NothingIsOverrunInTheFirstMillisecond) {
  Reset(Budget(1.0, 1.0));
  Check(0, 0);
  SetNow(ros::Time(100, 999999));
  EXPECT_TRUE(Check(1000, 0));
  SetNow(ros::Time(100, 1000000));
  EXPECT_FALSE(Check(1000, 0));
}

TEST_F(ProgressCheckerTest, ResetTakesAllThatTheRecordHolds) {
  ControlProgress progress = Budget(4.0, 10.0);
  progress.moved_distance = 11.5;
  progress.elapsed_time = 29.0;
  Reset(progress);
  EXPECT_TRUE(Check(0, 0));  // the first sample adds nothing
  Wait(0.5);
  EXPECT_FALSE(Check(0.5, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(12.00/4.00), time:(29.50/10.00)");
}

TEST_F(ProgressCheckerTest, ACarriedOverrunFailsTheFirstCheck) {
  ControlProgress progress = Budget(4.0, 10.0);
  progress.moved_distance = 12.0;
  progress.elapsed_time = 1.0;
  Reset(progress);
  EXPECT_FALSE(Check(0, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(12.00/4.00), time:(1.00/10.00)");
}

TEST_F(ProgressCheckerTest, ResetOnlyReadsTheRecord) {
  ControlProgress progress{1, 2, 3, 4, 5, 6};
  checker_.Reset(progress);
  Check(0, 0);
  Wait(1);
  Check(1, 0);
  EXPECT_EQ(progress.moved_distance, 1);
  EXPECT_EQ(progress.total_distance, 2);
  EXPECT_EQ(progress.distance_ratio, 3);
  EXPECT_EQ(progress.elapsed_time, 4);
  EXPECT_EQ(progress.total_time, 5);
  EXPECT_EQ(progress.time_ratio, 6);
}

TEST_F(ProgressCheckerTest, ResetForgetsTheLastSample) {
  Reset(Budget(1.0, 10.0));
  Check(0, 0);
  Wait(29);
  Check(2.9, 0);
  Reset(Budget(1.0, 10.0));
  Wait(29);
  Check(100, 0);  // neither the way nor the wait up to here counts
  Wait(1);
  EXPECT_TRUE(Check(101, 0));
  Wait(1);
  EXPECT_FALSE(Check(103, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(3.00/1.00), time:(2.00/10.00)");
}

TEST_F(ProgressCheckerTest, UpdateProgressAloneAddsItsStep) {
  Reset(Budget(1.0, 10.0));
  checker_.UpdateProgress(PoseAt(0, 0));
  Wait(1);
  checker_.UpdateProgress(PoseAt(1, 0));
  Wait(1);
  checker_.UpdateProgress(PoseAt(2.75, 0));
  EXPECT_TRUE(checker_.CheckProgress(PoseAt(0, 0)));
  Wait(1);
  checker_.UpdateProgress(PoseAt(3, 0));
  EXPECT_FALSE(checker_.CheckProgress(PoseAt(0, 0)));
  EXPECT_FALSE(checker_.CheckProgress(PoseAt(1e9, 5)));  // the pose is not used
  EXPECT_TRUE(checker_.CheckBaseLine(PoseAt(3, 0)));     // no baseline yet
}

TEST_F(ProgressCheckerTest, AThousandCyclesOfAStuckRobotLogNothing) {
  const LogCapture log;
  Reset(Budget(1.0, 10.0));
  for (int i = 0; i < 1000; ++i) {
    Check(0, 0);
    Wait(0.1);
  }
  EXPECT_FALSE(Check(0, 0));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(ProgressCheckerTest, AClockThatJumpsBackIsNoStall) {
  Reset(AmpleBudget());
  Check(0, 0);
  SetNow(ros::Time(50, 0));
  EXPECT_TRUE(Check(0, 0));
  SetNow(ros::Time(119, 0));
  EXPECT_TRUE(Check(0, 0));
  SetNow(ros::Time(120, 0));
  EXPECT_FALSE(Check(0, 0));  // the baseline's time stayed
}

TEST_F(ProgressCheckerTest, TimeThatRanBackwardsIsTakenOff) {
  Reset(Budget(1.0, 10.0));
  Check(0, 0);
  SetNow(ros::Time(90, 500000000));
  EXPECT_TRUE(Check(10, 0));  // -9.5 s, below a millisecond: no budget test
  SetNow(ros::Time(90, 501000000));
  EXPECT_TRUE(Check(20, 0));
  SetNow(ros::Time(100, 250000000));
  EXPECT_FALSE(Check(30, 0));
  EXPECT_EQ(reason_, "CheckProgress failed, dis:(30.00/1.00), time:(0.25/10.00)");
}

TEST_F(ProgressCheckerTest, HoldsFromOneEndOfTimeToTheOther) {
  const ros::Time last(4294967295u, 999999999u);
  SetNow(ros::Time(0, 0));
  Reset(Budget(1.0, 10.0));
  EXPECT_TRUE(Check(0, 0));
  SetNow(last);
  EXPECT_FALSE(Check(0.1, 0));
  EXPECT_EQ(reason_,
            "CheckBaseLine failed, baseline_pose:(0.00,0.00)  "
            "CheckProgress failed, dis:(0.10/1.00), time:(4294967296.00/10.00)");
  Reset(Budget(1.0, 10.0));
  EXPECT_TRUE(Check(0, 0));
  SetNow(ros::Time(0, 0));
  EXPECT_TRUE(Check(0.1, 0));
}

TEST_F(ProgressCheckerTest, APoseThatIsNoPlaceIsNoMovement) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    Reset(Budget(1.0, 1000.0));
    Check(0, 0);
    Wait(19);
    EXPECT_EQ(checker_.IsRobotMovedEnough(PoseAt(bad, 0)), std::isinf(bad));
  }
  Wait(1);
  EXPECT_FALSE(Check(std::numeric_limits<double>::quiet_NaN(), 0));
  EXPECT_EQ(reason_, "CheckBaseLine failed, baseline_pose:(0.00,0.00)  ");  // NaN is not above a budget
}

// Numbers as in 1.234,50.
class GroupedNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// The locale of the whole process while this lives.
class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : before_(std::locale::global(locale)) {}
  ~GlobalLocale() { std::locale::global(before_); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;

 private:
  std::locale before_;
};

TEST_F(ProgressCheckerTest, TheReasonsNumbersDoNotFollowTheProcesssLocale) {
  const GlobalLocale grouped(std::locale(std::locale(), new GroupedNumbers));
  std::ostringstream other_text;
  other_text << std::fixed << std::setprecision(2) << 1234.5;
  ASSERT_EQ(other_text.str(), "1.234,50");

  Reset(Budget(1000.5, 2000.25));
  Check(-1234.5, 0.25);
  Wait(1e6);
  EXPECT_FALSE(Check(-1234.5, 0.375));
  EXPECT_EQ(reason_,
            "CheckBaseLine failed, baseline_pose:(-1234.50,0.25)  "
            "CheckProgress failed, dis:(0.12/1000.50), time:(1000000.00/2000.25)");
}

TEST_F(ProgressCheckerTest, HugeNumbersFitTheReason) {
  Reset(Budget(1.0, 10.0));
  Check(-1e300, 0);
  Wait(30);
  EXPECT_FALSE(Check(-1e300, 0));
  char baseline[400];
  std::snprintf(baseline, sizeof(baseline), "CheckBaseLine failed, baseline_pose:(%.2f,0.00)  ", -1e300);
  EXPECT_EQ(reason_, baseline + std::string("CheckProgress failed, dis:(0.00/1.00), time:(30.00/10.00)"));
}

// The checker's rules over whole milliseconds and millimetres along a line.
struct Model {
  std::int64_t budget_mm = 0;
  std::int64_t budget_ms = 0;
  std::int64_t moved_mm = 0;
  std::int64_t elapsed_ms = 0;
  std::int64_t baseline_mm = 0;
  std::int64_t baseline_ms = 0;
  std::int64_t last_mm = 0;
  std::int64_t last_ms = 0;
  bool has_baseline = false;
  bool has_last = false;

  // Returns the reason; empty while all is well.
  std::string Check(std::int64_t mm, std::int64_t ms) {
    if (has_last) {
      moved_mm += std::abs(mm - last_mm);
      elapsed_ms += ms - last_ms;
    }
    last_mm = mm;
    last_ms = ms;
    has_last = true;
    bool baseline_ok = true;
    if (!has_baseline || std::abs(mm - baseline_mm) > 200) {
      baseline_mm = mm;
      baseline_ms = ms;
      has_baseline = true;
    } else {
      baseline_ok = ms - baseline_ms < 20000;
    }
    const bool tested = budget_mm >= 1 && elapsed_ms >= 1;
    const bool progress_ok = !tested || (moved_mm < 3 * budget_mm && elapsed_ms < 3 * budget_ms);
    return (baseline_ok ? "" : "CheckBaseLine") + std::string(progress_ok ? "" : "CheckProgress");
  }
};

std::string TestsNamedIn(const std::string& reason) {
  std::string names;
  for (const char* name : {"CheckBaseLine", "CheckProgress"}) {
    names += reason.find(name) == std::string::npos ? "" : name;
  }
  return names;
}

RC_GTEST_FIXTURE_PROP(ProgressCheckerTest, AgreesWithAModelInWholeMillimetresAndMilliseconds, ()) {
  // Steps in eighths of a metre and of a second, whose sums are exact.
  constexpr std::int64_t kEighth = 125;
  Model model;
  const auto cycles = *rc::gen::inRange(1, 60).as("cycles");
  std::int64_t mm = 0;
  std::int64_t ms = 100000;
  for (int i = 0; i < cycles; ++i) {
    if (*rc::gen::inRange(0, 12) == 0) {
      model = Model();
      model.budget_mm = kEighth * *rc::gen::inRange(0, 20).as("budget's length");
      model.budget_ms = kEighth * *rc::gen::inRange(0, 200).as("budget's time");
      Reset(Budget(static_cast<double>(model.budget_mm) / 1000, static_cast<double>(model.budget_ms) / 1000));
    }
    mm += kEighth * *rc::gen::element(-4, -1, 0, 0, 0, 1, 2);
    ms += kEighth * *rc::gen::element(0, 1, 2, 40, 79, 80, 81, 160);
    ros::Time::setNow(ros::Time().fromNSec(static_cast<std::uint64_t>(ms) * 1000000));
    const bool ok = Check(static_cast<double>(mm) / 1000, 0);
    const std::string expected = model.Check(mm, ms);
    RC_ASSERT(ok == expected.empty());
    RC_ASSERT(ok == reason_.empty());
    RC_ASSERT(TestsNamedIn(reason_) == expected);
  }
}

}  // namespace
}  // namespace controller_base_test
