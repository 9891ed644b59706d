// The grid search on thousands of random worlds, each compared with Dijkstra's search.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "astar/astar.h"
#include "test/support/grid_search_reference.h"
#include "test/support/random_source.h"

using controller_base_test::ExpectSoundSearch;
using controller_base_test::GridWorld;
using controller_base_test::RandomSource;

namespace {

void PutBlock(GridWorld& world, RandomSource& random, int longest, std::uint8_t passable) {
  const int x0 = random.Between(0, world.width - 1);
  const int y0 = random.Between(0, world.height - 1);
  const int columns = random.Between(1, longest);
  const int rows = random.Between(1, longest);
  for (int y = y0; y < y0 + rows; ++y) {
    for (int x = x0; x < x0 + columns; ++x) {
      if (world.Holds(x, y)) {
        world.passable[world.IndexOf(x, y)] = passable;
      }
    }
  }
}

void PutSingleWalls(GridWorld& world, RandomSource& random, int percent) {
  for (auto& passable : world.passable) {
    passable = random.Between(1, 100) > percent;
  }
}

// Walls: none, single cells of any density, blocks and slabs, or rooms carved out of rock.
void PutWalls(GridWorld& world, RandomSource& random) {
  const int cells = world.width * world.height;
  switch (random.Between(0, 3)) {
    case 0:
      break;
    case 1:
      PutSingleWalls(world, random, random.Between(1, 50));
      break;
    case 2:
      for (int i = random.Between(1, 3 + cells / 60); i > 0; --i) {
        PutBlock(world, random, 9, 0);
      }
      break;
    default:
      world.passable.assign(world.passable.size(), 0);
      for (int i = random.Between(1, 5 + cells / 20); i > 0; --i) {
        PutBlock(world, random, 12, 1);
      }
      break;
  }
}

// Extra costs: no callback, everywhere zero, patches of one cost, a cost on some cells, a slope, or any cost on any
// cell.
void PutExtraCosts(GridWorld& world, RandomSource& random) {
  const int kind = random.Between(0, 5);
  if (kind == 0) {
    return;
  }
  world.extra.assign(world.passable.size(), 0);
  const int highest = random.OneIn(3) ? 65535 : random.OneIn(2) ? 660 : 12;
  const int middle_x = random.Between(0, world.width);
  const int middle_y = random.Between(0, world.height);
  for (int y = 0; y < world.height; ++y) {
    for (int x = 0; x < world.width; ++x) {
      std::uint16_t& extra = world.extra[world.IndexOf(x, y)];
      if (kind == 2) {
        extra = static_cast<std::uint16_t>((x / 7 + y / 5) % 3 == 0 ? highest : 0);
      } else if (kind == 3) {
        extra = static_cast<std::uint16_t>(random.OneIn(30) ? random.Between(0, highest) : 0);
      } else if (kind == 4) {
        extra =
            static_cast<std::uint16_t>(std::max(0, 60 - 20 * std::max(std::abs(x - middle_x), std::abs(y - middle_y))));
      } else if (kind == 5) {
        extra = static_cast<std::uint16_t>(random.Between(0, highest));
      }
    }
  }
}

AStar::Vec2 AnyCell(const GridWorld& world, RandomSource& random) {
  return {static_cast<std::uint16_t>(random.Between(0, world.width - 1)),
          static_cast<std::uint16_t>(random.Between(0, world.height - 1))};
}

// Puts start and goal anywhere, nearly always on passable cells, and decides on the neighbours.
void PutRequest(GridWorld& world, RandomSource& random) {
  world.allow_diagonal = !random.OneIn(3);
  world.start = AnyCell(world, random);
  world.goal = AnyCell(world, random);
  for (const AStar::Vec2& end : {world.start, world.goal}) {
    if (!random.OneIn(20)) {
      world.passable[world.IndexOf(end.x, end.y)] = 1;
    }
  }
}

GridWorld RandomWorld(RandomSource& random, int most_columns, int most_rows) {
  GridWorld world(static_cast<std::uint16_t>(random.Between(1, most_columns)),
                  static_cast<std::uint16_t>(random.Between(1, most_rows)));
  PutWalls(world, random);
  PutExtraCosts(world, random);
  PutRequest(world, random);
  return world;
}

// Single cells or blocks, 0 to 45 % of the world.
void PutScatteredWalls(GridWorld& world, RandomSource& random) {
  const int percent = random.Between(0, 45);
  if (random.OneIn(2)) {
    PutSingleWalls(world, random, percent);
    return;
  }
  const auto wanted = static_cast<std::ptrdiff_t>(world.passable.size()) * percent / 100;
  while (std::count(world.passable.begin(), world.passable.end(), 0) < wanted) {
    PutBlock(world, random, 9, 0);
  }
}

// None, on one cell in 40, or on every cell.
void PutScatteredExtraCosts(GridWorld& world, RandomSource& random) {
  const int kind = random.Between(0, 2);
  if (kind == 0) {
    return;
  }
  const int highest = random.OneIn(2) ? 660 : 30;
  world.extra.assign(world.passable.size(), 0);
  for (auto& extra : world.extra) {
    if (kind == 2 || random.OneIn(40)) {
      extra = static_cast<std::uint16_t>(random.Between(1, highest));
    }
  }
}

// A world of two to five tiles of 32 cells a side, so that a search meets tiles beside which others are known already.
GridWorld WorldOfManyTiles(RandomSource& random) {
  GridWorld world(static_cast<std::uint16_t>(random.Between(34, 150)),
                  static_cast<std::uint16_t>(random.Between(34, 150)));
  PutScatteredWalls(world, random);
  PutScatteredExtraCosts(world, random);
  PutRequest(world, random);
  return world;
}

template <typename MakeWorld>
void ExpectSoundSearches(int worlds, std::uint32_t first_seed, MakeWorld&& make_world) {
  int with_path = 0;
  for (std::uint32_t seed = first_seed; seed < first_seed + static_cast<std::uint32_t>(worlds); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSource random(seed);
    with_path += ExpectSoundSearch(make_world(random)).empty() ? 0 : 1;
    if (testing::Test::HasFailure()) {
      return;
    }
  }
  EXPECT_GT(with_path, worlds / 4);  // else the worlds test little
}

void ExpectSoundSearches(int worlds, std::uint32_t first_seed, int most_columns, int most_rows) {
  ExpectSoundSearches(worlds, first_seed,
                      [&](RandomSource& random) { return RandomWorld(random, most_columns, most_rows); });
}

}  // namespace

TEST(AStarWorlds, SmallOnesCostWhatDijkstraSays) { ExpectSoundSearches(6000, 1, 14, 14); }
TEST(AStarWorlds, OnesOfSeveralTilesCostWhatDijkstraSays) { ExpectSoundSearches(500, 100001, 100, 100); }
TEST(AStarWorlds, LongThinOnesCostWhatDijkstraSays) {
  ExpectSoundSearches(500, 200001, 130, 3);
  ExpectSoundSearches(500, 300001, 3, 130);
}

TEST(AStarWorlds, OnesOfManyTilesCostWhatDijkstraSays) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kWorlds = 1000;  // a sanitizer looks for other mistakes than a wrong cost, and takes ten times as long
#else
  constexpr int kWorlds = 20000;
#endif
  ExpectSoundSearches(kWorlds, 400001, WorldOfManyTiles);
}

TEST(AStarWorlds, AFarGoalCostsWhatDijkstraSays) {
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSource random(seed);
    GridWorld world(20000, 5);
    for (auto& passable : world.passable) {
      passable = !random.OneIn(12);
    }
    world.passable.front() = world.passable.back() = 1;
    if (seed % 2 == 0) {
      world.extra.resize(world.passable.size());
      for (auto& extra : world.extra) {
        extra = static_cast<std::uint16_t>(random.OneIn(5) ? random.Between(0, 65535) : 0);
      }
    }
    ExpectSoundSearch(world);
  }
}
