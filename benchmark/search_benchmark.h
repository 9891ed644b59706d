#ifndef BENCHMARK_SEARCH_BENCHMARK_H_
#define BENCHMARK_SEARCH_BENCHMARK_H_

#include <string>
#include <vector>

#include "benchmark/grid_queries.h"

namespace controller_base_benchmark {

// "search/KIND/MAP": all queries of a map by AStar and by Boost.Graph's A*, in turn. When `queries_file` is not empty,
// the times of the single queries are appended to it as CSV; see WriteQueriesHeader.
void RegisterSearchBenchmarks(const std::string& kind, std::vector<GridMap> maps, const std::string& queries_file,
                              int repetitions);

// Begins `queries_file`.
void WriteQueriesHeader(const std::string& queries_file);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_SEARCH_BENCHMARK_H_
