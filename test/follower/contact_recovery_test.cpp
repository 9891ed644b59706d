#include "follower/contact_recovery.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "test/follower/recorder.h"
#include "test/support/sim_time.h"

namespace controller_base::follower {
namespace {

using controller_base_test::SetNow;
using controller_base_test::Wait;
using Phase = ContactRecovery::Phase;
using testing::ElementsAre;
using testing::IsEmpty;

// A robot at (1, 1) with heading 0, on a free map.
class ContactRecoveryTest : public testing::Test {
 protected:
  void SetUp() override { SetNow(ros::Time(500.0)); }

  int Touch(std::int8_t type) {
    nav_controller::CollisionEvent event;
    event.collided = true;
    event.stamp = ros::Time::now();
    event.type = type;
    recovery_.AddContact(event);
    return recovery_.React(robot_, 7.0);
  }

  Command Recover() { return recovery_.Recover(View(), robot_); }
  PlannerView View() const { return {map_, planner_.GetLocalMapObstacle()}; }

  // A contact in front, and the cycles until its boxes are dropped.
  void TouchAndDropBoxes() {
    Touch(3);
    robot_.x -= 0.21;
    Recover();
    robot_.yaw += kPi / 6;
    Recover();
    Wait(0.5);
  }

  controller_base_test::Recorder recorder_;
  Reporter reporter_{&recorder_};
  Parameters parameters_;
  nav_controller::LocalPlanner planner_{false};
  ContactRecovery recovery_{parameters_, reporter_, &planner_};
  costmap_2d::Costmap2D map_{80, 40, 0.05, 0.0, 0.0};
  Pose2d robot_{1.0, 1.0, 0.0};
};

TEST_F(ContactRecoveryTest, WithoutAContactNothingBegins) {
  EXPECT_EQ(recovery_.React(robot_, 7.0), 0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
  EXPECT_THAT(recorder_.events, IsEmpty());
  EXPECT_GT(recovery_.SecondsSinceContact(7.0), 1e9);
}

TEST_F(ContactRecoveryTest, TheContactLiesOnTheBodyWhereTheBumperWasPressed) {
  const struct {
    std::int8_t type;
    const char* text;
    double bearing;  // degrees
  } kCases[] = {{1, "bumper: left, contact 1 since the last free stretch", 50},
                {2, "bumper: right, contact 1 since the last free stretch", -50},
                {3, "bumper: front, contact 1 since the last free stretch", 0}};
  for (const auto& expected : kCases) {
    recovery_.Reset();
    Wait(1.0);
    Touch(expected.type);
    EXPECT_EQ(recorder_.events.back().text, expected.text);
    const geometry_msgs::Point& point = recorder_.events.back().position;
    EXPECT_NEAR(Distance(robot_, point), 0.17, 1e-12);
    EXPECT_NEAR(Direction(robot_, point), expected.bearing * kPi / 180, 1e-12);
  }
}

TEST_F(ContactRecoveryTest, AStaleContactIsNone) {
  nav_controller::CollisionEvent event;
  event.collided = true;
  event.stamp = ros::Time::now();
  event.type = 1;
  recovery_.AddContact(event);
  Wait(0.25);
  EXPECT_EQ(recovery_.React(robot_, 7.0), 0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
}

TEST_F(ContactRecoveryTest, ItBacksOffTwentyCentimetresAndTurnsAway) {
  Touch(1);
  EXPECT_EQ(recovery_.phase(), Phase::kBackOff);
  EXPECT_EQ(Recover().speed, -0.15);
  robot_.x -= 0.19;
  EXPECT_EQ(Recover().speed, -0.15);
  robot_.x -= 0.02;
  EXPECT_EQ(Recover().speed, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kTurn);
  EXPECT_THAT(recorder_.Told("turn"), ElementsAre("backed off 0.21 m, turning -30 degrees"));
  EXPECT_LT(Recover().turn_rate, 0.0);
  robot_.yaw = -kPi / 6 + 0.06;
  EXPECT_LT(Recover().turn_rate, 0.0);
  robot_.yaw = -kPi / 6 + 0.04;
  EXPECT_EQ(Recover().turn_rate, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
}

TEST_F(ContactRecoveryTest, ItTurnsThroughTheHalfTurnTheShortWay) {
  robot_.yaw = kPi - 0.1;
  Touch(3);  // turns left by a twelfth
  robot_.x += 0.21;
  Recover();
  EXPECT_GT(Recover().turn_rate, 0.0);
  robot_.yaw = -kPi + kPi / 6 - 0.1;
  EXPECT_EQ(Recover().turn_rate, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
}

TEST_F(ContactRecoveryTest, WithoutRoomBehindItDoesNotBackOff) {
  for (unsigned int my = 0; my < 40; ++my) {
    map_.setCost(18, my, costmap_2d::LETHAL_OBSTACLE);  // 0.90 to 0.95 m
  }
  Touch(3);
  EXPECT_EQ(Recover().speed, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kTurn);
}

TEST_F(ContactRecoveryTest, BothPhasesEndAfterAWhileHoweverStuckTheRobotIs) {
  Touch(3);
  Wait(3.0);
  EXPECT_EQ(Recover().speed, -0.15);
  Wait(0.01);
  EXPECT_EQ(Recover().speed, 0.0);
  Wait(4.99);
  EXPECT_GT(Recover().turn_rate, 0.0);
  Wait(0.01);
  EXPECT_EQ(Recover().turn_rate, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
}

TEST_F(ContactRecoveryTest, AfterAJumpOfTheClockThePhaseHasItsTimeAgain) {
  Touch(3);
  Wait(100.0);
  recovery_.RestartTimers();
  EXPECT_EQ(Recover().speed, -0.15);
}

TEST_F(ContactRecoveryTest, ThePlaceIsRememberedAsAWallOfBoxes) {
  TouchAndDropBoxes();
  EXPECT_THAT(recorder_.Told("box"), ElementsAre("12 virtual boxes around the contact, 12 in all"));
  EXPECT_EQ(recovery_.boxes().size(), 12u);
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 12u);
  for (const double y : {0.75, 1.0, 1.25}) {  // across the path
    EXPECT_TRUE(View().IsBlocked(PositionOf({1.2, y, 0.0}))) << y;
  }
  EXPECT_FALSE(View().IsBlocked(PositionOf({1.2, 1.4, 0.0})));
}

TEST_F(ContactRecoveryTest, NoBoxStandsOnTheRobotsOwnCell) {
  parameters_.back_off_distance = 0.0;
  Touch(3);
  Recover();
  robot_.yaw += kPi / 6;
  Recover();
  ASSERT_FALSE(recovery_.boxes().empty());
  EXPECT_LT(recovery_.boxes().size(), 12u);
  EXPECT_FALSE(View().IsBlocked(PositionOf(robot_)));
}

TEST_F(ContactRecoveryTest, OffTheMapNoBoxIsDropped) {
  Touch(3);
  robot_.x -= 0.21;
  Recover();
  robot_ = {50.0, 1.0, kPi / 6};
  Recover();
  EXPECT_THAT(recovery_.boxes(), IsEmpty());
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
}

TEST_F(ContactRecoveryTest, WhereWallsOfBoxesClosedTheWayThePlacesTouchedStayClosed) {
  TouchAndDropBoxes();
  recovery_.GiveWay(View(), robot_);
  EXPECT_THAT(recorder_.Told("forget"),
              ElementsAre("12 virtual boxes: no way is left around them; 8 stay where something was touched"));
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 8u);
  const PlannerView view = View();
  EXPECT_TRUE(view.IsBlocked(PositionOf({1.17, 1.15, 0.0})));  // nearer than its radius to what it touched
  EXPECT_FALSE(view.IsBlocked(PositionOf({1.17, 1.26, 0.0})));
  TouchAndDropBoxes();
  EXPECT_EQ(recovery_.boxes().size(), 16u);
}

TEST_F(ContactRecoveryTest, WhatWasTouchedIsForgottenAfterAWhileAndOnlyOnce) {
  TouchAndDropBoxes();
  recovery_.GiveWay(View(), robot_);
  Wait(1.9);
  recovery_.GiveWay(View(), robot_);
  EXPECT_EQ(recovery_.boxes().size(), 8u);
  Wait(0.2);
  recovery_.GiveWay(View(), robot_);
  EXPECT_THAT(recovery_.boxes(), IsEmpty());
  EXPECT_EQ(recorder_.Told("forget").size(), 2u);
  TouchAndDropBoxes();
  EXPECT_EQ(recovery_.boxes().size(), 4u);
  Wait(100.0);
  recovery_.GiveWay(View(), robot_);
  EXPECT_EQ(recovery_.boxes().size(), 4u);
  recovery_.Rejoined();
  TouchAndDropBoxes();
  EXPECT_EQ(recovery_.boxes().size(), 16u);
}

TEST_F(ContactRecoveryTest, APressThatLastsIsOneContactUntilItLastsTooLong) {
  for (int cycle = 0; cycle <= 13; ++cycle) {  // 0.65 s
    Touch(3);
    Wait(0.05);
  }
  EXPECT_EQ(recorder_.Told("contact").size(), 1u);
  Wait(0.05);
  Touch(3);
  EXPECT_EQ(recorder_.Told("contact").size(), 2u);  // after 0.75 s
  Wait(0.35);
  Touch(3);  // a new press
  EXPECT_EQ(recorder_.Told("contact").size(), 3u);
}

TEST_F(ContactRecoveryTest, TheTenthContactIsOneTooManyUnlessItRejoinedBefore) {
  for (int contact = 1; contact < 10; ++contact) {
    EXPECT_EQ(Touch(2), 0) << contact;
    Wait(0.31);
  }
  EXPECT_EQ(Touch(2), 10);
  recovery_.Rejoined();
  Wait(0.31);
  EXPECT_EQ(Touch(2), 0);
}

TEST_F(ContactRecoveryTest, ANewPathKnowsNothingOfTheOld) {
  TouchAndDropBoxes();
  EXPECT_EQ(recovery_.SecondsSinceContact(10.0), 3.0);
  Touch(1);
  recovery_.Reset();
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
  EXPECT_THAT(recovery_.boxes(), IsEmpty());
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 0u);
  EXPECT_GT(recovery_.SecondsSinceContact(10.0), 1e9);
}

// The robot is at (1, 1) with heading 0: its back is at x = 0.83.
class ContactAtTheBack : public ContactRecoveryTest {
 protected:
  void TouchBehind() {
    recovery_.AddBackContact(ros::Time::now());
    recovery_.ReactBehind(View(), robot_, 8.0);
  }
};

TEST_F(ContactAtTheBack, DoesNotMakeTheRobotBackOff) {
  TouchBehind();
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
  EXPECT_EQ(recovery_.React(robot_, 8.0), 0);
  EXPECT_EQ(recovery_.phase(), Phase::kNone);
  EXPECT_GT(recovery_.SecondsSinceContact(8.0), 1e9);  // and the robot does not stop
  EXPECT_THAT(recorder_.Told("contact"), ElementsAre("bumper: back, driving on"));
}

TEST_F(ContactAtTheBack, DropsBoxesBehindThatLeaveTheRobotFree) {
  TouchBehind();
  EXPECT_FALSE(recovery_.boxes().empty());
  EXPECT_TRUE(View().IsBlocked(PointAt(robot_, kPi, 0.17)));
  for (const double bearing : {0.0, 0.5 * kPi, -0.5 * kPi}) {
    EXPECT_FALSE(View().IsLineBlocked(PositionOf(robot_), PointAt(robot_, bearing, 0.5))) << bearing;
  }
}

TEST_F(ContactAtTheBack, EndsBackingOff) {
  Touch(1);
  robot_.x -= 0.05;
  TouchBehind();
  EXPECT_EQ(recovery_.phase(), Phase::kTurn);
  EXPECT_EQ(recovery_.SecondsSinceContact(8.0), 0.0);
  EXPECT_THAT(recorder_.Told("contact"),
              ElementsAre("bumper: left, contact 1 since the last free stretch", "bumper: back, no farther back"));
}

TEST_F(ContactAtTheBack, IsNotBackedIntoAfterAContactInFront) {
  TouchBehind();
  Wait(1.0);
  Touch(3);
  EXPECT_EQ(Recover().speed, 0.0);
  EXPECT_EQ(recovery_.phase(), Phase::kTurn);
}

TEST_F(ContactAtTheBack, IsOneForAsLongAsItIsPressed) {
  for (int report = 0; report < 100; ++report) {
    TouchBehind();
    Wait(0.05);
  }
  EXPECT_EQ(recorder_.Told("contact").size(), 1u);
}

TEST_F(ContactAtTheBack, IsForgottenWhenItIsOld) {
  recovery_.AddBackContact(ros::Time::now());
  Wait(0.25);
  recovery_.ReactBehind(View(), robot_, 8.0);
  EXPECT_TRUE(recovery_.boxes().empty());
  recovery_.AddBackContact(ros::Time::now());
  recovery_.StartOver();
  recovery_.ReactBehind(View(), robot_, 8.0);
  EXPECT_TRUE(recovery_.boxes().empty());
}

}  // namespace
}  // namespace controller_base::follower
