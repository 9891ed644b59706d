#ifndef BENCHMARK_RESAMPLING_BENCHMARK_H_
#define BENCHMARK_RESAMPLING_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "resampling/LinearInterpolation" and "resampling/InitializePath": a path resampled to 10^5 poses and, in turn, one
// copy of the result; the argument is the number of poses of the path that is resampled. "resampling/curve": by the
// number of resulting poses.
void RegisterResamplingBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_RESAMPLING_BENCHMARK_H_
