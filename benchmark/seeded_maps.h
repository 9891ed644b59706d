#ifndef BENCHMARK_SEEDED_MAPS_H_
#define BENCHMARK_SEEDED_MAPS_H_

#include <cstdint>
#include <vector>

#include "benchmark/grid_queries.h"

namespace controller_base_benchmark {

// Two maps of 200 x 200 cells with walls and the costs around them, each with queries 2 to 6 m apart, and two of
// 512 x 512 cells without costs, one strewn with single obstacles and one of rooms. The same ones for the same seed.
std::vector<GridMap> SeededLocalMaps(std::uint32_t seed);
std::vector<GridMap> SeededOctileMaps(std::uint32_t seed);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_SEEDED_MAPS_H_
