#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numeric>
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

// The figures of a drive.
struct Figures {
  bool is_reached = false;
  int detours = 0;           // begun
  int most_detours = 0;      // begun for one obstacle
  int needless_detours = 0;  // begun for what is no obstacle
  int refusals = 0;          // of the planner
  int touched_seen = 0;      // contacts with what the laser had seen
  int most_contacts = 0;     // with one obstacle
  double driven = 0.0;       // m
  double time = 0.0;         // s in which it was driven; stops are not counted

  double MeanSpeed() const { return driven / time; }
};

void MeasureWay(const DriveRecord& drive, Figures* figures) {
  constexpr double kStanding = 0.01;  // m/s, or less
  for (std::size_t i = 1; i < drive.trajectory.size(); ++i) {
    if (std::abs(drive.trajectory[i].motion.speed) > kStanding) {
      figures->driven += controller_base::follower::Distance(drive.trajectory[i - 1].pose, drive.trajectory[i].pose);
      figures->time += drive.trajectory[i].time - drive.trajectory[i - 1].time;
    }
  }
}

// The obstacle of the scenario that is nearest to a point.
struct Nearest {
  std::size_t index;
  double distance;  // m
};

Nearest NearestObstacle(const Scenario& scenario, const geometry_msgs::Point& place) {
  const nav_core::math::Vec2d point(place.x, place.y);
  Nearest nearest{0, std::numeric_limits<double>::infinity()};
  for (std::size_t i = 0; i < scenario.setup.obstacles.size(); ++i) {
    const double distance =
        controller_base::follower::Distance(point, NearestPointOf(scenario.setup.obstacles[i], point, 0.0));
    nearest = distance < nearest.distance ? Nearest{i, distance} : nearest;
  }
  return nearest;
}

int Most(const std::vector<int>& counts) {
  return std::accumulate(counts.begin(), counts.end(), 0, [](int a, int b) { return std::max(a, b); });
}

int MostContactsWithOne(const Scenario& scenario, const DriveRecord& drive) {
  std::vector<int> contacts(scenario.setup.obstacles.size());
  for (const auto& event : drive.events) {
    if (event.kind == EventKind::kContact) {
      ++contacts.at(NearestObstacle(scenario, event.position).index);
    }
  }
  return Most(contacts);
}

// Where the way that was driven was blocked, for each detour: the detour before when that was blocked as well, else the
// path.
std::vector<geometry_msgs::Point> CausesOfDetours(const DriveRecord& drive) {
  std::vector<geometry_msgs::Point> causes;
  ros::Time told;
  geometry_msgs::Point cause;
  for (const auto& event : drive.events) {
    if (event.kind == EventKind::kBlocked && event.stamp != told) {
      told = event.stamp;
      cause = event.position;
    } else if (event.kind == EventKind::kDetour) {
      causes.push_back(cause);
    }
  }
  return causes;
}

void CountDetours(const Scenario& scenario, const DriveRecord& drive, Figures* figures) {
  constexpr double kReach = 0.3;  // m; what is farther from all obstacles is blocked by none of them
  std::vector<int> detours(scenario.setup.obstacles.size());
  for (const geometry_msgs::Point& cause : CausesOfDetours(drive)) {
    const Nearest nearest = NearestObstacle(scenario, cause);
    ++(nearest.distance < kReach ? detours.at(nearest.index) : figures->needless_detours);
  }
  figures->detours = static_cast<int>(drive.detours.size());
  figures->most_detours = Most(detours);
}

Figures DriveScene(const Scenario& scenario) {
  const costmap_2d::Costmap2D map = controller_base::simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> never{false};
  const DriveRecord drive =
      RunDrive(map, scenario.setup, controller_base::simulation::PlanDrive(map, scenario.setup), {}, never);
  Figures figures;
  figures.is_reached = drive.outcome.state == controller_base::follower::DriveState::kReached;
  CountDetours(scenario, drive, &figures);
  figures.refusals = static_cast<int>(std::count_if(
      drive.events.begin(), drive.events.end(), [](const auto& event) { return event.kind == EventKind::kRefused; }));
  figures.touched_seen = drive.touched_seen;
  figures.most_contacts = MostContactsWithOne(scenario, drive);
  MeasureWay(drive, &figures);
  return figures;
}

std::string FileOf(const std::string& scene) { return std::string(CONTROLLER_BASE_OUTSIDE) + "/" + scene + ".yaml"; }

Scenario LoadHarsh(const std::string& scene) {
  Scenario scenario = controller_base::demo::LoadScenario(FileOf(scene));
  MakeHarsh(&scenario.setup);
  return scenario;
}

const std::string kScenes[] = {"kitchen-4", "kitchen-5", "kitchen-12", "kitchen-13"};

class OutsideScenes : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(FileOf(GetParam()))) {
      GTEST_SKIP() << "no recorded drives in " << CONTROLLER_BASE_OUTSIDE;
    }
  }
};

TEST_P(OutsideScenes, AreDrivenInTheHarshWorld) {
  const Figures figures = DriveScene(LoadHarsh(GetParam()));
  RecordProperty("detours", figures.detours);
  RecordProperty("refusals", figures.refusals);
  RecordProperty("mean_speed_mmps", static_cast<int>(1000.0 * figures.MeanSpeed()));
  EXPECT_TRUE(figures.is_reached);
  EXPECT_EQ(figures.touched_seen, 0);
  EXPECT_LE(figures.most_detours, 2);
  EXPECT_EQ(figures.needless_detours, 0);
  EXPECT_LE(figures.most_contacts, 2);
  EXPECT_GE(figures.MeanSpeed(), 0.32);
}

INSTANTIATE_TEST_SUITE_P(Kitchen, OutsideScenes, testing::ValuesIn(kScenes), WithoutHyphens);

TEST(AllOutsideScenes, AreDrivenAtMoreThanThreeQuartersOfTheCruisingSpeed) {
  if (!std::filesystem::exists(FileOf(kScenes[0]))) {
    GTEST_SKIP() << "no recorded drives in " << CONTROLLER_BASE_OUTSIDE;
  }
  Figures sum;
  for (const std::string& scene : kScenes) {
    const Figures figures = DriveScene(LoadHarsh(scene));
    sum.driven += figures.driven;
    sum.time += figures.time;
  }
  RecordProperty("mean_speed_mmps", static_cast<int>(1000.0 * sum.MeanSpeed()));
  EXPECT_GE(sum.MeanSpeed(), 0.36);
}

}  // namespace
}  // namespace controller_base_test
