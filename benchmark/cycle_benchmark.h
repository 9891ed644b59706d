#ifndef BENCHMARK_CYCLE_BENCHMARK_H_
#define BENCHMARK_CYCLE_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "cycle/UpdateIndex long": UpdateIndex along a path of 10^6 poses and, in turn, along one of 10^3.
// "cycle/whole/...": what a controller asks in each cycle, on a map of 120 x 120 cells.
// "cycle/allocations": how often the calls that must not allocate do.
// "cycle/CALL": each of these calls alone, by its input.
void RegisterCycleBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_CYCLE_BENCHMARK_H_
