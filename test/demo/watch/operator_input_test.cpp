// Goals and boxes from other nodes, over real topics.

#include "demo/watch/operator_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ros/ros.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "test/support/log_capture.h"

namespace controller_base::demo {
namespace {

using testing::HasSubstr;
using testing::Not;

class OperatorInputTest : public testing::Test {
 protected:
  OperatorInputTest()
      : goals_(node_.advertise<geometry_msgs::PoseStamped>("/move_base_simple/goal", 1000)),
        points_(node_.advertise<geometry_msgs::PointStamped>("/clicked_point", 1000)),
        input_([] { return false; }) {}

  void Listen() {
    input_.Listen();
    ASSERT_TRUE(Until([&] { return goals_.getNumSubscribers() > 0 && points_.getNumSubscribers() > 0; }));
  }

  static bool Until(const std::function<bool()>& is_so) {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(20.0);
    while (!is_so() && ros::WallTime::now() < deadline) {
      ros::WallDuration(0.005).sleep();
    }
    return is_so();
  }

  void SendGoal(double x, const std::string& frame = "map") {
    geometry_msgs::PoseStamped goal;
    goal.header.frame_id = frame;
    goal.pose.position.x = x;
    goals_.publish(goal);
  }

  void SendPoint(double x) {
    geometry_msgs::PointStamped point;
    point.header.frame_id = "map";
    point.point.x = x;
    points_.publish(point);
  }

  // Takes inputs until one has arrived, and adds it to the earlier ones.
  bool TakeUntil(const std::function<bool()>& is_so) {
    return Until([&] {
      const simulation::Interventions taken = input_.Take();
      if (taken.goal) {
        taken_goals_.push_back(taken.goal->x);
      }
      taken_boxes_ += static_cast<int>(taken.obstacles.size());
      return is_so();
    });
  }

  ros::NodeHandle node_;
  ros::Publisher goals_;
  ros::Publisher points_;
  OperatorInput input_;
  std::vector<double> taken_goals_;
  int taken_boxes_ = 0;
};

TEST_F(OperatorInputTest, NothingIsTakenBeforeItListens) {
  EXPECT_EQ(goals_.getNumSubscribers(), 0u);
  EXPECT_EQ(points_.getNumSubscribers(), 0u);
}

TEST_F(OperatorInputTest, AGoalAndABoxAreTaken) {
  Listen();
  SendGoal(1.5);
  SendPoint(2.5);
  EXPECT_TRUE(TakeUntil([&] { return taken_goals_ == std::vector<double>{1.5} && taken_boxes_ == 1; }));
}

// A node that never stops sending: the last goal is taken, most of the others are not, and boxes are taken one by one.
TEST_F(OperatorInputTest, AFloodIsThrottled) {
  Listen();
  const ros::WallTime begin = ros::WallTime::now();
  for (int i = 1; i <= 500; ++i) {
    SendGoal(i);
    SendPoint(i);
    TakeUntil([] { return true; });
  }
  EXPECT_TRUE(TakeUntil([&] { return !taken_goals_.empty() && taken_goals_.back() == 500.0; }));
  const double seconds = (ros::WallTime::now() - begin).toSec();
  EXPECT_LE(static_cast<double>(taken_goals_.size()), seconds / OperatorInput::kGoalPause + 1.0);
  EXPECT_LE(taken_boxes_, seconds / OperatorInput::kBoxPause + 1.0);
  EXPECT_GE(taken_boxes_, 1);
}

TEST_F(OperatorInputTest, WhatIsIgnoredIsToldRarelyAndHarmlessly) {
  Listen();
  const controller_base_test::LogCapture log;
  for (int i = 0; i < 200; ++i) {
    SendGoal(i, "\x1b[31mred\nline" + std::string(1000, 'x'));
    SendGoal(std::numeric_limits<double>::quiet_NaN());
  }
  std::vector<std::string> warnings;
  ASSERT_TRUE(TakeUntil([&] {
    warnings.clear();
    for (const controller_base_test::LogLine& line : log.Lines()) {
      if (line.text.find(" ignored: ") != std::string::npos) {
        warnings.push_back(line.text);
      }
    }
    return !warnings.empty();
  }));
  EXPECT_EQ(warnings.size(), 1u);
  EXPECT_THAT(warnings.front(), HasSubstr("a goal"));
  EXPECT_THAT(warnings.front(), Not(HasSubstr("\x1b")));
  EXPECT_THAT(warnings.front(), Not(HasSubstr("\n")));
  EXPECT_LT(warnings.front().size(), 200u);
  EXPECT_TRUE(taken_goals_.empty());
}

}  // namespace
}  // namespace controller_base::demo
