#ifndef BENCHMARK_BOOST_SEARCH_H_
#define BENCHMARK_BOOST_SEARCH_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "benchmark/grid_queries.h"

namespace controller_base_benchmark {

// Boost.Graph's A* on a grid map, the way one would use it for many queries on one map: an implicit graph over dense
// arrays, property maps that are sized once, `astar_search_no_init`, and a reset of only those cells that a query
// reached. Same moves, costs and heuristic as AStar.
class BoostSearch {
 public:
  explicit BoostSearch(const GridMap& map);

  struct Result {
    std::vector<AStar::Vec2> cells;  // from start to goal; empty when there is no path
    std::uint32_t cost = 0;          // on AStar's scale: 70 a straight step
    std::size_t expanded = 0;        // cells taken from the queue
  };
  Result Find(const Query& query);

 private:
  std::uint32_t VertexOf(const AStar::Vec2& cell) const {
    return (std::uint32_t{cell.y} + 1) * stride_ + std::uint32_t{cell.x} + 1;
  }
  AStar::Vec2 CellOf(std::uint32_t vertex) const;

  // The map with a rim of impassable cells, so that no neighbour needs a bounds check.
  std::uint32_t stride_;
  std::vector<std::uint8_t> passable_;
  std::vector<std::uint16_t> extra_;

  std::vector<std::uint32_t> distance_;
  std::vector<std::uint32_t> rank_;
  std::vector<std::uint32_t> predecessor_;
  std::vector<std::uint8_t> color_;
  std::vector<std::uint32_t> reached_;  // by the running query
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_BOOST_SEARCH_H_
