#include "benchmark/cycle_benchmark.h"

#include <benchmark/benchmark.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_msgs/Path.h>
#include <ros/console.h>

#include <cstdint>
#include <string>

#include "benchmark/allocation_meter.h"
#include "benchmark/control_cycle.h"
#include "benchmark/log_level.h"
#include "controller_base/collision_history.h"
#include "controller_base/controller_progress_checker.h"
#include "controller_base/obstacle_blocking_analyzer.h"
#include "controller_base/trajectory_analyzer.h"

namespace controller_base_benchmark {
namespace {

using costmap_2d::Costmap2D;
using nav_controller::TrajectoryAnalyzer;

void RunUpdateIndexLong(benchmark::State& state) {
  constexpr int kStepsPerSample = 2000;
  constexpr std::int64_t kLong = 1000000;
  constexpr std::int64_t kShort = 1000;
  Drive along_long(kLong);
  Drive along_short(kShort);
  const auto step_often = [](Drive& drive) {
    for (int i = 0; i < kStepsPerSample; ++i) {
      drive.Step();
    }
    drive.RequireOnTrack();
  };
  RunInTurn(
      state, [&] { step_often(along_long); }, [&] { step_often(along_short); });
}

// What the calls that must not allocate take, DEBUG lines being off, on a free and on a blocked way; every call was
// made once before.
void RunAllocations(benchmark::State& state) {
  Scene free_scene;
  Scene blocked_scene;
  blocked_scene.BlockFarEnd();
  nav_controller::CollisionHistory history;
  history.Add(nav_controller::CollisionEvent{true, ros::Time::now(), 1});
  const auto ask_all = [&history](Scene& scene) {
    const geometry_msgs::PoseStamped& robot = scene.path.poses.front();
    const geometry_msgs::Point& start = robot.pose.position;
    const geometry_msgs::Point& end = scene.path.poses[kMapSide / 2].pose.position;
    double angle = 0.0;
    int count = 0;
    scene.analyzer.UpdateIndex(robot);
    benchmark::DoNotOptimize(scene.checker.IsRobotMovedEnough(robot));
    benchmark::DoNotOptimize(nav_controller::IsBlockingPathInflateObstacle(&scene.map, scene.path));
    benchmark::DoNotOptimize(nav_controller::IsBlockingPathLaserObstacle(&scene.map, scene.path));
    benchmark::DoNotOptimize(nav_controller::IsBlockingBetweenPoints(&scene.map, start, end));
    benchmark::DoNotOptimize(history.FetchCollision());
    benchmark::DoNotOptimize(history.GetLastCollision());
    benchmark::DoNotOptimize(history.IsTriggerEvent());
    benchmark::DoNotOptimize(history.GetEventDirection());
    benchmark::DoNotOptimize(history.ProcessNewCollision(count));
    benchmark::DoNotOptimize(history.ProcessNewEvent(angle));
    benchmark::DoNotOptimize(history.ShouldAbort());
    benchmark::DoNotOptimize(history.IsLeft());
  };
  ask_all(free_scene);
  ask_all(blocked_scene);
  std::size_t allocations = 0;
  while (state.KeepRunning()) {
    const AllocationMeter meter;
    ask_all(free_scene);
    ask_all(blocked_scene);
    allocations += meter.Allocations();
  }
  state.counters["allocations"] = static_cast<double>(allocations);
}

void RunUpdateIndex(benchmark::State& state) {
  Drive drive(state.range(0));
  while (state.KeepRunning()) {
    drive.Step();
  }
  drive.RequireOnTrack();
}

// With INFO lines on, as on a robot: a blocked way logs one in each cycle.
void RunWhole(benchmark::State& state, bool blocked) {
  const VerboseLog verbose;
  Scene scene;
  if (blocked) {
    scene.BlockFarEnd();
  }
  geometry_msgs::PoseStamped robot = scene.path.poses.front();
  const Cycle cycle = RunOnce(scene, robot);
  Require(cycle.progress && cycle.poses_ahead > 50, "the cycle's path is not as long as it should be");
  Require(cycle.inflated == blocked && cycle.laser == blocked && cycle.bilateral == blocked && cycle.between == blocked,
          "a question of the cycle is answered wrongly");
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(RunOnce(scene, robot).poses_ahead);
  }
}

void RunPathAhead(benchmark::State& state) {
  const auto side = static_cast<unsigned int>(state.range(0));
  const Costmap2D map(side, side, kMapCell, 0.0, 0.0);
  const TrajectoryAnalyzer analyzer(StraightPath(4 * state.range(0), kMapCell, side * kMapCell / 2));
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(analyzer.PathTransformToLocalMap(&map).poses.size());
  }
}

void RunCheck(benchmark::State& state) {
  Scene scene;
  const geometry_msgs::PoseStamped robot = scene.path.poses.front();
  std::string reason;
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(scene.checker.Check(robot, reason));
  }
}

using PathQuestion = bool (*)(const Costmap2D& map, const nav_msgs::Path& path);

// A question about a path of as many poses as the argument says, on a free map that holds them all.
void RunPathQuestion(benchmark::State& state, PathQuestion question) {
  const auto side = static_cast<unsigned int>(state.range(0));
  const Costmap2D map(side, side, kMapCell, 0.0, 0.0);
  const nav_msgs::Path path = StraightPath(state.range(0), kMapCell, side * kMapCell / 2);
  Require(!question(map, path), "a free path is called blocked");
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(question(map, path));
  }
}

bool IsInflated(const Costmap2D& map, const nav_msgs::Path& path) {
  return nav_controller::IsBlockingPathInflateObstacle(&map, path);
}
bool IsLaser(const Costmap2D& map, const nav_msgs::Path& path) {
  return nav_controller::IsBlockingPathLaserObstacle(&map, path);
}
bool IsBilateral(const Costmap2D& map, const nav_msgs::Path& path) {
  return nav_controller::IsBilateralObstacle(&map, path);
}
bool IsBetween(const Costmap2D& map, const nav_msgs::Path& path) {
  return nav_controller::IsBlockingBetweenPoints(&map, path.poses.front().pose.position,
                                                 path.poses.back().pose.position);
}
bool IsLaserBetween(const Costmap2D& map, const nav_msgs::Path& path) {
  return nav_controller::IsBlockingLaserBetweenPoints(&map, path.poses.front().pose.position,
                                                      path.poses.back().pose.position);
}

void RegisterPathQuestion(const char* name, PathQuestion question) {
  benchmark::RegisterBenchmark(name, RunPathQuestion, question)->RangeMultiplier(4)->Range(16, 1024);
}

}  // namespace

void RegisterCycleBenchmarks(const Effort& effort) {
  constexpr int kRepetitions = 101;
  constexpr int kWholeCycles = 5000;
  benchmark::RegisterBenchmark("cycle/UpdateIndex long", RunUpdateIndexLong)
      ->Iterations(effort.Repetitions(kRepetitions))
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
  for (const bool blocked : {false, true}) {
    benchmark::RegisterBenchmark(blocked ? "cycle/whole/blocked" : "cycle/whole/free", RunWhole, blocked)
        ->Iterations(kWholeCycles)
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::RegisterBenchmark("cycle/allocations", RunAllocations)->Iterations(100);
  benchmark::RegisterBenchmark("cycle/UpdateIndex", RunUpdateIndex)->RangeMultiplier(10)->Range(1000, 1000000);
  benchmark::RegisterBenchmark("cycle/Check", RunCheck);
  benchmark::RegisterBenchmark("cycle/PathTransformToLocalMap", RunPathAhead)->RangeMultiplier(4)->Range(16, 1024);
  RegisterPathQuestion("cycle/IsBlockingPathInflateObstacle", IsInflated);
  RegisterPathQuestion("cycle/IsBlockingPathLaserObstacle", IsLaser);
  RegisterPathQuestion("cycle/IsBilateralObstacle", IsBilateral);
  RegisterPathQuestion("cycle/IsBlockingBetweenPoints", IsBetween);
  RegisterPathQuestion("cycle/IsBlockingLaserBetweenPoints", IsLaserBetween);
}

}  // namespace controller_base_benchmark
