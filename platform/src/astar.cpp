#include "astar/astar.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "astar/block_allocator.h"
#include "astar/bucket_queue.h"
#include "astar/line.h"
#include "astar/moves.h"
#include "astar/successor_table.h"
#include "astar/tile.h"
#include "astar/tile_map.h"

inline namespace controller_base_platform {
namespace grid_search {
namespace {

// What one step does, and how the two sides are compared after it, each looked up at once.
struct Step {
  int dx;
  int dy;
  int cost;
  int price;  // Prices::Step
};
struct SideSteps {
  int first;  // Prices::Step
  int second;
  Margins margins;
};
constexpr std::array<Step, kMoves> MakeSteps() {
  std::array<Step, kMoves> steps{};
  for (Move move = 0; move < kMoves; ++move) {
    steps[move] = {kDx[move], kDy[move], StepCost(move), Prices::Step(move)};
  }
  return steps;
}
constexpr std::array<SideSteps, kMoves + 1> MakeSideSteps() {
  std::array<SideSteps, kMoves + 1> steps{};  // all zero after kNoMove, where the comparison has no effect
  for (Move arrival = 0; arrival < kMoves; ++arrival) {
    const Sides sides = SidesOf(arrival);
    steps[arrival] = {Prices::Step(sides.first), Prices::Step(sides.second), MarginsOf(arrival)};
  }
  return steps;
}
constexpr std::array<Step, kMoves> kSteps = MakeSteps();
constexpr std::array<SideSteps, kMoves + 1> kSideSteps = MakeSideSteps();

// A push raises the key by no more than twice the cost of what was walked.
static_assert(2 * (2 * kTileSide * kDiagonalCost) + kExtraUnit * kMaxExtra < BucketQueue::kReach);

// One search: A* over the exact distance on an empty map, with the moves of kSuccessors only.
//
// Where a cell and its neighbours are known, passable or not, and none has a price, moves are not made step by step. A
// straight move goes on to the first cell where there is something to decide (see Line). A diagonal one goes on
// likewise and lets straight moves go off on its way; the cells that it passes are marked as reached and closed, so
// that another one that comes no cheaper ends there. What is left out is only the queue: the same cells are reached at
// the same costs as step by step, and a cell that was passed too early, at too high a cost, is passed again.
class Search {
 public:
  Search(const AStar::Params& params, BlockAllocator* allocator)
      : params_(params),
        diagonal_saving_(params.allow_diagonal ? 2 * kStraightCost - kDiagonalCost : 0),
        tiles_(params, allocator),
        open_(CostToGoal(params.start.x, params.start.y), allocator) {}

  std::vector<AStar::Vec2> Run() {
    const Cell start = tiles_.CellAt(params_.start.x, params_.start.y);
    const Cell goal = tiles_.CellAt(params_.goal.x, params_.goal.y);
    if (!tiles_.IsPassable(start) || !tiles_.IsPassable(goal)) {
      return {};
    }
    Reach(start.tile, ColumnOf(start.index), RowOf(start.index), Node(0, kNoMove, 0));
    Cell cell{};
    while (open_.Pop(&cell)) {
      if (cell.tile == goal.tile && cell.index == goal.index) {
        return ChainToGoal();
      }
      Node& node = cell.tile->nodes[cell.index];
      if (!node.closed()) {
        node.Close();
        MoveOn(cell.tile, ColumnOf(cell.index), RowOf(cell.index), node);
      }
    }
    return {};
  }

 private:
  // The least that it can cost from a cell of the map to the goal.
  int CostToGoal(int x, int y) const {
    const int dx = std::abs(x - params_.goal.x);
    const int dy = std::abs(y - params_.goal.y);
    return kStraightCost * (dx + dy) - diagonal_saving_ * std::min(dx, dy);
  }

  static bool IsInside(int x, int y) { return ((x | y) & ~(kTileSide - 1)) == 0; }

  // Cell (x, y) of `tile`, or of the ring around it, can be reached as `node` says.
  void Reach(Tile* tile, int x, int y, Node node) {
    if (!IsInside(x, y)) {
      tile = tile->around[MoveBy(x >> kTileBits, y >> kTileBits)];
      x &= kTileSide - 1;
      y &= kTileSide - 1;
    }
    const int index = IndexIn(x, y);
    if (node.cost() < tile->nodes[index].cost()) {
      tile->nodes[index] = node;
      open_.Push(node.cost() + CostToGoal(tile->left + x, tile->top + y), {tile, static_cast<std::uint16_t>(index)});
    }
  }

  // Makes the moves from cell (x, y) of `tile` that are worth making.
  void MoveOn(Tile* tile, int x, int y, Node node) {
    Window window = WindowAt(*tile, x, y);
    if (window.rough && tiles_.AskAround(tile, x, y)) {
      window = WindowAt(*tile, x, y);
    }
    const Move arrival = node.arrival();
    if (!params_.allow_diagonal) {
      StepOn(tile, x, y, node.cost(), StraightSuccessors(arrival, window.passable));
    } else if (window.rough) {
      const SideRanks ranks = RanksAt(tile->prices->At(x, y), arrival);
      StepOn(tile, x, y, node.cost(), kSuccessors[arrival][ranks][window.passable]);
    } else {
      GoOn(tile, x, y, node.cost(), kSuccessors[arrival][kEqualSides][window.passable]);
    }
  }

  static SideRanks RanksAt(const std::uint16_t* price, Move arrival) {
    const SideSteps& sides = kSideSteps[arrival];
    return RanksOf(price[sides.first] - *price, price[sides.second] - *price, sides.margins);
  }

  // One step each.
  void StepOn(Tile* tile, int x, int y, std::int64_t cost, unsigned moves) {
    const std::uint16_t* const price = tile->prices->At(x, y);
    for (; moves != 0; moves &= moves - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(moves));
      const Step& step = kSteps[move];
      const std::int64_t next_cost = cost + (step.cost + kExtraUnit * price[step.price]);
      Reach(tile, x + step.dx, y + step.dy, Node(next_cost, move, 1));
    }
  }

  // As far as the ground is plain. The diagonal moves come last, so that the queue prefers them: where both are as
  // good, it is the diagonal one that has not turned yet.
  void GoOn(Tile* tile, int x, int y, std::int64_t cost, MoveSet moves) {
    for (unsigned left = moves & kStraightMoves; left != 0; left &= left - 1) {
      GoStraight(tile, x, y, cost, static_cast<Move>(__builtin_ctz(left)));
    }
    for (unsigned left = moves & ~unsigned{kStraightMoves}; left != 0; left &= left - 1) {
      GoDiagonally(tile, x, y, cost, static_cast<Move>(__builtin_ctz(left)));
    }
  }

  void GoStraight(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    const Step& step = kSteps[move];
    const bool along_row = step.dy == 0;
    const Line* const lines = along_row ? tile->rows + y : tile->columns + x;
    const int from = along_row ? x : y;
    const int steps = step.dx + step.dy > 0 ? StepsUp(lines, from) : StepsDown(lines, from);
    if (steps != 0) {
      const std::int64_t end_cost = cost + std::int64_t{steps} * kStraightCost;
      Reach(tile, x + steps * step.dx, y + steps * step.dy, Node(end_cost, move, steps));
    }
  }

  void GoDiagonally(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    const Step& step = kSteps[move];
    for (int length = 1;; ++length) {
      x += step.dx;
      y += step.dy;
      cost += kDiagonalCost;
      const Node here(cost, move, length);
      if (!IsInside(x, y)) {
        Reach(tile, x, y, here);
        return;
      }
      const Window window = WindowAt(*tile, x, y);
      if (window.rough) {
        Reach(tile, x, y, here);
        return;
      }
      Node& node = tile->nodes[IndexIn(x, y)];
      if (node.cost() <= cost) {
        return;
      }
      node = here;
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

  Node NodeAt(const AStar::Vec2& at) {
    const Cell cell = tiles_.CellAt(at.x, at.y);
    return cell.tile->nodes[cell.index];
  }

  static AStar::Vec2 Behind(const AStar::Vec2& cell, Move arrival, int steps) {
    return {static_cast<std::uint16_t>(cell.x - steps * kDx[arrival]),
            static_cast<std::uint16_t>(cell.y - steps * kDy[arrival])};
  }

  std::vector<AStar::Vec2> ChainToGoal() {
    std::size_t moves = 0;
    AStar::Vec2 cell = params_.goal;
    for (Node node = NodeAt(cell); node.arrival() != kNoMove; node = NodeAt(cell)) {
      moves += static_cast<std::size_t>(node.length());
      cell = Behind(cell, node.arrival(), node.length());
    }
    std::vector<AStar::Vec2> chain(moves + 1, params_.goal);
    while (moves > 0) {
      const Node node = NodeAt(chain[moves]);
      for (int i = 0; i < node.length(); ++i, --moves) {
        chain[moves - 1] = Behind(chain[moves], node.arrival(), 1);
      }
    }
    return chain;
  }

  const AStar::Params& params_;
  const int diagonal_saving_;  // of a diagonal step against two straight ones; 0 without diagonal moves
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
