#include "benchmark/follower_benchmark.h"

#include <benchmark/benchmark.h>
#include <ros/time.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "benchmark/allocation_meter.h"
#include "benchmark/follower_cycle.h"

namespace controller_base_benchmark {
namespace {

void RunCycle(benchmark::State& state, double width) {
  constexpr int kCyclesPerSample = 20;
  FollowerScene scene(width);
  controller_base::follower::LocalMapData walls = scene.walls();
  const cv::Mat free = cv::Mat(kMapSide, kMapSide, CV_8UC1, walls.costs.data()) == 0;
  cv::Mat distances;
  RunInTurn(
      state,
      [&] {
        for (int i = 0; i < kCyclesPerSample; ++i) {
          scene.Cycle();
        }
        scene.RequireAtSpeed();
      },
      [&] {
        for (int i = 0; i < kCyclesPerSample; ++i) {
          cv::distanceTransform(free, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
        }
      });
  ros::Time::init();
}

// The most that a late cycle takes at once over what an early one does.
void RunMemory(benchmark::State& state) {
  FollowerScene scene(1.6);
  const auto peak_of_cycles = [&] {
    std::size_t peak = 0;
    for (int i = 0; i < 500; ++i) {
      const AllocationMeter meter;
      scene.Cycle();
      peak = std::max(peak, meter.PeakBytes());
    }
    return static_cast<double>(peak);
  };
  double growth = 0.0;
  double bytes = 0.0;
  while (state.KeepRunning()) {
    const double early = peak_of_cycles();
    bytes = peak_of_cycles();
    growth = std::max(growth, bytes - early);
  }
  scene.RequireAtSpeed();
  state.counters["bytes"] = bytes;
  state.counters["growth"] = growth;
  ros::Time::init();
}

}  // namespace

void RegisterFollowerBenchmarks(const Effort& effort) {
  constexpr int kRepetitions = 101;
  for (const double width : {1.6, 0.7}) {
    benchmark::RegisterBenchmark(width > 1.0 ? "follower/cycle/wide" : "follower/cycle/narrow", RunCycle, width)
        ->Iterations(effort.Repetitions(kRepetitions))
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::RegisterBenchmark("follower/memory", RunMemory)->Iterations(1);
}

}  // namespace controller_base_benchmark
