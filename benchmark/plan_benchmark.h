#ifndef BENCHMARK_PLAN_BENCHMARK_H_
#define BENCHMARK_PLAN_BENCHMARK_H_

#include <memory>
#include <vector>

#include "benchmark/grid_queries.h"
#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "plan/N boxes/MAP": CreatePlan with a corridor, boxes and smoothing for the queries of each local map and, in turn,
// the bare search over the same passable cells.
void RegisterPlanBenchmarks(const std::vector<GridMap>& maps, const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_PLAN_BENCHMARK_H_
