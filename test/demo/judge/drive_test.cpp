#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "demo/judge/verdict.h"
#include "demo/output/drive_files.h"
#include "demo/scenario/scenario_file.h"
#include "follower/inflation.h"
#include "follower/local_map.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/known_map.h"
#include "simulation/map_file.h"

namespace controller_base::demo {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::IsSupersetOf;

std::vector<std::string> Kinds(const simulation::DriveRecord& drive) {
  std::vector<std::string> kinds;
  for (const follower::Event& event : drive.events) {
    kinds.push_back(Name(event.kind));
  }
  return kinds;
}

const follower::Event* FirstEvent(const simulation::DriveRecord& drive, const std::string& kind) {
  const auto event = std::find_if(drive.events.begin(), drive.events.end(),
                                  [&](const follower::Event& e) { return Name(e.kind) == kind; });
  return event == drive.events.end() ? nullptr : &*event;
}

simulation::DriveRecord Drive(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup) {
  const std::atomic<bool> stop{false};
  return RunDrive(map, setup, PlanDrive(map, setup), {}, stop);
}

// No pose of the drive overlaps a solid cell.
void ExpectNeverInsideAnything(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup,
                               const simulation::DriveRecord& drive) {
  const simulation::World world(map, setup.obstacles);
  for (const simulation::TrajectorySample& sample : drive.trajectory) {
    ASSERT_TRUE(world.Overlaps({sample.pose.x, sample.pose.y}, follower::kRobotRadius).empty()) << sample.time;
  }
}

class ApartmentDrive : public testing::Test {
 protected:
  ApartmentDrive()
      : setup_(LoadScenario(CONTROLLER_BASE_DEMO_SCENARIOS "/apartment.yaml").setup),
        map_(simulation::LoadMap(setup_.map_file)) {}

  simulation::DriveSetup setup_;
  costmap_2d::Costmap2D map_;
};

TEST_F(ApartmentDrive, EveryPartOfTheLibraryHasItsSay) {
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached) << Judge(drive).text;
  EXPECT_EQ(drive.touched_seen, 0);
  EXPECT_LT(drive.goal_distance, 0.05);
  EXPECT_THAT(Kinds(drive), IsSupersetOf({"path", "progress", "blocked", "corridor", "detour", "repair", "deviation",
                                          "rejoined", "contact", "turn", "box", "arrival"}));
  ExpectNeverInsideAnything(map_, setup_, drive);
}

TEST_F(ApartmentDrive, TheBoxIsBypassedAndTheOccupiedLocalGoalRepaired) {
  const simulation::DriveRecord drive = Drive(map_, setup_);
  ASSERT_FALSE(drive.detours.empty());
  const follower::DetourReport& detour = drive.detours.front();
  const costmap_2d::Costmap2D map = ToCostmap(detour.map.View());
  EXPECT_TRUE(detour.goal_repaired);
  EXPECT_GE(detour.blocked.poses.size(), 2u);
  const geometry_msgs::Point& end = detour.detour.poses.back().pose.position;
  unsigned int mx = 0;
  unsigned int my = 0;
  ASSERT_TRUE(map.worldToMap(end.x, end.y, mx, my));
  EXPECT_FALSE(map.IsLethalObstacle(mx, my));
  const geometry_msgs::Point& goal = detour.path.poses.back().pose.position;
  ASSERT_TRUE(map.worldToMap(goal.x, goal.y, mx, my));
  EXPECT_TRUE(map.IsLethalObstacle(mx, my));
  EXPECT_THAT(FirstEvent(drive, "blocked")->text, HasSubstr("bilateral"));
}

TEST_F(ApartmentDrive, TheSillIsFeltAndRememberedAsBoxes) {
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_GE(drive.contacts, 1);
  EXPECT_FALSE(drive.boxes.empty());
  const follower::Event* contact = FirstEvent(drive, "contact");
  ASSERT_NE(contact, nullptr);
  const simulation::Obstacle& sill = setup_.obstacles.back();
  ASSERT_TRUE(sill.low);
  EXPECT_LT(follower::Distance(sill.center, contact->position), 0.3);
  const follower::Event* turn = FirstEvent(drive, "turn");
  ASSERT_NE(turn, nullptr);
  EXPECT_THAT(turn->text, HasSubstr("turning +30 degrees"));  // a frontal contact turns it left by a twelfth
}

TEST_F(ApartmentDrive, EveryDetourStaysInItsCorridorAndOutOfObstacles) {
  for (const follower::DetourReport& detour : Drive(map_, setup_).detours) {
    const costmap_2d::Costmap2D map = ToCostmap(detour.map.View());
    for (const geometry_msgs::PoseStamped& pose : detour.detour.poses) {
      unsigned int mx = 0;
      unsigned int my = 0;
      ASSERT_TRUE(map.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my));
      EXPECT_FALSE(map.IsLethalObstacle(mx, my));
      EXPECT_EQ(detour.corridor.data[static_cast<std::size_t>(my) * detour.corridor.info.width + mx], 0);
    }
  }
}

TEST_F(ApartmentDrive, TheSameDriveGivesTheSameBytes) {
  std::string first;
  for (int run = 0; run < 2; ++run) {
    const simulation::DriveRecord drive = Drive(map_, setup_);
    std::ostringstream files;
    WriteTrajectory(drive, files);
    WriteEvents(drive, files);
    WriteResult(setup_, drive, 0, files);
    if (run == 0) {
      first = files.str();
    } else {
      EXPECT_TRUE(first == files.str());
    }
  }
}

TEST_F(ApartmentDrive, WithoutObstaclesThePathIsFollowedClosely) {
  setup_.obstacles.clear();
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached);
  EXPECT_TRUE(drive.detours.empty());
  for (const simulation::TrajectorySample& sample : drive.trajectory) {
    EXPECT_LT(sample.deviation, 0.1) << sample.time;
  }
}

TEST_F(ApartmentDrive, ItIsInterruptedAtOnce) {
  const std::atomic<bool> stop{true};
  const simulation::DriveRecord drive = RunDrive(map_, setup_, PlanDrive(map_, setup_), {}, stop);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kInterrupted);
  EXPECT_TRUE(drive.trajectory.empty());
}

// A hall of 8 m x 2 m, walls of one cell around it.
class HallDrive : public testing::Test {
 protected:
  HallDrive() : map_(162, 42, 0.05, -0.05, -0.05) {
    for (unsigned int mx = 0; mx < 162; ++mx) {
      for (unsigned int my = 0; my < 42; ++my) {
        if (mx == 0 || my == 0 || mx == 161 || my == 41) {
          map_.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
        }
      }
    }
    setup_.start = {0.6, 1.0, 0.0};
    setup_.goal = {7.4, 1.0};
  }

  costmap_2d::Costmap2D map_;
  simulation::DriveSetup setup_;
};

TEST_F(HallDrive, AClosedHallIsRefusedAndThenGivenUpWithBothReasons) {
  setup_.obstacles = {{"wall", {4.0, 1.0}, 0.0, 0.2, 2.0, false}};
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kNotReached);
  EXPECT_THAT(Judge(drive).text, HasSubstr("no way around within 1.50 m"));
  EXPECT_THAT(Judge(drive).text, HasSubstr("CheckBaseLine failed"));
  EXPECT_EQ(drive.contacts, 0);
  EXPECT_LT(drive.trajectory.back().time, 60.0);
}

TEST_F(HallDrive, AnOccupiedGoalIsRepairedAndThenNamed) {
  setup_.obstacles = {{"basket", {7.4, 1.0}, 0.0, 0.3, 0.3, false}};
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kNotReached);
  EXPECT_THAT(Judge(drive).text, HasSubstr("the goal is occupied"));
  EXPECT_NE(FirstEvent(drive, "repair"), nullptr);
  EXPECT_LT(drive.goal_distance, 0.9);  // as near as the path allows
  EXPECT_EQ(drive.contacts, 0);
}

TEST_F(HallDrive, ASillAcrossTheHallEndsInAReasonAndNotInAWall) {
  setup_.obstacles = {{"sill", {4.0, 1.0}, 0.0, 0.06, 2.0, true}};
  const simulation::DriveRecord drive = Drive(map_, setup_);
  EXPECT_THAT(Judge(drive).outcome, AnyOf(DriveOutcome::kNotReached, DriveOutcome::kAborted));
  EXPECT_GE(drive.contacts, 2);
  EXPECT_EQ(drive.touched_seen, 0);
  EXPECT_LT(drive.trajectory.back().pose.x, 4.0);
  ExpectNeverInsideAnything(map_, setup_, drive);
}

TEST_F(HallDrive, AStartBesideAWallIsLeft) {
  setup_.start = {0.6, 0.19, 1.0};  // 2 cm of room; no search would start here
  EXPECT_EQ(Judge(Drive(map_, setup_)).outcome, DriveOutcome::kReached);
}

TEST_F(HallDrive, StartAndGoalMayBeTheSamePlace) {
  setup_.goal = {setup_.start.x, setup_.start.y};
  EXPECT_EQ(Judge(Drive(map_, setup_)).outcome, DriveOutcome::kReached);
}

// An operator whose inputs all arrive in the first cycle.
class Clicks : public simulation::Interaction {
 public:
  explicit Clicks(simulation::Interventions clicked) : clicked_(std::move(clicked)) {}
  simulation::Interventions Take() override { return std::exchange(clicked_, {}); }

 private:
  simulation::Interventions clicked_;
};

simulation::DriveRecord DriveWith(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup,
                                  const simulation::Interventions& clicked, simulation::DriveObserver* observer) {
  const std::atomic<bool> stop{false};
  Clicks clicks(clicked);
  return RunDrive(map, setup, PlanDrive(map, setup), {observer}, stop, &clicks);
}

// The number of obstacles at the end of the drive.
class ObstacleCount : public simulation::DriveObserver {
 public:
  void OnCycle(const simulation::CycleReport& cycle) override { count = cycle.world.obstacles().size(); }
  std::size_t count = 0;
};

TEST_F(HallDrive, BoxesThatAreDroppedOffTheMapAreRefused) {
  simulation::Interventions clicked;
  for (const double x : {1e6, 8.2, -1e300, std::nan("")}) {
    clicked.obstacles.push_back({"dropped box", {x, 1.0}, 0.0, 0.3, 0.3, false});
  }
  clicked.obstacles.push_back({"dropped box", {4.0, 1.9}, 0.0, 0.3, 0.3, false});
  ObstacleCount obstacles;
  const simulation::DriveRecord drive = DriveWith(map_, setup_, clicked, &obstacles);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached) << Judge(drive).text;
  EXPECT_EQ(obstacles.count, 1u);
  EXPECT_EQ(std::count_if(drive.events.begin(), drive.events.end(),
                          [](const follower::Event& e) { return e.kind == follower::EventKind::kNoBox; }),
            4);
  EXPECT_EQ(FirstEvent(drive, "no box")->text, "a box at (1000000.00, 1.00) would be off the map; it is ignored");
  EXPECT_EQ(FirstEvent(drive, "no box")->position.x, setup_.start.x);
}

TEST_F(HallDrive, GoalsOffTheMapAreRefused) {
  for (const double x : {1e6, -1e300, std::nan("")}) {
    simulation::Interventions clicked;
    clicked.goal = nav_core::math::Vec2d(x, 1.0);
    ObstacleCount nothing;
    const simulation::DriveRecord drive = DriveWith(map_, setup_, clicked, &nothing);
    EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached) << Judge(drive).text;
    ASSERT_NE(FirstEvent(drive, "no path"), nullptr);
    EXPECT_THAT(FirstEvent(drive, "no path")->text, HasSubstr("is off the map; it is ignored"));
  }
}

TEST_F(HallDrive, APathThatIsTooLongIsRefused) {
  setup_.path_kind = simulation::PathKind::kDrawn;
  setup_.points = {{1.0, 1.0}, {6000.0, 1.0}};
  EXPECT_THROW(PlanDrive(map_, setup_), simulation::DriveError);
  setup_.points = {{1.0, 1.0}, {1e300, 1.0}};
  EXPECT_THROW(PlanDrive(map_, setup_), simulation::DriveError);
  setup_.points = {{1.0, 1.0}, {20.0, 1.0}};
  EXPECT_NO_THROW(PlanDrive(map_, setup_));
}

// The reason why a drive cannot begin; empty when it can.
std::optional<simulation::DriveProblem> ProblemOf(const costmap_2d::Costmap2D& map,
                                                  const simulation::DriveSetup& setup) {
  try {
    PlanDrive(map, setup);
  } catch (const simulation::DriveError& error) {
    return error.problem();
  }
  return std::nullopt;
}

TEST_F(HallDrive, WhatCannotBeDrivenIsRefusedBefore) {
  const simulation::DriveSetup good = setup_;
  EXPECT_EQ(ProblemOf(map_, good), std::nullopt);
  setup_.start = {0.1, 1.0, 0.0};
  EXPECT_EQ(ProblemOf(map_, setup_), simulation::DriveProblem::kStart);
  setup_.start = {-5.0, 1.0, 0.0};
  EXPECT_EQ(ProblemOf(map_, setup_), simulation::DriveProblem::kStart);
  setup_ = good;
  setup_.goal = {1e300, 1.0};
  EXPECT_EQ(ProblemOf(map_, setup_), simulation::DriveProblem::kGoal);
  setup_.goal = {8.02, 1.0};
  EXPECT_EQ(ProblemOf(map_, setup_), simulation::DriveProblem::kUnreachable);
  EXPECT_EQ(ProblemOf(costmap_2d::Costmap2D(10, 10, 0.001, 0.0, 0.0), good), simulation::DriveProblem::kMap);
  EXPECT_EQ(ProblemOf(costmap_2d::Costmap2D(10, 10, 0.6, 0.0, 0.0), good), simulation::DriveProblem::kMap);
}

// Maps of real buildings, where the shared folder beside the checkout has them.
struct MapDrive {
  const char* map;
  follower::Pose2d start;
  nav_core::math::Vec2d goal;
};

class RealMap : public testing::TestWithParam<MapDrive> {};

TEST_P(RealMap, IsDrivenFromEndToEnd) {
  const std::string file = std::string(CONTROLLER_BASE_SHARED_MAPS) + "/" + GetParam().map;
  if (!std::filesystem::exists(file)) {
    GTEST_SKIP() << "there is no " << file;
  }
  simulation::DriveSetup setup;
  setup.map_file = file;
  setup.start = GetParam().start;
  setup.goal = GetParam().goal;
  const costmap_2d::Costmap2D map = simulation::LoadMap(file);
  const simulation::DriveRecord drive = Drive(map, setup);
  EXPECT_EQ(Judge(drive).outcome, DriveOutcome::kReached) << Judge(drive).text;
  EXPECT_EQ(drive.contacts, 0);
  ExpectNeverInsideAnything(map, setup, drive);
}

INSTANTIATE_TEST_SUITE_P(SharedMaps, RealMap,
                         testing::Values(MapDrive{"depot.yaml", {26.825, 7.375, 2.64}, {16.925, 13.0}},
                                         MapDrive{"intel.yaml", {6.55, 16.45, 0.18}, {9.45, 21.05}},
                                         MapDrive{"ipa-kitchen.yaml", {2.03, -1.77, 0.0}, {2.93, 2.83}},
                                         MapDrive{"tb3_sandbox.yaml", {-2.0, -0.5, 0.0}, {0.5, 2.0}},
                                         // A pose beside a wall, too close for a search to start.
                                         MapDrive{"tb3_sandbox.yaml", {-1.275, 0.375, -2.33}, {0.325, 0.375}},
                                         MapDrive{"willow-full-0.05.yaml", {30.175, 37.625, 1.45}, {24.525, 30.775}}));

}  // namespace
}  // namespace controller_base::demo
