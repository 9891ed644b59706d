#include "demo/judge/verdict.h"

#include <gtest/gtest.h>

namespace controller_base::demo {
namespace {

simulation::DriveRecord Stopped(follower::DriveState state, double goal_distance) {
  simulation::DriveRecord drive;
  drive.outcome.state = state;
  drive.goal_distance = goal_distance;
  drive.outcome.reason = "a reason";
  return drive;
}

TEST(VerdictOfADrive, ADriveThatGoesOnWasInterrupted) {
  const Verdict verdict = Judge(Stopped(follower::DriveState::kDriving, 0.0));
  EXPECT_EQ(verdict.outcome, DriveOutcome::kInterrupted);
  EXPECT_EQ(verdict.text, "interrupted");
}

TEST(VerdictOfADrive, AnArrivalCountsWithinAQuarterOfAMetre) {
  EXPECT_EQ(Judge(Stopped(follower::DriveState::kReached, 0.25)).outcome, DriveOutcome::kReached);
  EXPECT_EQ(Judge(Stopped(follower::DriveState::kReached, 0.26)).outcome, DriveOutcome::kNotReached);
}

TEST(VerdictOfADrive, WhatTheLaserHadSeenMustNotBeTouched) {
  simulation::DriveRecord drive = Stopped(follower::DriveState::kReached, 0.0);
  drive.contacts = 1;  // with what the laser cannot see
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached);
  drive.touched_seen = 1;
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kTouched);
}

TEST(VerdictOfADrive, ARobotThatGaveUpSaysWhereAndWhy) {
  const Verdict stalled = Judge(Stopped(follower::DriveState::kStalled, 1.5));
  EXPECT_EQ(stalled.outcome, DriveOutcome::kNotReached);
  EXPECT_EQ(stalled.text, "goal not reached, stopped 1.50 m from the goal: a reason");
  const Verdict aborted = Judge(Stopped(follower::DriveState::kAborted, 1.5));
  EXPECT_EQ(aborted.outcome, DriveOutcome::kAborted);
  EXPECT_EQ(aborted.text, "given up 1.50 m from the goal: a reason");
}

follower::Outcome StoppedBy(follower::StopCause cause) {
  follower::Outcome outcome;
  outcome.state = follower::DriveState::kStalled;
  outcome.cause = cause;
  outcome.reason = "a reason";
  return outcome;
}

TEST(IsExplained, ByARefusalOrAContactAlone) {
  using follower::StopCause;
  for (const StopCause cause : {StopCause::kRefused, StopCause::kContact}) {
    EXPECT_TRUE(IsExplained(StoppedBy(cause))) << Name(cause);
  }
  for (const StopCause cause : {StopCause::kNone, StopCause::kArrived, StopCause::kLost, StopCause::kStall,
                                StopCause::kBudget, StopCause::kClock, StopCause::kCancelled}) {
    EXPECT_FALSE(IsExplained(StoppedBy(cause))) << Name(cause);
  }
}

}  // namespace
}  // namespace controller_base::demo
