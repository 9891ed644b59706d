#ifndef BENCHMARK_SCALE_BENCHMARK_H_
#define BENCHMARK_SCALE_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "scale/WORLD": a search whose goal is 300 cells away, on a map of 65535 x 65535 cells and, in turn, on one of
// 600 x 600; with the memory that the first one takes. "memory/WORLD": the bytes per cell of the tiles that searches
// of several lengths touch.
void RegisterScaleBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_SCALE_BENCHMARK_H_
