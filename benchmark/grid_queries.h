#ifndef BENCHMARK_GRID_QUERIES_H_
#define BENCHMARK_GRID_QUERIES_H_

#include <astar/astar.h>
#include <costmap_2d/costmap_2d.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Grid maps with searches to run on them.
namespace controller_base_benchmark {

struct Query {
  AStar::Vec2 start;
  AStar::Vec2 goal;
  double optimum;  // published cost of a cheapest path in straight steps, a diagonal being sqrt 2; 0: not known
};

// A map as dense arrays, row y = 0 first.
struct GridMap {
  std::string name;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::vector<std::uint8_t> passable;  // 1 where a cell may be entered
  std::vector<std::uint16_t> extra;    // extra cost of entering a cell; empty: there is none
  std::vector<unsigned char> costs;    // cost bytes of a local map; empty for the others
  std::vector<Query> queries;

  std::size_t IndexOf(const AStar::Vec2& cell) const { return std::size_t{cell.y} * width + cell.x; }
};

constexpr double kLocalCell = 0.05;  // metres, a cell of a local map

// Fills passable and extra of a local map from its cost bytes, by the detour planner's rules.
void ApplyCosts(GridMap& map);

// The search request for `query` on `map`, with callbacks that look into the map's arrays: it must outlive them.
AStar::Params RequestOn(const GridMap& map, const Query& query);

// The cost map that `map`, a local one, was made from; its origin is (0, 0).
costmap_2d::Costmap2D CostmapOf(const GridMap& map);

// The cost maps `folder`/local/*.pgm, the first row being y = 0, with their queries from the .scen files beside them.
// Throws std::runtime_error for files that cannot be understood; no maps when the folder does not exist.
std::vector<GridMap> ReadLocalMaps(const std::string& folder);

// The octile maps `folder`/movingai/*.map, likewise.
std::vector<GridMap> ReadOctileMaps(const std::string& folder);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_GRID_QUERIES_H_
