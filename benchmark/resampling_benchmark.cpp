#include "benchmark/resampling_benchmark.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <nav_msgs/Path.h>

#include <cmath>
#include <cstdint>
#include <optional>

#include "benchmark/winding_path.h"
#include "controller_base/path_interpolation.h"
#include "controller_base/trajectory_analyzer.h"

namespace controller_base_benchmark {
namespace {

constexpr std::int64_t kDensePoses = 100000;  // after resampling

double PlanarDistance(const geometry_msgs::PoseStamped& a, const geometry_msgs::PoseStamped& b) {
  return std::hypot(b.pose.position.x - a.pose.position.x, b.pose.position.y - a.pose.position.y);
}

// Requires that `dense` has the number of poses and the spacing that `path` must be resampled to.
void RequireResampled(const nav_msgs::Path& path, const nav_msgs::Path& dense) {
  std::size_t expected = path.poses.size();
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    expected += static_cast<std::size_t>(PlanarDistance(path.poses[i - 1], path.poses[i]) / kResampleSpacing);
  }
  Require(dense.poses.size() == expected, "a resampled path has not the right number of poses");
  Require(dense.poses.front() == path.poses.front() && dense.poses.back() == path.poses.back(),
          "a resampled path has other ends");
  for (std::size_t i = 1; i < dense.poses.size(); ++i) {
    Require(PlanarDistance(dense.poses[i - 1], dense.poses[i]) < kResampleSpacing, "a resampled path has a gap");
  }
}

enum class Memory {
  kFresh,  // the allocator gives back to the system what it holds first, as between two paths of a real drive
  kWarm,   // the same memory each time, all of it in the caches
};

// What `work` takes, without destroying its result.
template <typename Work>
double SecondsToMake(Memory memory, Work&& work) {
  if (memory == Memory::kFresh) {
    malloc_trim(0);
  }
  std::optional<nav_msgs::Path> made;
  return SecondsOf([&] { made.emplace(work()); });
}

void RunLinearInterpolation(benchmark::State& state, Memory memory) {
  const nav_msgs::Path path = WindingPath(state.range(0), kDensePoses);
  const nav_msgs::Path dense = nav_core::math::LinearInterpolation(path, kResampleSpacing);
  RequireResampled(path, dense);
  PairedSeconds seconds;
  while (state.KeepRunning()) {
    const double copying = SecondsToMake(memory, [&] { return nav_msgs::Path(dense); });
    const double resampling =
        SecondsToMake(memory, [&] { return nav_core::math::LinearInterpolation(path, kResampleSpacing); });
    seconds.Add(resampling, copying);
    state.SetIterationTime(resampling);
  }
  seconds.Report(state);
  state.counters["poses"] = static_cast<double>(dense.poses.size());
}

void RunInitializePath(benchmark::State& state, Memory memory) {
  const nav_msgs::Path path = WindingPath(state.range(0), kDensePoses);
  const nav_msgs::Path dense = nav_core::math::LinearInterpolation(path, kResampleSpacing);
  nav_controller::TrajectoryAnalyzer analyzer(path);
  Require(analyzer.GetPathSize() == dense.poses.size(), "the analyzer's path has not the right number of poses");
  PairedSeconds seconds;
  while (state.KeepRunning()) {
    const double copying = SecondsToMake(memory, [&] { return nav_msgs::Path(dense); });
    const double initializing = SecondsToMake(memory, [&] {
      analyzer.InitializePath(path);
      return nav_msgs::Path();
    });
    seconds.Add(initializing, copying);
    state.SetIterationTime(initializing);
  }
  seconds.Report(state);
}

void RunCurve(benchmark::State& state) {
  const nav_msgs::Path path = WindingPath(state.range(0) / 10, state.range(0));
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(nav_core::math::LinearInterpolation(path, kResampleSpacing).poses.size());
  }
}

}  // namespace

void RegisterResamplingBenchmarks(const Effort& effort) {
  constexpr int kRepetitions = 51;
  const auto in_turn = [&effort](const char* name, void (*run)(benchmark::State&, Memory), Memory memory) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { run(state, memory); })
        ->Arg(2)
        ->Arg(kDensePoses / 100)
        ->Arg(kDensePoses / 10)
        ->Arg(kDensePoses / 2)
        ->Iterations(effort.Repetitions(kRepetitions))
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  };
  in_turn("resampling/LinearInterpolation", RunLinearInterpolation, Memory::kFresh);
  in_turn("resampling/InitializePath", RunInitializePath, Memory::kFresh);
  in_turn("resampling/LinearInterpolation in warm memory", RunLinearInterpolation, Memory::kWarm);
  in_turn("resampling/InitializePath in warm memory", RunInitializePath, Memory::kWarm);
  benchmark::RegisterBenchmark("resampling/curve", RunCurve)
      ->RangeMultiplier(10)
      ->Range(1000, 1000000)
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace controller_base_benchmark
