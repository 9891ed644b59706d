#include "runs/judged_drive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "map_file.h"
#include "test/demo/runs/hall.h"

namespace controller_base_demo {
namespace {

using testing::StartsWith;
using testing::StrEq;

// Along the hall from x = 1 m to x = 11 m.
RandomWorld InHall(double depth, const std::vector<Obstacle>& obstacles) {
  RandomWorld world;
  world.scenario.seed = 5;
  world.scenario.start = {1.0, 0.5 * depth, 0.0};
  world.scenario.goal = {11.0, 0.5 * depth};
  world.scenario.obstacles = obstacles;
  world.path = AlongHall(depth);
  return world;
}

RunResult DriveInHall(double depth, const std::vector<Obstacle>& obstacles) {
  const costmap_2d::Costmap2D hall = Hall(depth);
  return DriveAndJudge(hall, InHall(depth, obstacles));
}

TEST(DriveAndJudge, AFreeHallIsReached) {
  const RunResult run = DriveInHall(6.0, {});
  EXPECT_EQ(run.seed, 5u);
  EXPECT_EQ(run.outcome, RunOutcome::kReached);
  EXPECT_THAT(run.reason, StrEq(""));
  EXPECT_TRUE(run.IsClean());
  EXPECT_NEAR(run.path, 10.0, 1e-6);
  EXPECT_NEAR(run.driven, 10.0, 0.1);
  EXPECT_GT(run.time, 10.0 / 0.5);
  EXPECT_EQ(run.detours, 0);
}

TEST(DriveAndJudge, ABoxIsBypassedAndADetourCounted) {
  const RunResult run = DriveInHall(6.0, {Box(6.0, 3.0, 0.4, 0.6)});
  EXPECT_EQ(run.outcome, RunOutcome::kReached);
  EXPECT_GE(run.detours, 1);
  EXPECT_GT(run.detour, 1.0);
  EXPECT_EQ(run.contacts, 0);
}

TEST(DriveAndJudge, ALowBoxIsTouchedWithoutBlame) {
  const RunResult run = DriveInHall(6.0, {Box(6.0, 3.0, 0.1, 0.4, true)});
  EXPECT_GE(run.contacts, 1);
  EXPECT_EQ(run.touches, 0);
  EXPECT_TRUE(run.IsClean());
}

TEST(DriveAndJudge, AWallFromSideToSideIsRightlyRefused) {
  const RunResult run = DriveInHall(6.0, {Box(6.0, 3.0, 0.4, 6.0)});
  EXPECT_EQ(run.outcome, RunOutcome::kRefused);
  EXPECT_THAT(run.reason, StrEq("no detour: no way around within 1.50 m of the path"));
  EXPECT_TRUE(run.has_reason);
  EXPECT_TRUE(run.IsClean());
}

// The bumper alone tells of it: the robot may only find out by running into it again and again.
TEST(DriveAndJudge, AWallThatOnlyTheBumperFeelsEndsWithAReason) {
  const RunResult run = DriveInHall(2.0, {Box(6.0, 1.0, 0.4, 2.0, true)});
  EXPECT_EQ(run.outcome, RunOutcome::kRefused);
  EXPECT_TRUE(run.has_reason) << run.reason;
  EXPECT_GT(run.contacts, 0);
  EXPECT_EQ(run.touches, 0);
}

// Worlds in which the way leads around obstacles so closely that any corner cut is a lethal cell entered.
TEST(DriveAndJudge, CornersAreNotCut) {
  const costmap_2d::Costmap2D map = LoadMap(CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml");
  const RandomWorlds worlds("apartment.yaml", map);
  for (const std::uint32_t seed : {34u, 57u, 80u, 108u, 159u, 161u, 310u, 361u, 389u, 529u, 786u, 849u}) {
    const RunResult run = DriveAndJudge(map, worlds.Draw(seed));
    EXPECT_EQ(run.lethal_cells, 0) << seed;
    EXPECT_EQ(run.outcome, RunOutcome::kReached) << seed;
  }
}

TEST(DriveAndJudge, TheSameWorldGivesTheSameResult) {
  const std::vector<Obstacle> obstacles{Box(6.0, 3.0, 0.4, 0.6), Box(8.0, 3.1, 0.2, 0.2, true)};
  const RunResult first = DriveInHall(6.0, obstacles);
  const RunResult second = DriveInHall(6.0, obstacles);
  EXPECT_EQ(first.driven, second.driven);
  EXPECT_EQ(first.time, second.time);
  EXPECT_EQ(first.detour, second.detour);
  EXPECT_EQ(first.contacts, second.contacts);
}

}  // namespace
}  // namespace controller_base_demo
