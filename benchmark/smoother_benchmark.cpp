#include "benchmark/smoother_benchmark.h"

#include <benchmark/benchmark.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_core/math/box2d.h>
#include <nav_msgs/Path.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "benchmark/boxes.h"
#include "benchmark/comb.h"
#include "benchmark/plain_smoother.h"
#include "benchmark/random_source.h"
#include "controller_base/local_path_smoother.h"

namespace controller_base_benchmark {
namespace {

using costmap_2d::Costmap2D;
using nav_controller::LocalPathSmoother;

constexpr int kPathCells = 2000;
constexpr int kBoxes = 100;
constexpr std::uint32_t kSeed = 4;

bool SamePoses(const nav_msgs::Path& a, const nav_msgs::Path& b) { return a.header == b.header && a.poses == b.poses; }

void RunComb(benchmark::State& state) {
  const Comb comb(kPathCells, static_cast<int>(state.range(0)));
  RandomSource random(kSeed);
  Boxes boxes;
  boxes.Scatter(kBoxes, comb.costmap, random);
  const auto smooth = [&] { return LocalPathSmoother::Process(comb.path, &comb.costmap, boxes.Store()); };
  const auto smooth_plainly = [&] { return SmoothPlainly(comb.path, comb.costmap, boxes.List()); };
  const nav_msgs::Path thinned = smooth();
  Require(SamePoses(thinned, smooth_plainly()), "the smoother does not keep the poses that the plain rule keeps");
  RunInTurn(
      state, [&] { benchmark::DoNotOptimize(smooth().poses.size()); },
      [&] { benchmark::DoNotOptimize(smooth_plainly().poses.size()); });
  state.counters["kept"] = static_cast<double>(thinned.poses.size());
}

void RunCombCurve(benchmark::State& state) {
  constexpr int kTooth = 20;
  const Comb comb(static_cast<int>(state.range(0)), kTooth);
  RandomSource random(kSeed);
  Boxes boxes;
  boxes.Scatter(kBoxes, comb.costmap, random);
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(LocalPathSmoother::Process(comb.path, &comb.costmap, boxes.Store()).poses.size());
  }
}

// The path of a search over open ground: diagonal, then straight.
nav_msgs::Path OpenPath(const Costmap2D& costmap) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (int x = 0; x < kPathCells; ++x) {
    AppendCell(costmap, x, std::min(x, kPathCells / 2), path);
  }
  return path;
}

void RunOpen(benchmark::State& state) {
  const Costmap2D costmap(kPathCells, kPathCells / 2 + 20, kCombCell, 0.0, 0.0);
  const nav_msgs::Path path = OpenPath(costmap);
  RandomSource random(kSeed);
  Boxes boxes;
  boxes.Scatter(static_cast<int>(state.range(0)),
                Costmap2D(kPathCells / 4, kPathCells / 4, kCombCell, kPathCells * kCombCell * 0.7, 0.0), random);
  const auto test_line = [&] {
    return LocalPathSmoother::IsLineExtraObstacleFree(&costmap, boxes.Store(), path.poses.front(), path.poses.back());
  };
  Require(test_line(), "the line over open ground is not free");
  Require(LocalPathSmoother::Process(path, &costmap, boxes.Store()).poses.size() == 2,
          "a path over open ground keeps more than its ends");
  RunInTurn(
      state, [&] { benchmark::DoNotOptimize(LocalPathSmoother::Process(path, &costmap, boxes.Store()).poses.size()); },
      [&] { benchmark::DoNotOptimize(test_line()); });
}

}  // namespace

void RegisterSmootherBenchmarks(const Effort& effort) {
  constexpr int kCombRepetitions = 15;
  constexpr int kOpenRepetitions = 301;
  benchmark::RegisterBenchmark("smoother/comb", RunComb)
      ->Arg(4)
      ->Arg(20)
      ->Arg(60)
      ->Iterations(effort.Repetitions(kCombRepetitions))
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("smoother/open", RunOpen)
      ->Arg(0)
      ->Arg(kBoxes)
      ->Iterations(effort.Repetitions(kOpenRepetitions))
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("smoother/curve", RunCombCurve)
      ->Arg(125)
      ->Arg(250)
      ->Arg(500)
      ->Arg(1000)
      ->Arg(kPathCells)
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace controller_base_benchmark
