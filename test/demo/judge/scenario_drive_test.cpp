#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <visualization_msgs/Marker.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "demo/judge/expectation.h"
#include "demo/output/drive_files.h"
#include "demo/scenario/scenario_file.h"
#include "follower/local_map.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "test/support/log_capture.h"

namespace controller_base::demo {
namespace {

using controller_base_test::LogCapture;
using controller_base_test::LogLine;
using testing::IsEmpty;

std::string FileOf(const std::string& name) {
  return std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/" + name + ".yaml";
}

// The results of a drive that the tests check.
class Watcher : public simulation::DriveObserver {
 public:
  struct Cycle {
    double time;
    follower::Pose2d pose;
    follower::FollowerOutput output;
    std::size_t contacts;  // that reached the follower
  };

  void OnCycle(const simulation::CycleReport& cycle) override {
    cycles.push_back({cycle.time, cycle.true_pose, cycle.output, cycle.input.contacts.size()});
  }

  std::vector<Cycle> cycles;
};

struct Driven {
  Scenario scenario;
  simulation::DriveRecord drive;
  std::vector<Watcher::Cycle> cycles;
  std::vector<LogLine> log;
};

Driven Drive(const std::string& name) {
  Driven driven;
  driven.scenario = LoadScenario(FileOf(name));
  const costmap_2d::Costmap2D map = simulation::LoadMap(driven.scenario.setup.map_file);
  const std::atomic<bool> stop{false};
  Watcher watcher;
  const LogCapture log(ros::console::levels::Info);
  driven.drive = RunDrive(map, driven.scenario.setup, PlanDrive(map, driven.scenario.setup), {&watcher}, stop);
  driven.cycles = std::move(watcher.cycles);
  driven.log = log.Lines();
  return driven;
}

// Each file is driven once for all tests.
const Driven& DriveFile(const std::string& name) {
  static std::map<std::string, Driven> drives;
  const auto known = drives.find(name);
  return known != drives.end() ? known->second : drives.emplace(name, Drive(name)).first->second;
}

std::string Events(const simulation::DriveRecord& drive) {
  std::string lines;
  for (const follower::Event& event : drive.events) {
    lines += EventLine(event) + "\n";
  }
  return lines + Judge(drive).text;
}

std::size_t CountLines(const std::vector<LogLine>& log, const std::string& part) {
  return static_cast<std::size_t>(std::count_if(
      log.begin(), log.end(), [&](const LogLine& line) { return line.text.find(part) != std::string::npos; }));
}

std::size_t CountEvents(const simulation::DriveRecord& drive, const std::string& kind, const std::string& part = "") {
  return static_cast<std::size_t>(
      std::count_if(drive.events.begin(), drive.events.end(), [&](const follower::Event& event) {
        return Name(event.kind) == kind && event.text.find(part) != std::string::npos;
      }));
}

// ---- Every file that is shipped ----

std::vector<std::string> ShippedScenarios() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(CONTROLLER_BASE_DEMO_SCENARIOS)) {
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class ShippedScenario : public testing::TestWithParam<std::string> {};

TEST_P(ShippedScenario, GoesAsItsFileSays) {
  const Driven& driven = DriveFile(GetParam());
  EXPECT_THAT(Unmet(driven.scenario.expectation, driven.drive), IsEmpty()) << Events(driven.drive);
  EXPECT_EQ(driven.drive.touched_seen, 0);
  EXPECT_NE(driven.drive.events.back().kind,
            follower::EventKind::kProgress);  // every drive ends with an arrival or a reason
}

bool BringsANewPath(const Watcher::Cycle& cycle) {
  return std::any_of(cycle.output.events.begin(), cycle.output.events.end(),
                     [](const follower::Event& event) { return event.kind == follower::EventKind::kPath; });
}

// The tracker searches ten poses to either side; more in one cycle would be a jump to another part of the path.
TEST_P(ShippedScenario, TheIndexNeverJumps) {
  const Driven& driven = DriveFile(GetParam());
  for (std::size_t i = 1; i < driven.cycles.size(); ++i) {
    const auto before = static_cast<std::int64_t>(driven.cycles[i - 1].output.index);
    const auto after = static_cast<std::int64_t>(driven.cycles[i].output.index);
    const bool is_close = std::abs(after - before) <= 10;
    ASSERT_TRUE(is_close || BringsANewPath(driven.cycles[i])) << driven.cycles[i].time;
  }
}

// After a contact, or at another place, a search is due at once.
TEST_P(ShippedScenario, SearchesAreRepeatedAtMostOnceASecond) {
  std::optional<ros::Time> last;
  for (const follower::Event& event : DriveFile(GetParam()).drive.events) {
    if (event.kind == follower::EventKind::kBox || event.kind == follower::EventKind::kPose ||
        event.kind == follower::EventKind::kClock) {
      last.reset();
    } else if (event.kind == follower::EventKind::kRefused) {
      EXPECT_TRUE(!last || (event.stamp - *last).toSec() >= 1.0 - 1e-6) << event.stamp;
      last = event.stamp;
    }
  }
}

std::string NameOf(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Files, ShippedScenario, testing::ValuesIn(ShippedScenarios()), NameOf);

// ---- Checks that a scenario file cannot express ----

TEST(ScenarioDrive, TheCrossingIsPassedTwiceAndTheIndexOnlyGrows) {
  const Driven& driven = DriveFile("crossing-path");
  int passes = 0;
  bool is_near = true;  // it starts there
  std::uint64_t last = 0;
  for (const Watcher::Cycle& cycle : driven.cycles) {
    const bool is_at_crossing = Distance(cycle.pose, nav_core::math::Vec2d(6.0, 3.0)) < 0.15;
    passes += is_at_crossing && !is_near ? 1 : 0;
    is_near = is_at_crossing;
    EXPECT_GE(cycle.output.index + 1, last) << cycle.time;
    last = cycle.output.index;
    EXPECT_LT(cycle.output.deviation, 0.15) << cycle.time;
  }
  EXPECT_EQ(passes, 2);  // in the middle, and at the end
}

TEST(ScenarioDrive, OnTheHairpinTheIndexStaysOnItsLeg) {
  const Driven& driven = DriveFile("hairpin");
  bool has_turned = false;
  for (const Watcher::Cycle& cycle : driven.cycles) {
    has_turned = has_turned || cycle.pose.x > 7.4;
    const double along = 0.05 * static_cast<double>(cycle.output.index);  // the resampled steps are hardly shorter
    const double expected = has_turned ? 12.0 - (cycle.pose.x - 2.0) : cycle.pose.x - 2.0;
    if (cycle.pose.x < 7.0) {
      ASSERT_NEAR(along, expected, 0.4) << cycle.time;
    }
  }
  EXPECT_TRUE(has_turned);
}

TEST(ScenarioDrive, TheLibraryWarnsOncePerExcursion) {
  const Driven& driven = DriveFile("pushed-off");
  EXPECT_EQ(CountLines(driven.log, "Robot has deviated from path!"), 2u);
  EXPECT_EQ(CountEvents(driven.drive, "deviation", "farther"), 2u);
  EXPECT_LT(driven.cycles.back().output.deviation, 0.1);
}

TEST(ScenarioDrive, EachRefusalIsTheLibrarysOwn) {
  const struct {
    const char* scenario;
    const char* log_line;
    const char* told;
    std::size_t fewest;
  } kCases[] = {
      {"closed-passage", "[LocalPlanner] Cannot get a path.", "no way around", 10},
      {"goal-in-boxes", "[LocalPlanner] Cannot get a path.", "ends in a virtual box", 3},
      {"goal-too-near", "[LocalPlanner] Goal is occupied:", "is occupied, and the free place before it", 10},
      {"hemmed-in", "[LocalPlanner] Start is occupied:", "too near to an obstacle", 15},
      {"into-the-wall", "[LocalPlanner] Start is occupied:", "too near to an obstacle", 2},
      {"jump-into-boxes", "[LocalPlanner] Cannot get a path.", "stands in a virtual box", 1},
  };
  for (const auto& expected : kCases) {
    const Driven& driven = DriveFile(expected.scenario);
    EXPECT_GE(CountEvents(driven.drive, "refused", expected.told), expected.fewest) << expected.scenario;
    EXPECT_EQ(CountEvents(driven.drive, "refused"), CountLines(driven.log, expected.log_line)) << expected.scenario;
  }
}

TEST(ScenarioDrive, ALostRobotSaysSoOnceAndStands) {
  const Driven& driven = DriveFile("path-off-the-local-map");
  EXPECT_EQ(CountEvents(driven.drive, "lost"), 1u);
  EXPECT_EQ(CountLines(driven.log, "[LocalPlanner]"), 0u);
  for (const Watcher::Cycle& cycle : driven.cycles) {
    EXPECT_TRUE(cycle.time < 5.5 || cycle.output.command.speed == 0.0) << cycle.time;
  }
}

TEST(ScenarioDrive, StuckWheelsAreGivenUpTwentySecondsAfterTheyStuck) {
  for (const char* name : {"stuck-wheel", "both-wheels-stuck"}) {
    const Driven& driven = DriveFile(name);
    const double end = driven.cycles.back().time;
    EXPECT_GE(end, 24.0);  // the baseline was set in the second before
    EXPECT_LE(end, 26.0);
    EXPECT_EQ(CountEvents(driven.drive, "stop", "CheckProgress"), 0u);
  }
}

TEST(ScenarioDrive, WithoutReplanningTheCorridorIsAllThereIs) {
  Scenario scenario = LoadScenario(FileOf("planned-again"));
  scenario.setup.replanning = false;
  const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> stop{false};
  const simulation::DriveRecord drive = RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {}, stop);
  EXPECT_EQ(drive.outcome.state, follower::DriveState::kStalled);
  EXPECT_EQ(drive.outcome.refusal, follower::Refusal::kNoPath);
}

TEST(ScenarioDrive, OneStuckWheelLetsTheRobotTurnAndTwoDoNot) {
  const auto largest_turn_rate = [](const simulation::DriveRecord& drive) {
    double largest = 0.0;
    for (const simulation::TrajectorySample& sample : drive.trajectory) {
      largest = std::max(largest, sample.time > 6.0 ? std::abs(sample.motion.turn_rate) : 0.0);
    }
    return largest;
  };
  EXPECT_GT(largest_turn_rate(DriveFile("stuck-wheel").drive), 0.1);
  EXPECT_EQ(largest_turn_rate(DriveFile("both-wheels-stuck").drive), 0.0);
}

TEST(ScenarioDrive, BothFormsOfTheBudgetAreTold) {
  const Driven& slow = DriveFile("slow-robot");
  EXPECT_EQ(CountEvents(slow.drive, "stop", "CheckBaseLine"), 0u);
  EXPECT_GE(slow.cycles.back().output.progress.time_ratio, 3.0);
  EXPECT_LT(slow.cycles.back().output.progress.distance_ratio, 3.0);
  const Driven& far = DriveFile("long-way");
  EXPECT_EQ(CountEvents(far.drive, "stop", "CheckBaseLine"), 0u);
  EXPECT_GE(far.cycles.back().output.progress.distance_ratio, 3.0);
  EXPECT_LT(far.cycles.back().output.progress.time_ratio, 3.0);
}

TEST(ScenarioDrive, TheHeldBumperCountsAgainAfterAPressOfSevenTenthsOfASecond) {
  const Driven& driven = DriveFile("held-bumper");
  EXPECT_EQ(CountEvents(driven.drive, "contact"), 10u);
  EXPECT_NEAR(driven.cycles.back().time, 3.0 + 9 * 0.7, 0.5);  // it is felt in steps of 0.05 s
}

TEST(ScenarioDrive, OneBounceIsOneContact) {
  const Driven& driven = DriveFile("bouncing-bumper");
  std::size_t reported = 0;
  for (const Watcher::Cycle& cycle : driven.cycles) {
    reported += cycle.contacts;
  }
  EXPECT_GE(reported, 3u);
  EXPECT_EQ(CountEvents(driven.drive, "contact"), 1u);
}

TEST(ScenarioDrive, TheDetourStaysInItsCorridor) {
  const Driven& driven = DriveFile("detour-in-corridor");
  ASSERT_FALSE(driven.drive.detours.empty());
  for (const follower::DetourReport& detour : driven.drive.detours) {
    const costmap_2d::Costmap2D map = ToCostmap(detour.map.View());
    for (const geometry_msgs::PoseStamped& pose : detour.detour.poses) {
      unsigned int mx = 0;
      unsigned int my = 0;
      ASSERT_TRUE(map.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my));
      EXPECT_EQ(detour.corridor.data[static_cast<std::size_t>(my) * detour.corridor.info.width + mx], 0);
    }
  }
}

TEST(ScenarioDrive, TheRobotWaitsForAClockThatStandsStill) {
  const Driven& driven = DriveFile("clock-stands-still");
  for (const Watcher::Cycle& cycle : driven.cycles) {
    if (cycle.time > 7.0 && cycle.time < 30.0) {
      EXPECT_EQ(cycle.output.state, "clock") << cycle.time;
      EXPECT_EQ(cycle.output.command.speed, 0.0) << cycle.time;
    }
  }
}

TEST(ScenarioDrive, TheSameSeedGivesTheSameBytesAndAnotherOneDoesNot) {
  Scenario scenario = LoadScenario(FileOf("noisy-pose"));
  const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> stop{false};
  std::vector<std::string> files;
  for (const std::uint32_t seed : {7u, 7u, 8u}) {
    scenario.setup.seed = seed;
    std::ostringstream file;
    WriteTrajectory(RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {}, stop), file);
    files.push_back(file.str());
  }
  EXPECT_TRUE(files[0] == files[1]);
  EXPECT_FALSE(files[0] == files[2]);
}

// Listens to the markers of the virtual boxes, as a viewer would.
class MarkerViewer : public simulation::DriveObserver {
 public:
  MarkerViewer()
      : subscriber_(node_.subscribe("/nav_controller/local_map_obstacles", 1000, &MarkerViewer::OnMarker, this)) {}

  void OnPath(const nav_msgs::Path& /*path*/) override {
    for (int i = 0; i < 500 && subscriber_.getNumPublishers() == 0; ++i) {
      ros::WallDuration(0.01).sleep();
    }
  }
  void OnCycle(const simulation::CycleReport& /*cycle*/) override { ros::getGlobalCallbackQueue()->callAvailable(); }

  // Waits for the last message sent: without pauses, messages arrive after the drive has ended.
  void WaitUntilNoneIsShown() {
    for (int i = 0; i < 500 && (most_shown == 0 || shown > 0); ++i) {
      ros::getGlobalCallbackQueue()->callAvailable(ros::WallDuration(0.01));
    }
  }

  int shown = 0;
  int most_shown = 0;

 private:
  void OnMarker(const visualization_msgs::Marker& marker) {
    shown = marker.action == visualization_msgs::Marker::DELETEALL ? 0 : shown + 1;
    most_shown = std::max(most_shown, shown);
  }

  ros::NodeHandle node_;
  ros::Subscriber subscriber_;
};

TEST(ScenarioDrive, WithTheObstacleItsBoxesAndMarkersGo) {
  const Scenario scenario = LoadScenario(FileOf("vanishing-obstacle"));
  const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> stop{false};
  MarkerViewer viewer;
  const simulation::DriveRecord drive = RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {&viewer}, stop);
  viewer.WaitUntilNoneIsShown();
  EXPECT_GT(viewer.most_shown, 0);
  EXPECT_EQ(viewer.shown, 0);
  EXPECT_TRUE(drive.boxes.empty());
}

}  // namespace
}  // namespace controller_base::demo
