#include "follower/refusal.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "test/follower/occupy.h"
#include "test/support/log_capture.h"

namespace controller_base::follower {
namespace {

using controller_base_test::LogCapture;
using testing::HasSubstr;

// A planner that is asked for a detour along y = 1 m, on an empty map of 4 m x 2 m, and the reason of its refusal.
class RefusalTest : public testing::Test {
 protected:
  RefusalTest() {
    start_.pose.position.x = 0.5;
    start_.pose.position.y = 1.0;
    for (double x = 0.5; x < 3.6; x += 0.05) {
      geometry_msgs::PoseStamped pose = start_;
      pose.pose.position.x = x;
      path_.poses.push_back(pose);
    }
  }

  void Occupy(double from_x, double to_x, double from_y = 0.0, double to_y = 2.0) {
    controller_base_test::Occupy({from_x, to_x, from_y, to_y}, &map_);
  }

  void DropBox(double x) {
    geometry_msgs::Point center;
    center.x = x;
    center.y = 1.0;
    planner_.CreateBoxObstacle(center, 0.0);
  }

  // The planner refuses; its last log line is `log_line`, and there is none when that is empty.
  void ExpectRefusal(Refusal refusal, const std::string& log_line) {
    const LogCapture log(ros::console::levels::Warn);
    ASSERT_FALSE(planner_.CreatePlan(&map_, nullptr, start_, path_, true));
    ASSERT_FALSE(log.Lines().empty());
    EXPECT_THAT(log.Lines().back().text, HasSubstr(log_line));
    EXPECT_EQ(WhyRefused(planner_, map_, start_, path_), refusal);
  }

  costmap_2d::Costmap2D map_{80, 40, 0.05, 0.0, 0.0};
  geometry_msgs::PoseStamped start_;
  nav_msgs::Path path_;
  nav_controller::LocalPlanner planner_{false};
};

TEST_F(RefusalTest, AStartOffTheMap) {
  start_.pose.position.x = -0.01;
  ExpectRefusal(Refusal::kStartOffMap, "Start is out map");
}

TEST_F(RefusalTest, AStartOnAnObstacle) {
  Occupy(0.4, 0.6);
  ExpectRefusal(Refusal::kStartOccupied, "Start is occupied");
}

TEST_F(RefusalTest, AStartInABox) {
  DropBox(0.5);
  ExpectRefusal(Refusal::kStartInBox, "Cannot get a path");
}

TEST_F(RefusalTest, AGoalOffTheMap) {
  path_.poses.back().pose.position.x = 4.0;
  ExpectRefusal(Refusal::kGoalOffMap, "Goal is out map");
}

TEST_F(RefusalTest, AnEmptyPathHasNoGoalOnTheMap) {
  path_.poses.clear();
  EXPECT_FALSE(planner_.CreatePlan(&map_, nullptr, start_, path_, true));
  EXPECT_EQ(WhyRefused(planner_, map_, start_, path_), Refusal::kGoalOffMap);
}

TEST_F(RefusalTest, AGoalInABox) {
  DropBox(3.55);
  ExpectRefusal(Refusal::kGoalInBox, "Cannot get a path");
}

TEST_F(RefusalTest, AFallBackIsTooNearWithinThirtyCellsAndUsedBeyond) {
  Occupy(2.05, 4.0);  // the last free pose is at 2.0 m: 30 cells from the start
  ExpectRefusal(Refusal::kFallBackTooNear, "Goal is occupied");
  start_.pose.position.x = 0.45;
  EXPECT_TRUE(planner_.CreatePlan(&map_, nullptr, start_, path_, true));
}

TEST_F(RefusalTest, NowhereToFallBack) {
  Occupy(0.4, 4.0, 0.9, 1.1);
  start_.pose.position.y = 0.5;
  ExpectRefusal(Refusal::kNowhereToFallBack, "Cannot get a path");
}

TEST_F(RefusalTest, NoWay) {
  Occupy(2.0, 2.1);
  ExpectRefusal(Refusal::kNoPath, "Cannot get a path");
}

TEST_F(RefusalTest, TwoReasonsAtOnceAreToldInThePlannersOrder) {
  path_.poses.back().pose.position.x = 4.0;
  Occupy(0.4, 0.6);
  ExpectRefusal(Refusal::kStartOccupied, "Start is occupied");
  start_.pose.position.x = 0.7;
  DropBox(0.7);
  ExpectRefusal(Refusal::kGoalOffMap, "Goal is out map");
}

TEST(ExplainTest, EachRefusalHasALineOfItsOwn) {
  const auto line = [](Refusal refusal) { return Explain(refusal, "the goal", 1.5); };
  EXPECT_EQ(line(Refusal::kStartOffMap), "no detour: the robot is not on its local map");
  EXPECT_EQ(line(Refusal::kStartOccupied), "no detour: the robot stands too near to an obstacle");
  EXPECT_EQ(line(Refusal::kStartInBox), "no detour: the robot stands in a virtual box");
  EXPECT_EQ(line(Refusal::kGoalOffMap), "no detour: the stretch to rejoin ends off the local map");
  EXPECT_EQ(line(Refusal::kGoalInBox), "no detour: the stretch to rejoin ends in a virtual box");
  EXPECT_EQ(line(Refusal::kFallBackTooNear),
            "no detour: the goal is occupied, and the free place before it is within 30 cells");
  EXPECT_EQ(line(Refusal::kNowhereToFallBack),
            "no detour: the goal is occupied, and the path has no free place to fall back to");
  EXPECT_EQ(line(Refusal::kNoPath), "no detour: no way around within 1.50 m of the path");
}

}  // namespace
}  // namespace controller_base::follower
