#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "demo/judge/verdict.h"
#include "demo/scenario/scenario_file.h"
#include "follower/geometry.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/harsh_world.h"
#include "simulation/map_file.h"
#include "simulation/obstacle_surface.h"
#include "test/support/test_names.h"

// The scenes of drives that were recorded in another simulator, in the harsh world. A follower that threw its detours
// away began 7 detours in kitchen-4, touched one thing 3 times in kitchen-5 and 5 times in kitchen-13, did not reach
// the goal of kitchen-12, and drove at 0.31, 0.35, 0.26 and 0.28 m/s.
namespace controller_base_test {
namespace {

using controller_base::demo::Scenario;
using controller_base::follower::EventKind;
using controller_base::simulation::DriveRecord;
using controller_base::simulation::Obstacle;

// What came of a drive.
struct Figures {
  bool is_reached = false;
  int detours = 0;          // begun
  int refusals = 0;         // of the planner
  int touched_seen = 0;     // contacts with what the laser had seen
  int most_contacts = 0;    // with one obstacle
  double mean_speed = 0.0;  // m/s on the way driven, stops not counted
};

double MeanSpeed(const DriveRecord& drive) {
  constexpr double kStanding = 0.01;  // m/s, or less
  double way = 0.0;
  double time = 0.0;
  for (std::size_t i = 1; i < drive.trajectory.size(); ++i) {
    if (std::abs(drive.trajectory[i].motion.speed) > kStanding) {
      way += controller_base::follower::Distance(drive.trajectory[i - 1].pose, drive.trajectory[i].pose);
      time += drive.trajectory[i].time - drive.trajectory[i - 1].time;
    }
  }
  return way / time;
}

int MostContactsWithOne(const Scenario& scenario, const DriveRecord& drive) {
  std::vector<int> contacts(scenario.setup.obstacles.size());
  for (const auto& event : drive.events) {
    if (event.kind != EventKind::kContact) {
      continue;
    }
    const auto distance = [&](const Obstacle& obstacle) {
      const nav_core::math::Vec2d point(event.position.x, event.position.y);
      return controller_base::follower::Distance(point, NearestPointOf(obstacle, point, 0.0));
    };
    const auto touched = std::min_element(scenario.setup.obstacles.begin(), scenario.setup.obstacles.end(),
                                          [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    ++contacts[static_cast<std::size_t>(touched - scenario.setup.obstacles.begin())];
  }
  return contacts.empty() ? 0 : *std::max_element(contacts.begin(), contacts.end());
}

Figures DriveScene(const Scenario& scenario) {
  const costmap_2d::Costmap2D map = controller_base::simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> never{false};
  const DriveRecord drive =
      RunDrive(map, scenario.setup, controller_base::simulation::PlanDrive(map, scenario.setup), {}, never);
  Figures figures;
  figures.is_reached = drive.outcome.state == controller_base::follower::DriveState::kReached;
  figures.detours = static_cast<int>(drive.detours.size());
  figures.refusals = static_cast<int>(std::count_if(
      drive.events.begin(), drive.events.end(), [](const auto& event) { return event.kind == EventKind::kRefused; }));
  figures.touched_seen = drive.touched_seen;
  figures.most_contacts = MostContactsWithOne(scenario, drive);
  figures.mean_speed = MeanSpeed(drive);
  return figures;
}

class OutsideScenes : public testing::TestWithParam<std::string> {};

TEST_P(OutsideScenes, AreDrivenInTheHarshWorld) {
  const std::string file = std::string(CONTROLLER_BASE_OUTSIDE) + "/" + GetParam() + ".yaml";
  if (!std::filesystem::exists(file)) {
    GTEST_SKIP() << "no recorded drives in " << CONTROLLER_BASE_OUTSIDE;
  }
  Scenario scenario = controller_base::demo::LoadScenario(file);
  MakeHarsh(&scenario.setup);
  const Figures figures = DriveScene(scenario);
  RecordProperty("detours", figures.detours);
  RecordProperty("refusals", figures.refusals);
  RecordProperty("mean_speed_mmps", static_cast<int>(1000.0 * figures.mean_speed));
  EXPECT_TRUE(figures.is_reached);
  EXPECT_EQ(figures.touched_seen, 0);
  EXPECT_LE(figures.detours, 2 * static_cast<int>(scenario.setup.obstacles.size()));
  EXPECT_LE(figures.most_contacts, 2);
  EXPECT_GE(figures.mean_speed, 0.28);
}

INSTANTIATE_TEST_SUITE_P(Kitchen, OutsideScenes, testing::Values("kitchen-4", "kitchen-5", "kitchen-12", "kitchen-13"),
                         WithoutHyphens);

}  // namespace
}  // namespace controller_base_test
