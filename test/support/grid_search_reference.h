#ifndef TEST_SUPPORT_GRID_SEARCH_REFERENCE_H_
#define TEST_SUPPORT_GRID_SEARCH_REFERENCE_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <queue>
#include <string>
#include <utility>
#include <vector>

#include "astar/astar.h"
#include "astar/block_allocator.h"

// A small grid world as dense arrays, a plain and slow search over it, and what every answer of the fast one must
// satisfy.
namespace controller_base_test {

struct GridWorld {
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::vector<std::uint8_t> passable;  // row by row, 1 where a cell may be entered
  std::vector<std::uint16_t> extra;    // row by row; empty: the request gets no extra_cost callback
  AStar::Vec2 start;
  AStar::Vec2 goal;
  bool allow_diagonal = true;

  GridWorld(std::uint16_t columns, std::uint16_t rows)
      : width(columns), height(rows), passable(std::size_t{columns} * rows, 1) {
    goal = {static_cast<std::uint16_t>(columns - 1), static_cast<std::uint16_t>(rows - 1)};
  }

  bool Holds(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
  std::size_t IndexOf(int x, int y) const { return static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x); }
  bool IsPassable(int x, int y) const { return Holds(x, y) && passable[IndexOf(x, y)] != 0; }
  std::uint16_t ExtraOf(int x, int y) const { return extra.empty() ? std::uint16_t{0} : extra[IndexOf(x, y)]; }
};

// The world whose rows are `rows`, the first being y = 0:  . free  # wall  S start  G goal
inline GridWorld WorldFromText(const std::vector<std::string>& rows) {
  GridWorld world(static_cast<std::uint16_t>(rows.front().size()), static_cast<std::uint16_t>(rows.size()));
  for (std::uint16_t y = 0; y < world.height; ++y) {
    for (std::uint16_t x = 0; x < world.width; ++x) {
      const char cell = rows[y][x];
      world.passable[world.IndexOf(x, y)] = cell != '#';
      if (cell == 'S') {
        world.start = {x, y};
      } else if (cell == 'G') {
        world.goal = {x, y};
      }
    }
  }
  return world;
}

inline std::string AsText(const GridWorld& world) {
  std::string text = std::to_string(world.width) + " x " + std::to_string(world.height) +
                     (world.allow_diagonal ? ", 8 neighbours" : ", 4 neighbours") + "\n";
  if (world.passable.size() > 10000) {
    return text;
  }
  for (std::uint16_t y = 0; y < world.height; ++y) {
    for (std::uint16_t x = 0; x < world.width; ++x) {
      const AStar::Vec2 cell{x, y};
      text += cell == world.start ? 'S' : cell == world.goal ? 'G' : world.IsPassable(x, y) ? '.' : '#';
    }
    if (!world.extra.empty()) {
      for (std::uint16_t x = 0; x < world.width; ++x) {
        text += ' ' + std::to_string(world.ExtraOf(x, y));
      }
    }
    text += '\n';
  }
  return text;
}

// The request for `world`, with callbacks that look into it: it must outlive them.
inline AStar::Params RequestOn(const GridWorld& world) {
  AStar::Params request;
  request.allow_diagonal = world.allow_diagonal;
  request.width = world.width;
  request.height = world.height;
  request.start = world.start;
  request.goal = world.goal;
  request.is_passable = [&world](const AStar::Vec2& cell) { return world.IsPassable(cell.x, cell.y); };
  if (!world.extra.empty()) {
    request.extra_cost = [&world](const AStar::Vec2& cell) { return world.ExtraOf(cell.x, cell.y); };
  }
  return request;
}

// What the callbacks of a request were asked, cell by cell.
struct AskCounts {
  explicit AskCounts(const GridWorld& world) : passable(world.passable.size()), extra(world.passable.size()) {}
  std::vector<int> passable;
  std::vector<int> extra;
  bool off_map = false;
  bool asked_of_impassable = false;
};

// RequestOn(world) whose callbacks also keep `counts`.
inline AStar::Params CountedRequestOn(const GridWorld& world, AskCounts& counts) {
  AStar::Params request = RequestOn(world);
  request.is_passable = [&world, &counts](const AStar::Vec2& cell) {
    if (!world.Holds(cell.x, cell.y)) {
      counts.off_map = true;
      return false;
    }
    ++counts.passable[world.IndexOf(cell.x, cell.y)];
    return world.IsPassable(cell.x, cell.y);
  };
  if (!world.extra.empty()) {
    request.extra_cost = [&world, &counts](const AStar::Vec2& cell) {
      if (!world.Holds(cell.x, cell.y)) {
        counts.off_map = true;
        return std::uint16_t{0};
      }
      counts.asked_of_impassable = counts.asked_of_impassable || !world.IsPassable(cell.x, cell.y);
      ++counts.extra[world.IndexOf(cell.x, cell.y)];
      return world.ExtraOf(cell.x, cell.y);
    };
  }
  return request;
}

constexpr std::uint64_t kNoPath = std::numeric_limits<std::uint64_t>::max();

// Cost of the move from (x, y) by (dx, dy) in `world`; kNoPath when it is not allowed.
inline std::uint64_t MoveCost(const GridWorld& world, int x, int y, int dx, int dy) {
  const bool diagonal = dx != 0 && dy != 0;
  if (std::abs(dx) > 1 || std::abs(dy) > 1 || (dx == 0 && dy == 0) || !world.IsPassable(x + dx, y + dy)) {
    return kNoPath;
  }
  if (diagonal && (!world.allow_diagonal || !world.IsPassable(x + dx, y) || !world.IsPassable(x, y + dy))) {
    return kNoPath;
  }
  return (diagonal ? 99U : 70U) + std::uint64_t{7} * world.ExtraOf(x + dx, y + dy);
}

// Cost of a cheapest path from the start to the goal by Dijkstra's search over the whole world; kNoPath when none
// exists.
inline std::uint64_t DijkstraCost(const GridWorld& world) {
  if (!world.IsPassable(world.start.x, world.start.y) || !world.IsPassable(world.goal.x, world.goal.y)) {
    return kNoPath;
  }
  std::vector<std::uint64_t> cost(world.passable.size(), kNoPath);
  using Entry = std::pair<std::uint64_t, AStar::Vec2>;
  const auto dearer = [](const Entry& a, const Entry& b) { return a.first > b.first; };
  std::priority_queue<Entry, std::vector<Entry>, decltype(dearer)> open(dearer);
  cost[world.IndexOf(world.start.x, world.start.y)] = 0;
  open.emplace(0, world.start);
  while (!open.empty()) {
    const auto [so_far, cell] = open.top();
    open.pop();
    if (cell == world.goal) {
      return so_far;
    }
    if (so_far > cost[world.IndexOf(cell.x, cell.y)]) {
      continue;
    }
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const std::uint64_t move = MoveCost(world, cell.x, cell.y, dx, dy);
        if (move == kNoPath) {
          continue;
        }
        const AStar::Vec2 next{static_cast<std::uint16_t>(cell.x + dx), static_cast<std::uint16_t>(cell.y + dy)};
        std::uint64_t& known = cost[world.IndexOf(next.x, next.y)];
        if (so_far + move < known) {
          known = so_far + move;
          open.emplace(known, next);
        }
      }
    }
  }
  return kNoPath;
}

// The cost of `cells`, whose every move must be allowed; kNoPath when one is not or there are no cells.
inline std::uint64_t PathCost(const GridWorld& world, const std::vector<AStar::Vec2>& cells) {
  if (cells.empty()) {
    return kNoPath;
  }
  std::uint64_t cost = 0;
  for (std::size_t i = 1; i < cells.size(); ++i) {
    const AStar::Vec2& from = cells[i - 1];
    const std::uint64_t move = MoveCost(world, from.x, from.y, cells[i].x - from.x, cells[i].y - from.y);
    if (move == kNoPath) {
      return kNoPath;
    }
    cost += move;
  }
  return cost;
}

inline std::vector<AStar::Vec2> Find(const AStar::Params& request) {
  BlockAllocator allocator;
  return AStar(&allocator).Find(request);
}

// Searches `world` and expects a cheapest path of allowed moves from start to goal (none where there is none), the
// same one the second time, and callbacks that are asked at most once per cell, on the map only, and about extra costs
// of passable cells only. Returns the path.
inline std::vector<AStar::Vec2> ExpectSoundSearch(const GridWorld& world) {
  AskCounts counts(world);
  std::vector<AStar::Vec2> cells = Find(CountedRequestOn(world, counts));
  const std::uint64_t cheapest = DijkstraCost(world);
  EXPECT_EQ(PathCost(world, cells), cheapest) << AsText(world);
  if (cheapest == kNoPath) {
    EXPECT_TRUE(cells.empty()) << AsText(world);
  } else if (!cells.empty()) {
    EXPECT_EQ(cells.front(), world.start) << AsText(world);
    EXPECT_EQ(cells.back(), world.goal) << AsText(world);
  }
  EXPECT_EQ(Find(RequestOn(world)), cells) << AsText(world);
  EXPECT_FALSE(counts.off_map) << AsText(world);
  EXPECT_FALSE(counts.asked_of_impassable) << AsText(world);
  bool asked_again = false;
  for (std::size_t i = 0; i < counts.passable.size(); ++i) {
    asked_again = asked_again || counts.passable[i] > 1 || counts.extra[i] > 1;
  }
  EXPECT_FALSE(asked_again) << AsText(world);
  return cells;
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_GRID_SEARCH_REFERENCE_H_
