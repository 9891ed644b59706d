#include "demo/judge/judged_drive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "demo/runs/random_world.h"
#include "simulation/harsh_world.h"
#include "simulation/map_file.h"
#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

using testing::StartsWith;
using testing::StrEq;

// Along the hall from x = 1 m to x = 11 m.
RunResult DriveInHall(double depth, const std::vector<simulation::Obstacle>& obstacles) {
  simulation::DriveSetup setup;
  setup.seed = 5;
  setup.start = {1.0, 0.5 * depth, 0.0};
  setup.goal = {11.0, 0.5 * depth};
  setup.obstacles = obstacles;
  return DriveAndJudge(Hall(depth), setup, AlongHall(depth));
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

// Only the bumper detects a low obstacle: the robot may have to touch it several times.
TEST(DriveAndJudge, AWallThatOnlyTheBumperFeelsEndsWithAReason) {
  const RunResult run = DriveInHall(2.0, {Box(6.0, 1.0, 0.4, 2.0, true)});
  EXPECT_EQ(run.outcome, RunOutcome::kRefused);
  EXPECT_TRUE(run.has_reason) << run.reason;
  EXPECT_GT(run.contacts, 0);
  EXPECT_EQ(run.touches, 0);
}

// No obstacle explains the stop: the time budget runs out.
TEST(DriveAndJudge, ARobotThatIsOnlySlowStopsWithoutAReason) {
  simulation::DriveSetup setup;
  setup.start = {1.0, 3.0, 0.0};
  setup.goal = {11.0, 3.0};
  setup.faults.speed_limit = 0.02;
  const RunResult run = DriveAndJudge(Hall(6.0), setup, AlongHall(6.0));
  EXPECT_EQ(run.outcome, RunOutcome::kFellShort);
  EXPECT_THAT(run.reason, StartsWith("the path's budget is used up"));
  EXPECT_FALSE(run.has_reason);
  EXPECT_FALSE(run.IsClean());
}

std::vector<RunResult> DriveInApartment(const std::vector<std::uint32_t>& seeds,
                                        simulation::Conditions conditions = simulation::Conditions::kKind) {
  const costmap_2d::Costmap2D map = simulation::LoadMap(CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml");
  const RandomWorlds worlds("apartment.yaml", map, conditions);
  std::vector<RunResult> results;
  for (const std::uint32_t seed : seeds) {
    const RandomWorld world = worlds.Draw(seed);
    results.push_back(DriveAndJudge(map, world.setup, world.path));
  }
  return results;
}

// Worlds whose detours pass obstacles so closely that a cut corner enters a lethal cell.
TEST(DriveAndJudge, CornersAreNotCut) {
  for (const RunResult& run : DriveInApartment({34, 57, 80, 108, 159, 161, 310, 361, 389, 529, 786, 849, 1104})) {
    EXPECT_EQ(run.lethal_cells, 0) << run.seed;
    EXPECT_EQ(run.outcome, RunOutcome::kReached) << run.seed;
  }
}

// Detours that cut off a bend of the path, so that the index stays behind.
TEST(DriveAndJudge, ADetourThatCutsOffABendDoesNotLeadBack) {
  for (const RunResult& run : DriveInApartment({1099, 1295, 3301, 4297})) {
    EXPECT_EQ(run.outcome, RunOutcome::kReached) << run.seed;
    EXPECT_LE(run.detours, 2) << run.seed;
  }
}

// Worlds in which the robot used to stop beside a corner or to turn back and forth.
TEST(DriveAndJudge, ACornerDoesNotHoldTheRobot) {
  for (const RunResult& run : DriveInApartment({3723, 4309, 4455})) {
    EXPECT_EQ(run.outcome, RunOutcome::kReached) << run.seed;
  }
}

// A low obstacle in a doorway: the boxes dropped for its contacts close the door although it is passable.
TEST(DriveAndJudge, TheRobotFeelsItsWayThroughADoor) {
  for (const RunResult& run : DriveInApartment({166, 1574, 2909, 3231})) {
    EXPECT_EQ(run.outcome, RunOutcome::kReached) << run.seed;
    EXPECT_GE(run.contacts, 2) << run.seed;
  }
}

// A drive towards a gap that is not aligned with the grid; the wheels are stuck for good before it.
RunResult DriveTowardsGap(double width) {
  constexpr double kDepth = 2.0;
  simulation::DriveSetup setup;
  setup.start = {1.0, 0.5 * kDepth, 0.0};
  setup.goal = {11.0, 0.5 * kDepth};
  const double wall = 0.5 * (kDepth - width);
  setup.obstacles = {Box(6.0, 0.5 * wall, 0.4, wall), Box(6.0, kDepth - 0.5 * wall, 0.4, wall)};
  MakeHarsh(&setup);
  setup.faults.stuck_wheels = simulation::StuckWheelsFault{{true, true}, {2.0}};
  return DriveAndJudge(Hall(kDepth), setup, AlongHall(kDepth));
}

TEST(DriveAndJudge, InTheHarshWorldAWayOfHalfAMetreIsAWay) {
  const RunResult wide = DriveTowardsGap(0.50);
  EXPECT_EQ(wide.outcome, RunOutcome::kFellShort);
  EXPECT_TRUE(wide.has_wide_path);
  const RunResult narrow = DriveTowardsGap(0.47);
  EXPECT_EQ(narrow.outcome, RunOutcome::kRefused);
  EXPECT_FALSE(narrow.has_wide_path);
}

TEST(DriveAndJudge, TheSameWorldGivesTheSameResult) {
  const std::vector<simulation::Obstacle> obstacles{Box(6.0, 3.0, 0.4, 0.6), Box(8.0, 3.1, 0.2, 0.2, true)};
  const RunResult first = DriveInHall(6.0, obstacles);
  const RunResult second = DriveInHall(6.0, obstacles);
  EXPECT_EQ(first.driven, second.driven);
  EXPECT_EQ(first.time, second.time);
  EXPECT_EQ(first.detour, second.detour);
  EXPECT_EQ(first.contacts, second.contacts);
}

}  // namespace
}  // namespace controller_base::demo
