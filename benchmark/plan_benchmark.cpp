#include "benchmark/plan_benchmark.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <string>

#include "benchmark/detours.h"

namespace controller_base_benchmark {
namespace {

void CheckAnswers(const GridMap& map, Detours& detours) {
  for (std::size_t i = 0; i < detours.Count(); ++i) {
    detours.Arrange(i);
    const auto planned = detours.Plan();
    Require(planned && planned->poses == detours.PlanPlainly().poses,
            map.name + ": CreatePlan did not give the smoothed cheapest way");
  }
}

void RunPlan(benchmark::State& state, const GridMap& map, int boxes) {
  Detours detours(map, map.queries.size(), boxes);
  CheckAnswers(map, detours);
  PairedSeconds totals;
  while (state.KeepRunning()) {
    double planning = 0.0;
    double searching = 0.0;
    for (std::size_t i = 0; i < detours.Count(); ++i) {
      detours.Arrange(i);
      searching += SecondsOf([&] { benchmark::DoNotOptimize(detours.SearchBare().size()); });
      planning += SecondsOf([&] { benchmark::DoNotOptimize(detours.Plan()->poses.size()); });
    }
    totals.Add(planning, searching);
    state.SetIterationTime(planning);
  }
  totals.Report(state);
  state.counters["queries"] = static_cast<double>(detours.Count());
}

}  // namespace

void RegisterPlanBenchmarks(const std::vector<GridMap>& maps, const Effort& effort) {
  constexpr int kRepetitions = 15;
  for (const GridMap& read_map : maps) {
    const auto map = std::make_shared<const GridMap>(read_map);
    for (const int boxes : {10, 100}) {
      const std::string name = "plan/" + std::to_string(boxes) + " boxes/" + map->name;
      benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { RunPlan(state, *map, boxes); })
          ->Iterations(effort.Repetitions(kRepetitions))
          ->UseManualTime()
          ->Unit(benchmark::kMillisecond);
    }
  }
}

}  // namespace controller_base_benchmark
