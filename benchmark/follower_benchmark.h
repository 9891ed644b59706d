#ifndef BENCHMARK_FOLLOWER_BENCHMARK_H_
#define BENCHMARK_FOLLOWER_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// follower/cycle: a whole cycle of the follower against one distance transform of its local map, in a wide and in a
// narrow aisle; and what a cycle takes in memory.
void RegisterFollowerBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_FOLLOWER_BENCHMARK_H_
