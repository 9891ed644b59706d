#ifndef BENCHMARK_DETOURS_H_
#define BENCHMARK_DETOURS_H_

#include <astar/astar.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_msgs/Path.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "benchmark/boxes.h"
#include "benchmark/grid_queries.h"
#include "benchmark/random_source.h"
#include "controller_base/local_planner.h"
#include "controller_base/path_map_filler.h"

namespace controller_base_benchmark {

// The queries of a local map as a controller would have them: the followed path is one that a search finds on the map
// without boxes, boxes have appeared in the corridor around it since, and a detour is to be planned within the
// corridor.
class Detours {
 public:
  // The first `queries` queries of `map`, which must outlive this, each with `boxes` boxes that leave a path.
  Detours(const GridMap& map, std::size_t queries, int boxes);

  std::size_t Count() const { return detours_.size(); }

  // Prepares corridor and boxes of the `index`th detour. The following ask about that one.
  void Arrange(std::size_t index);

  // By the planner, smoothed.
  std::optional<nav_msgs::Path> Plan();

  // The search alone, over cells of which it is known whether map, corridor and boxes let them pass.
  std::vector<AStar::Vec2> SearchBare() const;

  // SearchBare's path, smoothed by the plain rule: what Plan must return.
  nav_msgs::Path PlanPlainly() const;

 private:
  struct Detour {
    Query query;
    nav_msgs::Path followed;
    std::vector<BoxPlace> boxes;
    std::vector<std::uint8_t> passable;  // map, corridor and boxes together
  };

  Detour MakeDetour(const Query& query, int boxes, RandomSource& random);
  GridMap CellsInCorridor() const;
  BoxPlace RandomPlaceInCorridor(RandomSource& random) const;
  bool IsInCorridor(const BoxPlace& place) const;

  const GridMap& map_;
  costmap_2d::Costmap2D costmap_;
  nav_controller::LocalPlanner planner_;
  std::shared_ptr<nav_controller::PathMapFiller> corridor_;
  std::vector<Detour> detours_;
  const Detour* arranged_ = nullptr;
  GridMap bare_;  // the map with the arranged detour's passable cells
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_DETOURS_H_
