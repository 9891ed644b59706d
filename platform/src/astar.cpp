#include "astar/astar.h"

#include <algorithm>
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

// A* over the octile (or city block) distance.
class Search {
 public:
  Search(const AStar::Params& params, BlockAllocator* allocator)
      : params_(params),
        diagonal_saving_(params.allow_diagonal ? 2 * kStraightCost - kDiagonalCost : 0),
        tiles_(params, !params.allow_diagonal, allocator),
        open_(allocator) {}

  std::vector<AStar::Vec2> Run() {
    if (!IsPassable(params_.start) || !IsPassable(params_.goal)) {
      return {};
    }
    Tile* const start = tiles_.TileAt(params_.start.x, params_.start.y);
    Reach({start, IndexOf(*start, params_.start)}, 0, kNoMove, 0);
    BucketQueue::Cell cell{};
    while (open_.Pop(&cell)) {
      Node& node = cell.tile->nodes[cell.index];
      if (node.closed()) {
        continue;
      }
      node.Close();
      const int x = ColumnOf(cell.index);
      const int y = RowOf(cell.index);
      if (cell.tile->left + x == params_.goal.x && cell.tile->top + y == params_.goal.y) {
        return ChainToGoal();
      }
      Expand(cell.tile, x, y, node);
    }
    return {};
  }

 private:
  static std::uint16_t IndexOf(const Tile& tile, AStar::Vec2 cell) {
    return static_cast<std::uint16_t>(IndexIn(cell.x - tile.left, cell.y - tile.top));
  }

  bool IsPassable(AStar::Vec2 cell) {
    Tile* const tile = tiles_.TileAt(cell.x, cell.y);
    const int x = cell.x - tile->left;
    const int y = cell.y - tile->top;
    tiles_.AskAround(tile, x, y);
    return (tile->rows[y + 1].passable >> (x + 1) & 1) != 0;
  }

  // Extra cost of cell (x, y) of `tile` or of the ring around it.
  static int ExtraAt(const Tile& tile, int x, int y) {
    return tile.extra == nullptr ? 0 : tile.extra[ExtraIndexOf(x, y)];
  }

  // Least cost from a cell of the map to the goal.
  int Rest(int x, int y) const {
    const int dx = std::abs(x - params_.goal.x);
    const int dy = std::abs(y - params_.goal.y);
    return kStraightCost * (dx + dy) - diagonal_saving_ * std::min(dx, dy);
  }

  void Reach(BucketQueue::Cell cell, std::int64_t cost, Move arrival, int length) {
    Node& node = cell.tile->nodes[cell.index];
    if (node.cost() <= cost) {
      return;
    }
    node = Node(cost, arrival, length);
    const int rest = Rest(cell.tile->left + ColumnOf(cell.index), cell.tile->top + RowOf(cell.index));
    open_.Push(static_cast<std::uint64_t>(cost + rest), cell);
  }

  // The cell (x, y) of `tile`, which may be up to one beyond its sides.
  static BucketQueue::Cell CellAt(Tile* tile, int x, int y) {
    static constexpr Move kSide[3][3] = {
        {kNorthWest, kNorth, kNorthEast}, {kWest, kNoMove, kEast}, {kSouthWest, kSouth, kSouthEast}};
    const Move side = kSide[(y + kTileSide) / kTileSide][(x + kTileSide) / kTileSide];
    if (side != kNoMove) {
      tile = tile->around[side];
    }
    return {tile, static_cast<std::uint16_t>(IndexIn(x & (kTileSide - 1), y & (kTileSide - 1)))};
  }

  void Expand(Tile* tile, int x, int y, Node node) {
    tiles_.AskAround(tile, x, y);
    const Window window = WindowAt(*tile, x, y);
    if (!params_.allow_diagonal) {
      Step(tile, x, y, node.cost(), StraightSuccessorsOf(node.arrival(), window.passable));
    } else if (window.rough) {
      const SideRanks ranks = tile->extra == nullptr ? kEqualSides : RanksAt(*tile, x, y, node.arrival());
      Step(tile, x, y, node.cost(), kSuccessors[node.arrival()][ranks][window.passable]);
    } else {
      Go(tile, x, y, node.cost(), kSuccessors[node.arrival()][kEqualSides][window.passable]);
    }
  }

  static SideRanks RanksAt(const Tile& tile, int x, int y, Move arrival) {
    if (arrival == kNoMove) {
      return kEqualSides;
    }
    const Sides sides = SidesOf(arrival);
    const std::uint16_t* const extra = tile.extra + ExtraIndexOf(x, y);
    const auto excess = [extra](Move side) { return extra[kDy[side] * kLines + kDx[side]] - *extra; };
    return RanksOf(excess(sides.first), excess(sides.second), MarginsOf(arrival));
  }

  // One step each: into, out of and among rough cells.
  void Step(Tile* tile, int x, int y, std::int64_t cost, MoveSet moves) {
    for (unsigned left = moves; left != 0; left &= left - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(left));
      const BucketQueue::Cell next = CellAt(tile, x + kDx[move], y + kDy[move]);
      const int extra = ExtraAt(*tile, x + kDx[move], y + kDy[move]);
      Reach(next, cost + StepCost(move) + kExtraUnit * extra, move, 1);
    }
  }

  // As far as nothing changes.
  void Go(Tile* tile, int x, int y, std::int64_t cost, MoveSet moves) {
    for (unsigned left = moves; left != 0; left &= left - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(left));
      if (IsDiagonal(move)) {
        GoDiagonally(tile, x, y, cost, move);
      } else {
        GoStraight(tile, x, y, cost, move);
      }
    }
  }

  void GoStraight(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    const bool along_row = kDy[move] == 0;
    const Line* const lines = along_row ? tile->rows + y : tile->columns + x;
    const int from = along_row ? x : y;
    const int steps = kDx[move] + kDy[move] > 0 ? StepsUp(lines, from) : StepsDown(lines, from);
    if (steps == 0) {
      return;
    }
    const BucketQueue::Cell end = CellAt(tile, x + steps * kDx[move], y + steps * kDy[move]);
    const int extra = ExtraAt(*tile, x + steps * kDx[move], y + steps * kDy[move]);
    Reach(end, cost + steps * kStraightCost + kExtraUnit * extra, move, steps);
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
      const BucketQueue::Cell cell = CellAt(tile, x, y);
      if (cell.tile != tile) {
        Reach(cell, cost + kExtraUnit * ExtraAt(*tile, x, y), move, length);
        return;
      }
      const Window window = WindowAt(*tile, x, y);
      if (window.rough) {
        Reach(cell, cost + kExtraUnit * ExtraAt(*tile, x, y), move, length);
        return;
      }
      Node& node = tile->nodes[cell.index];
      if (node.cost() <= cost) {
        return;
      }
      node = Node(cost, move, length);
      node.Close();
      const MoveSet moves = kSuccessors[move][kEqualSides][window.passable];
      for (const Move part : {HorizontalPart(move), VerticalPart(move)}) {
        if (Contains(moves, part)) {
          GoStraight(tile, x, y, cost, part);
        }
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
