// The grid search: cheapest paths, the rules of its callbacks, and its use of time and memory.
#include "astar/astar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "astar/block_allocator.h"
#include "test/support/grid_search_reference.h"
#include "test/support/random_source.h"

using controller_base_test::AskCounts;
using controller_base_test::CountedRequestOn;
using controller_base_test::DijkstraCost;
using controller_base_test::ExpectSoundSearch;
using controller_base_test::Find;
using controller_base_test::GridWorld;
using controller_base_test::PathCost;
using controller_base_test::RandomSource;
using controller_base_test::RequestOn;
using controller_base_test::WorldFromText;
using Cells = std::vector<AStar::Vec2>;

namespace {

AStar::Params OpenMap(std::uint16_t side, AStar::Vec2 start, AStar::Vec2 goal) {
  AStar::Params request;
  request.allow_diagonal = true;
  request.width = request.height = side;
  request.start = start;
  request.goal = goal;
  return request;
}

// A corridor one cell wide that goes to and fro through the whole map, from the first cell to the last.
GridWorld Serpentine(std::uint16_t side) {
  GridWorld world(side, side);
  for (std::uint16_t y = 1; y < side; y = static_cast<std::uint16_t>(y + 2)) {
    for (std::uint16_t x = 0; x < side; ++x) {
      const bool gap = y % 4 == 1 ? x == side - 1 : x == 0;
      world.passable[world.IndexOf(x, y)] = gap;
    }
  }
  return world;
}

}  // namespace

TEST(AStarRequest, IsEmptyByDefault) {
  const AStar::Params request;
  EXPECT_FALSE(request.allow_diagonal);
  EXPECT_EQ(request.width, 0);
  EXPECT_EQ(request.height, 0);
  EXPECT_EQ(request.start, (AStar::Vec2{0, 0}));
  EXPECT_EQ(request.goal, (AStar::Vec2{0, 0}));
  EXPECT_FALSE(request.is_passable);
  EXPECT_FALSE(request.extra_cost);
  EXPECT_TRUE(Find(request).empty());
}

TEST(AStarRequest, CellsAreEqualWhenBothCoordinatesAre) {
  EXPECT_TRUE((AStar::Vec2{1, 2}) == (AStar::Vec2{1, 2}));
  EXPECT_FALSE((AStar::Vec2{1, 2}) == (AStar::Vec2{2, 1}));
  EXPECT_TRUE((AStar::Vec2{1, 2}) != (AStar::Vec2{1, 3}));
  EXPECT_TRUE((AStar::Vec2{1, 2}) != (AStar::Vec2{0, 2}));
  EXPECT_FALSE((AStar::Vec2{1, 2}) != (AStar::Vec2{1, 2}));
}

TEST(AStarEnds, AMapWithoutRowsOrColumnsHasNoPath) {
  AStar::Params request = OpenMap(5, {0, 0}, {0, 0});
  request.width = 0;
  EXPECT_TRUE(Find(request).empty());
  request.width = 5;
  request.height = 0;
  EXPECT_TRUE(Find(request).empty());
}

TEST(AStarEnds, AnEndOffTheMapHasNoPathAndAsksNothing) {
  for (const AStar::Vec2 off : {AStar::Vec2{5, 2}, AStar::Vec2{2, 5}, AStar::Vec2{65535, 65535}}) {
    int asked = 0;
    AStar::Params request = OpenMap(5, off, {1, 1});
    request.is_passable = [&asked](const AStar::Vec2&) { return ++asked > 0; };
    EXPECT_TRUE(Find(request).empty());
    std::swap(request.start, request.goal);
    EXPECT_TRUE(Find(request).empty());
    EXPECT_EQ(asked, 0);
  }
}

TEST(AStarEnds, AnImpassableEndHasNoPath) {
  GridWorld world(40, 40);
  world.passable.front() = 0;
  EXPECT_TRUE(ExpectSoundSearch(world).empty());
  std::swap(world.start, world.goal);
  EXPECT_TRUE(ExpectSoundSearch(world).empty());
}

TEST(AStarEnds, AStartThatIsTheGoalIsAPathOfOneCell) {
  GridWorld world(3, 3);
  world.start = world.goal = {1, 1};
  EXPECT_EQ(ExpectSoundSearch(world), (Cells{{1, 1}}));
  world.passable[4] = 0;
  EXPECT_TRUE(ExpectSoundSearch(world).empty());
}

TEST(AStarMoves, FourNeighboursMakeNoDiagonalMove) {
  GridWorld world(2, 2);
  EXPECT_EQ(ExpectSoundSearch(world), (Cells{{0, 0}, {1, 1}}));
  world.allow_diagonal = false;
  EXPECT_EQ(ExpectSoundSearch(world).size(), 3u);
}

TEST(AStarMoves, ADiagonalMoveCutsNoCorner) {
  EXPECT_EQ(ExpectSoundSearch(WorldFromText({"S#", ".G"})), (Cells{{0, 0}, {0, 1}, {1, 1}}));
  EXPECT_EQ(ExpectSoundSearch(WorldFromText({"S.", "#G"})), (Cells{{0, 0}, {1, 0}, {1, 1}}));
  EXPECT_TRUE(ExpectSoundSearch(WorldFromText({"S#", "#G"})).empty());
}

TEST(AStarMoves, ThinMapsAndAllPairsOfASmallMap) {
  for (const auto& [columns, rows] : {std::pair<int, int>{1, 70}, {70, 1}, {2, 67}, {5, 4}}) {
    GridWorld world(static_cast<std::uint16_t>(columns), static_cast<std::uint16_t>(rows));
    ExpectSoundSearch(world);
    std::swap(world.start, world.goal);
    ExpectSoundSearch(world);
  }
  const GridWorld walls = WorldFromText({"...#.", ".#...", ".##.#", "....."});
  for (std::size_t from = 0; from < walls.passable.size(); ++from) {
    for (std::size_t to = 0; to < walls.passable.size(); ++to) {
      GridWorld world = walls;
      world.start = {static_cast<std::uint16_t>(from % 5), static_cast<std::uint16_t>(from / 5)};
      world.goal = {static_cast<std::uint16_t>(to % 5), static_cast<std::uint16_t>(to / 5)};
      ExpectSoundSearch(world);
    }
  }
}

TEST(AStarCost, ATenthOfAStraightStepIsOneUnit) {
  // Through the middle: 2 steps and its extra cost. Round it: 4 steps.
  GridWorld world = WorldFromText({"S.G", ".#.", "..."});
  world.allow_diagonal = false;
  world.passable[4] = 1;
  world.extra.assign(9, 0);
  world.start = {0, 1};
  world.goal = {2, 1};
  world.extra[4] = 19;
  EXPECT_EQ(ExpectSoundSearch(world).size(), 3u);
  world.extra[4] = 21;
  EXPECT_EQ(ExpectSoundSearch(world).size(), 5u);
}

TEST(AStarCost, TheStartsExtraCostIsNotPaidAndTheGoalsIs) {
  GridWorld world(2, 1);
  world.extra = {65535, 65535};
  EXPECT_EQ(PathCost(world, ExpectSoundSearch(world)), 70u + 7 * 65535u);
}

TEST(AStarCost, ALengthIsWithinATenThousandthOfTheTrueOne) {
  for (const auto& [x, y] : {std::pair<std::uint16_t, std::uint16_t>{400, 0}, {400, 400}, {400, 13}, {7, 390}}) {
    const Cells cells = Find(OpenMap(401, {0, 0}, {x, y}));
    double length = 0;
    for (std::size_t i = 1; i < cells.size(); ++i) {
      length += std::hypot(cells[i].x - cells[i - 1].x, cells[i].y - cells[i - 1].y);
    }
    const double straight = std::abs(x - y);
    const double shortest = straight + std::sqrt(2.0) * std::min(x, y);
    EXPECT_NEAR(length, shortest, 1e-4 * shortest) << x << ", " << y;
  }
}

TEST(AStarCost, CostsBeyond32BitsAreCounted) {
  GridWorld world = Serpentine(141);
  world.extra.assign(world.passable.size(), 65535);
  ASSERT_GT(DijkstraCost(world), std::uint64_t{1} << 32);
  ExpectSoundSearch(world);
}

TEST(AStarCost, ACostBeyond32BitsIsNotTakenForASmallOne) {
  // The last column is a cheap path from end to end; the costs of the corridor beside it exceed 2^32.
  GridWorld world = Serpentine(141);
  world.extra.assign(world.passable.size(), 65535);
  for (std::uint16_t y = 0; y < world.height; ++y) {
    world.passable[world.IndexOf(140, y)] = 1;
  }
  ExpectSoundSearch(world);
}

TEST(AStarCallbacks, NoneMeansAllPassableAndFree) {
  EXPECT_EQ(Find(OpenMap(9, {1, 1}, {5, 5})), (Cells{{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}}));
}

TEST(AStarCallbacks, ANearGoalIsFoundWithFewQuestions) {
  GridWorld world(1000, 1000);
  world.extra.assign(world.passable.size(), 0);
  world.start = {500, 500};
  world.goal = {503, 500};
  AskCounts counts(world);
  EXPECT_EQ(Find(CountedRequestOn(world, counts)).size(), 4u);
  int asked = 0;
  for (const int count : counts.passable) {
    asked += count;
  }
  EXPECT_LE(asked, 1024);
}

TEST(AStarCallbacks, WhatTheyThrowPassesThroughAndTheNextSearchIsSound) {
  const GridWorld world = Serpentine(41);
  for (int good_calls = 0; good_calls < 400; good_calls += 7) {
    int left = good_calls;
    AStar::Params request = RequestOn(world);
    request.is_passable = [&world, &left](const AStar::Vec2& cell) {
      if (left-- == 0) {
        throw std::runtime_error("no map");
      }
      return world.IsPassable(cell.x, cell.y);
    };
    EXPECT_THROW(Find(request), std::runtime_error);
    left = good_calls;
    request.is_passable = nullptr;
    request.extra_cost = [&left](const AStar::Vec2&) -> std::uint16_t {
      if (left-- == 0) {
        throw std::runtime_error("no extra cost");
      }
      return 500;
    };
    EXPECT_THROW(Find(request), std::runtime_error);
  }
  ExpectSoundSearch(world);
}

TEST(AStarScale, AWalledInStartEndsTheSearchOnTheLargestMap) {
  int asked = 0;
  AStar::Params request = OpenMap(65535, {40000, 30000}, {65534, 65534});
  request.is_passable = [&asked](const AStar::Vec2& cell) {
    ++asked;
    return std::abs(cell.x - 40000) != 3 && std::abs(cell.y - 30000) != 3;
  };
  EXPECT_TRUE(Find(request).empty());
  EXPECT_LT(asked, 4096);
}

TEST(AStarScale, AnImpassableGoalEndsTheSearchBeforeItBegins) {
  int asked = 0;
  AStar::Params request = OpenMap(65535, {10, 10}, {65000, 65000});
  request.is_passable = [&asked](const AStar::Vec2& cell) {
    ++asked;
    return cell.x < 64990;
  };
  EXPECT_TRUE(Find(request).empty());
  EXPECT_LE(asked, 128);
}

TEST(AStarScale, FourMegabytesDoForAGoal300CellsAwayOnTheLargestMap) {
  for (const AStar::Vec2 goal : {AStar::Vec2{32300, 32000}, AStar::Vec2{31700, 32300}, AStar::Vec2{32111, 31700}}) {
    BlockAllocator allocator;
    EXPECT_EQ(AStar(&allocator).Find(OpenMap(65535, {32000, 32000}, goal)).size(), 301u);
    EXPECT_LT(allocator.held_bytes(), 4'000'000u);
  }
}

// That search and answer hold little more than 16 bytes for each cell of the tiles of 32 x 32 that were asked about.
void ExpectMemoryForAskedTiles(AStar::Params request) {
  constexpr std::size_t kConstantBytes = 300'000;
  constexpr std::size_t kTileCells = 1024;
  std::set<std::pair<int, int>> tiles;
  const auto inner = request.is_passable;
  request.is_passable = [&](const AStar::Vec2& cell) {
    tiles.emplace(cell.x / 32, cell.y / 32);
    return !inner || inner(cell);
  };
  BlockAllocator allocator;
  const Cells cells = AStar(&allocator).Find(request);
  EXPECT_FALSE(cells.empty());
  EXPECT_LE(allocator.held_bytes() + cells.capacity() * sizeof(cells[0]),
            16 * kTileCells * tiles.size() + kConstantBytes);
}

void DrawExtraCosts(GridWorld& world, RandomSource& random, int highest) {
  world.extra.assign(world.passable.size(), 0);
  for (auto& extra : world.extra) {
    extra = static_cast<std::uint16_t>(random.Between(0, highest));
  }
}

TEST(AStarScale, MemoryFollowsTheTilesThatWereAskedOnTheLargestMap) {
  ExpectMemoryForAskedTiles(OpenMap(65535, {32000, 32000}, {32300, 32100}));
  ExpectMemoryForAskedTiles(OpenMap(65535, {0, 0}, {65534, 65534}));
  ExpectMemoryForAskedTiles(OpenMap(65535, {0, 65534}, {65534, 65534}));
}

TEST(AStarScale, MemoryFollowsTheTilesThatWereAskedAmongObstaclesAndCosts) {
  for (const bool allow_diagonal : {true, false}) {
    GridWorld world(400, 400);
    world.allow_diagonal = allow_diagonal;
    RandomSource random(7);
    for (auto& passable : world.passable) {
      passable = !random.OneIn(6);
    }
    for (std::uint16_t i = 0; i < 400; ++i) {
      world.passable[world.IndexOf(0, i)] = world.passable[world.IndexOf(i, 399)] = 1;
    }
    ExpectMemoryForAskedTiles(RequestOn(world));
    DrawExtraCosts(world, random, 1000);
    ExpectMemoryForAskedTiles(RequestOn(world));
    DrawExtraCosts(world, random, 65535);
    ExpectMemoryForAskedTiles(RequestOn(world));
  }
}

TEST(AStarScale, MemoryFollowsTheTilesThatWereAskedAlongACorridor) {
  const GridWorld corridor = Serpentine(501);
  ExpectMemoryForAskedTiles(RequestOn(corridor));
}

TEST(AStarScale, TheLargestMapIsSearchedFromCornerToCorner) {
  const Cells cells = Find(OpenMap(65535, {0, 0}, {65534, 65534}));
  ASSERT_EQ(cells.size(), 65535u);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    ASSERT_EQ(cells[i], (AStar::Vec2{static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(i)}));
  }
}
