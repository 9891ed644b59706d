#include "astar/astar.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "astar/block_allocator.h"
#include "astar/bucket_queue.h"
#include "astar/moves.h"
#include "astar/successor_table.h"
#include "astar/tile.h"
#include "astar/tile_map.h"

inline namespace controller_base_platform {
namespace grid_search {
namespace {

constexpr SuccessorTable kSuccessors = EightNeighbours();

constexpr int PriceStep(Move move) { return kDy[move] * Prices::kRow + kDx[move]; }

// What one step does, looked up at once.
struct StepEffect {
  int dx;
  int dy;
  int cost;
  int price;  // where the price of the cell entered is, seen from that of the cell left
};
constexpr std::array<StepEffect, kMoves> MakeStepEffects() {
  std::array<StepEffect, kMoves> table{};
  for (Move move = 0; move < kMoves; ++move) {
    table[move] = {kDx[move], kDy[move], StepCost(move), PriceStep(move)};
  }
  return table;
}
constexpr std::array<StepEffect, kMoves> kStepEffects = MakeStepEffects();

// What RanksAt needs for each move that led to a cell: where the prices of its two sides are, and their margins.
struct SidePrices {
  int first;
  int second;
  Margins margins;
};
constexpr std::array<SidePrices, kMoves + 1> MakeSidePrices() {
  std::array<SidePrices, kMoves + 1> table{};  // after no move all zero, because no comparison matters
  for (Move arrival = 0; arrival < kMoves; ++arrival) {
    const Sides sides = SidesOf(arrival);
    table[arrival] = {PriceStep(sides.first), PriceStep(sides.second), MarginsOf(arrival)};
  }
  return table;
}
constexpr std::array<SidePrices, kMoves + 1> kSidePrices = MakeSidePrices();

// A* over the octile (or city block) distance.
class Search {
 public:
  Search(const AStar::Params& params, BlockAllocator* allocator)
      : params_(params),
        diagonal_saving_(params.allow_diagonal ? 2 * kStraightCost - kDiagonalCost : 0),
        tiles_(params, !params.allow_diagonal, allocator),
        open_(allocator) {}

  std::vector<AStar::Vec2> Run() {
    const BucketQueue::Cell start = CellAt(params_.start);
    const BucketQueue::Cell goal = CellAt(params_.goal);
    if (!IsPassable(start) || !IsPassable(goal)) {
      return {};
    }
    Reach(start.tile, ColumnOf(start.index), RowOf(start.index), 0, kNoMove, 0);
    BucketQueue::Cell cell{};
    while (open_.Pop(&cell)) {
      Node& node = cell.tile->nodes[cell.index];
      if (node.closed()) {
        continue;
      }
      if (cell.index == goal.index && cell.tile == goal.tile) {
        return ChainToGoal();
      }
      node.Close();
      Expand(cell.tile, ColumnOf(cell.index), RowOf(cell.index), node);
    }
    return {};
  }

 private:
  BucketQueue::Cell CellAt(AStar::Vec2 cell) {
    Tile* const tile = tiles_.TileAt(cell.x, cell.y);
    return {tile, static_cast<std::uint16_t>(IndexIn(cell.x - tile->left, cell.y - tile->top))};
  }

  bool IsPassable(const BucketQueue::Cell& cell) {
    return tiles_.IsPassable(cell.tile, ColumnOf(cell.index), RowOf(cell.index));
  }

  // Least cost from a cell of the map to the goal.
  int Rest(int x, int y) const {
    const int dx = std::abs(x - params_.goal.x);
    const int dy = std::abs(y - params_.goal.y);
    return kStraightCost * (dx + dy) - diagonal_saving_ * std::min(dx, dy);
  }

  // Is cell (x, y) in its tile, not on the ring around it?
  static bool IsInside(int x, int y) { return ((x | y) & ~(kTileSide - 1)) == 0; }

  // Cell (x, y) of `tile` or of the ring around it can be reached at `cost`, by `length` moves `arrival`.
  void Reach(Tile* tile, int x, int y, std::int64_t cost, Move arrival, int length) {
    if (!IsInside(x, y)) {
      tile = tile->around[MoveBy(x >> kTileBits, y >> kTileBits)];
      x &= kTileSide - 1;
      y &= kTileSide - 1;
    }
    const int index = IndexIn(x, y);
    Node& node = tile->nodes[index];
    if (node.cost() <= cost) {
      return;
    }
    node = Node(cost, arrival, length);
    open_.Push(static_cast<std::uint64_t>(cost + Rest(tile->left + x, tile->top + y)),
               {tile, static_cast<std::uint16_t>(index)});
  }

  void Expand(Tile* tile, int x, int y, Node node) {
    Window window = WindowAt(*tile, x, y);
    if (window.rough && tiles_.AskAround(tile, x, y)) {
      window = WindowAt(*tile, x, y);
    }
    if (!params_.allow_diagonal) {
      Step(tile, x, y, node.cost(), StraightSuccessorsOf(node.arrival(), window.passable));
    } else if (window.rough) {
      const SideRanks ranks = RanksAt(tile->prices->At(x, y), node.arrival());
      Step(tile, x, y, node.cost(), kSuccessors[node.arrival()][ranks][window.passable]);
    } else {
      Go(tile, x, y, node.cost(), kSuccessors[node.arrival()][kEqualSides][window.passable]);
    }
  }

  static SideRanks RanksAt(const std::uint16_t* price, Move arrival) {
    const SidePrices& sides = kSidePrices[arrival];
    return RanksOf(price[sides.first] - *price, price[sides.second] - *price, sides.margins);
  }

  // One step each: into, out of and among rough cells.
  void Step(Tile* tile, int x, int y, std::int64_t cost, unsigned moves) {
    const std::uint16_t* const price = tile->prices->At(x, y);
    for (; moves != 0; moves &= moves - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(moves));
      const StepEffect& step = kStepEffects[move];
      Reach(tile, x + step.dx, y + step.dy, cost + step.cost + kExtraUnit * price[step.price], move, 1);
    }
  }

  // As far as nothing changes.
  void Go(Tile* tile, int x, int y, std::int64_t cost, unsigned moves) {
    for (; moves != 0; moves &= moves - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(moves));
      if (IsDiagonal(move)) {
        GoDiagonally(tile, x, y, cost, move);
      } else {
        GoStraight(tile, x, y, cost, move);
      }
    }
  }

  void GoStraight(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    const StepEffect& step = kStepEffects[move];
    const bool along_row = step.dy == 0;
    const Line* const lines = along_row ? tile->rows + y : tile->columns + x;
    const int from = along_row ? x : y;
    const int steps = step.dx + step.dy > 0 ? StepsUp(lines, from) : StepsDown(lines, from);
    if (steps != 0) {
      x += steps * step.dx;
      y += steps * step.dy;
      Reach(tile, x, y, cost + steps * kStraightCost + kExtraUnit * *tile->prices->At(x, y), move, steps);
    }
  }

  static std::uint64_t Uneven(const Line* lines) {
    const std::uint64_t rough = lines[0].rough | lines[1].rough | lines[2].rough;
    return rough | rough << 1 | rough >> 1;
  }
  static constexpr std::uint64_t kEnds = std::uint64_t{1} << (kLines - 1) | 1;

  static int StepsUp(const Line* lines, int from) {
    const std::uint64_t before = lines[0].passable;
    const std::uint64_t after = lines[2].passable;
    const std::uint64_t turns = (before & ~(before << 1)) | (after & ~(after << 1));
    const std::uint64_t stops = turns | Uneven(lines) | ~lines[1].passable | kEnds;
    const int steps = __builtin_ctzll(stops >> (from + 2)) + 1;
    return (lines[1].passable >> (from + 1 + steps) & 1) != 0 ? steps : 0;
  }

  static int StepsDown(const Line* lines, int from) {
    const std::uint64_t before = lines[0].passable;
    const std::uint64_t after = lines[2].passable;
    const std::uint64_t turns = (before & ~(before >> 1)) | (after & ~(after >> 1));
    const std::uint64_t stops = turns | Uneven(lines) | ~lines[1].passable | kEnds;
    const int steps = __builtin_clzll(stops << (63 - from)) + 1;
    return (lines[1].passable >> (from + 1 - steps) & 1) != 0 ? steps : 0;
  }

  void GoDiagonally(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    for (int length = 1;; ++length) {
      x += kDx[move];
      y += kDy[move];
      cost += kDiagonalCost;
      const bool inside = IsInside(x, y);
      const Window window = inside ? WindowAt(*tile, x, y) : Window{};
      if (!inside || window.rough) {
        Reach(tile, x, y, cost + kExtraUnit * *tile->prices->At(x, y), move, length);
        return;
      }
      Node& node = tile->nodes[IndexIn(x, y)];
      if (node.cost() <= cost) {
        return;
      }
      node = Node(cost, move, length);
      node.Close();
      const MoveSet moves = kSuccessors[move][kEqualSides][window.passable];
      if (Contains(moves, HorizontalPart(move))) {
        GoStraight(tile, x, y, cost, HorizontalPart(move));
      }
      if (Contains(moves, VerticalPart(move))) {
        GoStraight(tile, x, y, cost, VerticalPart(move));
      }
      if (!Contains(moves, move)) {
        return;
      }
    }
  }

  std::vector<AStar::Vec2> ChainToGoal() {
    std::vector<AStar::Vec2> cells{params_.goal};
    int x = params_.goal.x;
    int y = params_.goal.y;
    while (true) {
      const Tile& tile = *tiles_.TileAt(x, y);
      const Node node = tile.nodes[IndexIn(x - tile.left, y - tile.top)];
      if (node.arrival() == kNoMove) {
        break;
      }
      for (int i = 0; i < node.length(); ++i) {
        x -= kDx[node.arrival()];
        y -= kDy[node.arrival()];
        cells.push_back({static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y)});
      }
    }
    std::reverse(cells.begin(), cells.end());
    return cells;
  }

  const AStar::Params& params_;
  const int diagonal_saving_;
  TileMap tiles_;
  BucketQueue open_;
};

}  // namespace
}  // namespace grid_search

std::vector<AStar::Vec2> AStar::Find(const Params& params) {
  const auto is_on_map = [&params](const Vec2& cell) { return cell.x < params.width && cell.y < params.height; };
  if (!is_on_map(params.start) || !is_on_map(params.goal)) {
    return {};
  }
  return grid_search::Search(params, allocator_).Run();
}

}  // namespace controller_base_platform
