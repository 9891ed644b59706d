#include "benchmark/seeded_maps.h"

#include <astar/astar.h>
#include <astar/block_allocator.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "benchmark/random_source.h"

namespace controller_base_benchmark {
namespace {

constexpr double kInscribedRadius = 0.20;   // metres around an obstacle that the robot's centre must not enter
constexpr double kInflationRadius = 0.55;   // metres around an obstacle with costs
constexpr double kInflationSlope = 0.8;     // of the costs' exponential fall, per metre
constexpr std::size_t kQueries = 100;       // a map
constexpr std::uint16_t kLocalSide = 200;   // cells
constexpr std::uint16_t kOctileSide = 512;  // cells

AStar::Vec2 RandomCell(const GridMap& map, RandomSource& random) {
  return {static_cast<std::uint16_t>(random.Between(0, map.width - 1)),
          static_cast<std::uint16_t>(random.Between(0, map.height - 1))};
}

bool HasPath(const GridMap& map, const Query& query) {
  BlockAllocator allocator;
  return !AStar(&allocator).Find(RequestOn(map, query)).empty();
}

// Queries that have a path, their ends at least `shortest` and at most `longest` cells apart in a straight line.
std::vector<Query> RandomQueries(const GridMap& map, double shortest, double longest, RandomSource& random) {
  std::vector<Query> queries;
  while (queries.size() < kQueries) {
    const Query query{RandomCell(map, random), RandomCell(map, random), 0.0};
    const double apart = std::hypot(query.goal.x - query.start.x, query.goal.y - query.start.y);
    if (apart >= shortest && apart <= longest && HasPath(map, query)) {
      queries.push_back(query);
    }
  }
  return queries;
}

unsigned char InflatedCost(double distance) {
  if (distance <= kInscribedRadius) {
    return costmap_2d::INSCRIBED_INFLATED_OBSTACLE;
  }
  return static_cast<unsigned char>(127 * std::exp(-kInflationSlope * (distance - kInscribedRadius)));
}

// Makes `cell` lethal and raises the costs around it.
void PlaceObstacle(GridMap& map, const AStar::Vec2& cell) {
  const int reach = static_cast<int>(kInflationRadius / kLocalCell);
  for (int y = std::max(0, cell.y - reach); y <= std::min(map.height - 1, cell.y + reach); ++y) {
    for (int x = std::max(0, cell.x - reach); x <= std::min(map.width - 1, cell.x + reach); ++x) {
      const double distance = std::hypot(x - cell.x, y - cell.y) * kLocalCell;
      if (distance <= kInflationRadius) {
        unsigned char& cost = map.costs[static_cast<std::size_t>(y) * map.width + static_cast<std::size_t>(x)];
        cost = std::max(cost, distance > 0 ? InflatedCost(distance) : costmap_2d::LETHAL_OBSTACLE);
      }
    }
  }
}

// Walls one cell thick, 1 to 3 m long, along the axes.
GridMap SeededLocalMap(const std::string& name, int walls, RandomSource& random) {
  GridMap map;
  map.name = name;
  map.width = map.height = kLocalSide;
  map.costs.assign(std::size_t{map.width} * map.height, costmap_2d::FREE_SPACE);
  for (int wall = 0; wall < walls; ++wall) {
    AStar::Vec2 cell = RandomCell(map, random);
    const bool along_x = random.Between(0, 1) == 1;
    for (int rest = random.Between(20, 60); rest > 0 && cell.x < map.width && cell.y < map.height; --rest) {
      PlaceObstacle(map, cell);
      ++(along_x ? cell.x : cell.y);
    }
  }
  ApplyCosts(map);
  map.queries = RandomQueries(map, 2.0 / kLocalCell, 6.0 / kLocalCell, random);
  return map;
}

GridMap EmptyOctileMap(const std::string& name) {
  GridMap map;
  map.name = name;
  map.width = map.height = kOctileSide;
  map.passable.assign(std::size_t{map.width} * map.height, 1);
  return map;
}

GridMap StrewnMap(const std::string& name, int obstacle_percent, RandomSource& random) {
  GridMap map = EmptyOctileMap(name);
  for (std::uint8_t& passable : map.passable) {
    passable = random.Between(1, 100) > obstacle_percent;
  }
  map.queries = RandomQueries(map, 1.0, map.width, random);
  return map;
}

// Square rooms with walls one cell thick and a door at a random place of each wall.
GridMap RoomsMap(const std::string& name, int room, RandomSource& random) {
  GridMap map = EmptyOctileMap(name);
  const auto close = [&map](int x, int y) {
    map.passable[static_cast<std::size_t>(y) * map.width + static_cast<std::size_t>(x)] = 0;
  };
  for (int wall = room; wall < kOctileSide; wall += room + 1) {
    for (int from = 0; from < kOctileSide; from += room + 1) {
      const int to = std::min<int>(from + room, kOctileSide - 1);
      const int door_x = random.Between(from, to - 1);
      const int door_y = random.Between(from, to - 1);
      for (int i = from; i <= to; ++i) {
        if (i != door_x) {
          close(i, wall);
        }
        if (i != door_y) {
          close(wall, i);
        }
      }
    }
  }
  map.queries = RandomQueries(map, 1.0, map.width, random);
  return map;
}

}  // namespace

std::vector<GridMap> SeededLocalMaps(std::uint32_t seed) {
  RandomSource random(seed);
  std::vector<GridMap> maps;
  maps.push_back(SeededLocalMap("seeded_few_walls", 15, random));
  maps.push_back(SeededLocalMap("seeded_many_walls", 30, random));
  return maps;
}

std::vector<GridMap> SeededOctileMaps(std::uint32_t seed) {
  RandomSource random(seed);
  std::vector<GridMap> maps;
  maps.push_back(StrewnMap("seeded_strewn", 25, random));
  maps.push_back(RoomsMap("seeded_rooms", 31, random));
  return maps;
}

}  // namespace controller_base_benchmark
