#ifndef BENCHMARK_SMOOTHER_BENCHMARK_H_
#define BENCHMARK_SMOOTHER_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "smoother/comb": paths of 2000 cells that run up and down between the teeth of a comb of walls, with 100 boxes, by
// LocalPathSmoother and, in turn, by the plain rule; the argument is the teeth's length in cells.
// "smoother/open": a path of 2000 cells over open ground, and, in turn, the one line test that it needs; the argument
// is the number of boxes, none of which is in the way.
// "smoother/curve": the comb for several path lengths.
void RegisterSmootherBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_SMOOTHER_BENCHMARK_H_
