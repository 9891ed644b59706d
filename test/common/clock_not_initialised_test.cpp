// The progress checker in a process whose clock is not running yet: ros::Time::now() throws until ros::Time::init().
// A program of its own, because there is no way back.
#include <gtest/gtest.h>
#include <ros/time.h>

#include <cstddef>
#include <string>
#include <vector>

#include "controller_base/controller_progress_checker.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using geometry_msgs::PoseStamped;
using nav_controller::ControllerProgressChecker;
using nav_controller::ControlProgress;

constexpr double kBudgetDistance = 4.0;  // metres; overrun from 12 m on
constexpr double kBudgetTime = 10.0;     // seconds; overrun from 30 s on

ControllerProgressChecker StartedChecker() {
  ControlProgress budget;
  budget.total_distance = kBudgetDistance;
  budget.total_time = kBudgetTime;
  ControllerProgressChecker checker;
  checker.Reset(budget);
  return checker;
}

std::string ReasonAt(ControllerProgressChecker& checker, double x) {
  std::string reason;
  checker.Check(PoseAt(x, 0.0), reason);
  return reason;
}

// The reasons of a drive of 1 m a second that overruns its distance after 12 s, then stands still and stalls as well.
std::vector<std::string> ReasonsOfADrive(ControllerProgressChecker& checker) {
  SetNow(ros::Time(100, 0));
  std::vector<std::string> reasons;
  for (int second = 0; second <= 40; ++second) {
    reasons.push_back(ReasonAt(checker, second < 13 ? second : 13));
    Wait(1.0);
  }
  return reasons;
}

// One program, one test: the clock runs from its middle on.
TEST(ClockNotInitialised, NothingStaysOfASampleThatFoundNoClock) {
  const PoseStamped far_away = PoseAt(500.0, 500.0);
  std::vector<ControllerProgressChecker> checkers(6, StartedChecker());
  for (std::size_t throws = 0; throws < checkers.size(); ++throws) {
    std::string reason = "left alone";
    for (std::size_t i = 0; i < throws; ++i) {
      EXPECT_THROW(checkers[throws].Check(far_away, reason), ros::TimeNotInitializedException);
    }
    EXPECT_EQ(reason, "left alone");
  }
  ControllerProgressChecker in_parts = StartedChecker();
  EXPECT_THROW(in_parts.UpdateProgress(far_away), ros::TimeNotInitializedException);
  EXPECT_THROW(in_parts.CheckBaseLine(far_away), ros::TimeNotInitializedException);
  EXPECT_THROW(in_parts.ResetBaselinePose(far_away), ros::TimeNotInitializedException);
  EXPECT_FALSE(in_parts.IsRobotMovedEnough(PoseAt(0.2, 0.0)));  // from the origin, as before any baseline
  EXPECT_TRUE(in_parts.IsRobotMovedEnough(PoseAt(0.21, 0.0)));
  checkers.push_back(in_parts);

  ControllerProgressChecker undisturbed = StartedChecker();
  const std::vector<std::string> expected = ReasonsOfADrive(undisturbed);
  EXPECT_EQ(expected[11], "");
  EXPECT_EQ(expected[12], "CheckProgress failed, dis:(12.00/4.00), time:(12.00/10.00)");
  EXPECT_EQ(expected.back(),
            "CheckBaseLine failed, baseline_pose:(13.00,0.00)  "
            "CheckProgress failed, dis:(13.00/4.00), time:(40.00/10.00)");
  for (std::size_t i = 0; i < checkers.size(); ++i) {
    EXPECT_EQ(ReasonsOfADrive(checkers[i]), expected) << "checker " << i;
  }
}

}  // namespace
}  // namespace controller_base_test
