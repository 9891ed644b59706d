#include "follower/follower_session.h"

#include <gmock/gmock.h>

#include <vector>

#include "costmap_2d/cost_values.h"
#include "follower/local_map.h"
#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_test::Recorder;
using controller_base_test::Stamped;
using testing::ElementsAre;

FollowerInput InputAt(double seconds) {
  FollowerInput input;
  input.clock = ros::Time(500.0 + seconds);
  input.robot = Stamped({0.1 * seconds, 0.0, 0.0});
  input.map = ToLocalMapData(costmap_2d::Costmap2D(120, 120, 0.05, -3.0, -3.0));
  return input;
}

// The first of a drive of 2 m, with an obstacle on its path that leaves room for a detour.
FollowerInput Beginning() {
  FollowerInput input = InputAt(0.0);
  input.path.emplace();
  input.path->header.frame_id = "map";
  input.path->poses = {Stamped({0.0, 0.0, 0.0}), Stamped({2.0, 0.0, 0.0})};
  for (std::size_t my = 58; my < 62; ++my) {
    input.map.costs[my * 120 + 80] = costmap_2d::LETHAL_OBSTACLE;
  }
  return input;
}

nav_controller::CollisionEvent ContactAt(const ros::Time& stamp) {
  nav_controller::CollisionEvent contact;
  contact.collided = true;
  contact.stamp = stamp;
  contact.type = 1;
  return contact;
}

FollowerOutput CycleOf(FollowerSession* session, const FollowerInput& input) {
  ros::Time::setNow(input.clock);
  return session->Cycle(input);
}

std::vector<EventKind> KindsOf(const FollowerOutput& output) {
  std::vector<EventKind> kinds;
  for (const Event& event : output.events) {
    kinds.push_back(event.kind);
  }
  return kinds;
}

TEST(FollowerSession, WithoutAPathItStands) {
  FollowerSession session(nullptr);
  const FollowerOutput output = CycleOf(&session, InputAt(0.0));
  EXPECT_EQ(output.command.speed, 0.0);
  EXPECT_EQ(output.outcome.state, DriveState::kIdle);
  EXPECT_THAT(output.events, testing::IsEmpty());
}

TEST(FollowerSession, ACycleTakesItsPathFirstAndTellsAllOfItself) {
  Recorder recorder;
  FollowerSession session(&recorder);
  const FollowerOutput output = CycleOf(&session, Beginning());
  EXPECT_EQ(output.outcome.state, DriveState::kDriving);
  EXPECT_EQ(output.state, "detour");
  EXPECT_NEAR(output.progress.total_distance, 2.0, 1e-9);
  EXPECT_FALSE(output.ahead.poses.empty());
  ASSERT_NE(output.blockage, nullptr);
  ASSERT_EQ(output.detours.size(), 1u);
  EXPECT_EQ(output.detour->detour.poses.size(), output.detours[0].detour.poses.size());
  EXPECT_THAT(KindsOf(output),
              ElementsAre(EventKind::kPath, EventKind::kBlocked, EventKind::kCorridor, EventKind::kDetour));
  EXPECT_EQ(recorder.events.size(), output.events.size());
  EXPECT_EQ(recorder.detours.size(), 1u);
}

TEST(FollowerSession, WhatACycleToldIsNotToldAgain) {
  FollowerSession session(nullptr);
  CycleOf(&session, Beginning());
  const FollowerOutput output = CycleOf(&session, InputAt(0.05));
  EXPECT_THAT(output.events, testing::IsEmpty());
  EXPECT_THAT(output.detours, testing::IsEmpty());
  EXPECT_NE(output.detour, nullptr);
}

TEST(FollowerSession, ContactsAreFeltInTheCycleThatBringsThem) {
  FollowerSession session(nullptr);
  CycleOf(&session, Beginning());
  FollowerInput input = InputAt(0.05);
  input.contacts = {ContactAt(input.clock)};
  const FollowerOutput output = CycleOf(&session, input);
  EXPECT_EQ(output.state, "back-off");
  EXPECT_THAT(KindsOf(output), ElementsAre(EventKind::kContact));
}

TEST(FollowerSession, TheSameInputsGiveFreshFollowersTheSameOutputs) {
  const auto drive = [] {
    FollowerSession session(nullptr);
    std::vector<Command> commands = {CycleOf(&session, Beginning()).command};
    for (int cycle = 1; cycle < 60; ++cycle) {
      FollowerInput input = InputAt(0.05 * cycle);
      if (cycle == 30) {
        input.contacts = {ContactAt(input.clock)};
      }
      commands.push_back(CycleOf(&session, input).command);
    }
    return commands;
  };
  const std::vector<Command> first = drive();
  const std::vector<Command> second = drive();
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(first[i].speed, second[i].speed) << i;
    EXPECT_EQ(first[i].turn_rate, second[i].turn_rate) << i;
  }
}

}  // namespace
}  // namespace controller_base::follower
