#ifndef BENCHMARK_CORRIDOR_BENCHMARK_H_
#define BENCHMARK_CORRIDOR_BENCHMARK_H_

#include "benchmark/measure.h"

namespace controller_base_benchmark {

// "corridor/map": prepare without its message for a path of 5 m on 4000 x 4000 cells and, in turn, on 200 x 200; the
// argument is the corridor's width in cells. "corridor/prepare" and "corridor/message": prepare without its message,
// and the making of the message alone, by the map's side in cells.
void RegisterCorridorBenchmarks(const Effort& effort);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_CORRIDOR_BENCHMARK_H_
