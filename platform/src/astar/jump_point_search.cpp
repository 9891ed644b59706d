#include "astar/jump_point_search.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "astar/bucket_queue.h"
#include "astar/line.h"
#include "astar/moves.h"
#include "astar/successor_table.h"
#include "astar/tile.h"
#include "astar/tile_map.h"
#include "controller_base/platform/block_allocator.h"

inline namespace controller_base_platform {
namespace grid_search {
namespace {

// What one step does, and how the two sides are compared after it, each looked up at once.
struct Step {
  int dx;
  int dy;
  int cost;
  int extra_cost;  // ExtraCosts::Step
};
struct SideSteps {
  int first;  // ExtraCosts::Step
  int second;
  Margins margins;
};
constexpr std::array<Step, kMoves> MakeSteps() {
  std::array<Step, kMoves> steps{};
  for (Move move = 0; move < kMoves; ++move) {
    steps[move] = {kDx[move], kDy[move], StepCost(move), ExtraCosts::Step(move)};
  }
  return steps;
}
constexpr std::array<SideSteps, kMoves + 1> MakeSideSteps() {
  std::array<SideSteps, kMoves + 1> steps{};  // all zero after kNoMove, where the comparison has no effect
  for (Move arrival = 0; arrival < kMoves; ++arrival) {
    const Sides sides = SidesOf(arrival);
    steps[arrival] = {ExtraCosts::Step(sides.first), ExtraCosts::Step(sides.second), MarginsOf(arrival)};
  }
  return steps;
}
constexpr std::array<Step, kMoves> kSteps = MakeSteps();
constexpr std::array<SideSteps, kMoves + 1> kSideSteps = MakeSideSteps();

// A push raises the key by no more than twice the cost of what was walked.
static_assert(2 * (2 * kTileSide * kDiagonalCost) + kExtraUnit * kMaxExtra < BucketQueue::kReach);

class JumpPointSearch {
 public:
  JumpPointSearch(const AStar::Params& params, BlockAllocator* allocator)
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
        return PathToGoal();
      }
      Node& node = cell.tile->nodes[cell.index];
      if (!node.closed()) {
        node.Close();
        Expand(cell.tile, ColumnOf(cell.index), RowOf(cell.index), node);
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
  void Expand(Tile* tile, int x, int y, Node node) {
    Neighbourhood around = NeighbourhoodAt(*tile, x, y);
    if (around.must_stop && tiles_.AskAround(tile, x, y)) {
      around = NeighbourhoodAt(*tile, x, y);
    }
    const Move arrival = node.arrival();
    if (!params_.allow_diagonal) {
      StepOn(tile, x, y, node.cost(), StraightSuccessors(arrival, around.passable));
    } else if (around.must_stop) {
      const SideRanks ranks = RanksAt(tile->extra_costs->At(x, y), arrival);
      StepOn(tile, x, y, node.cost(), kSuccessors[arrival][ranks][around.passable]);
    } else {
      Jump(tile, x, y, node.cost(), kSuccessors[arrival][kEqualSides][around.passable]);
    }
  }

  static SideRanks RanksAt(const std::uint16_t* extra_cost, Move arrival) {
    const SideSteps& sides = kSideSteps[arrival];
    return RanksOf(extra_cost[sides.first] - *extra_cost, extra_cost[sides.second] - *extra_cost, sides.margins);
  }

  // One step each.
  void StepOn(Tile* tile, int x, int y, std::int64_t cost, unsigned moves) {
    const std::uint16_t* const extra_cost = tile->extra_costs->At(x, y);
    for (; moves != 0; moves &= moves - 1) {
      const auto move = static_cast<Move>(__builtin_ctz(moves));
      const Step& step = kSteps[move];
      const std::int64_t next_cost = cost + (step.cost + kExtraUnit * extra_cost[step.extra_cost]);
      Reach(tile, x + step.dx, y + step.dy, Node(next_cost, move, 1));
    }
  }

  // The diagonal jumps come last, so that the queue prefers where they end: where both are as good, it is the diagonal
  // one that has not turned yet.
  void Jump(Tile* tile, int x, int y, std::int64_t cost, MoveSet moves) {
    for (unsigned left = moves & kStraightMoves; left != 0; left &= left - 1) {
      JumpStraight(tile, x, y, cost, static_cast<Move>(__builtin_ctz(left)));
    }
    for (unsigned left = moves & ~unsigned{kStraightMoves}; left != 0; left &= left - 1) {
      JumpDiagonally(tile, x, y, cost, static_cast<Move>(__builtin_ctz(left)));
    }
  }

  void JumpStraight(Tile* tile, int x, int y, std::int64_t cost, Move move) {
    const Step& step = kSteps[move];
    const bool along_row = step.dy == 0;
    const Line* const lines = along_row ? tile->rows + y : tile->columns + x;
    const int from = along_row ? x : y;
    const int steps = step.dx + step.dy > 0 ? JumpLengthUp(lines, from) : JumpLengthDown(lines, from);
    if (steps != 0) {
      const std::int64_t end_cost = cost + std::int64_t{steps} * kStraightCost;
      Reach(tile, x + steps * step.dx, y + steps * step.dy, Node(end_cost, move, steps));
    }
  }

  // The cells on the way are marked as reached and closed, so that another diagonal jump that comes no cheaper ends
  // there. Only the queue is left out: the same cells are reached at the same costs as step by step, and a cell that
  // was passed too early, at too high a cost, is passed again.
  void JumpDiagonally(Tile* tile, int x, int y, std::int64_t cost, Move move) {
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
      const Neighbourhood around = NeighbourhoodAt(*tile, x, y);
      if (around.must_stop) {
        Reach(tile, x, y, here);
        return;
      }
      Node& node = tile->nodes[IndexIn(x, y)];
      if (node.cost() <= cost) {
        return;
      }
      node = here;
      node.Close();
      const MoveSet moves = kSuccessors[move][kEqualSides][around.passable];
      if (Contains(moves, HorizontalPart(move))) {
        JumpStraight(tile, x, y, cost, HorizontalPart(move));
      }
      if (Contains(moves, VerticalPart(move))) {
        JumpStraight(tile, x, y, cost, VerticalPart(move));
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

  std::vector<AStar::Vec2> PathToGoal() {
    std::size_t moves = 0;
    AStar::Vec2 cell = params_.goal;
    for (Node node = NodeAt(cell); node.arrival() != kNoMove; node = NodeAt(cell)) {
      moves += static_cast<std::size_t>(node.length());
      cell = Behind(cell, node.arrival(), node.length());
    }
    std::vector<AStar::Vec2> path(moves + 1, params_.goal);
    while (moves > 0) {
      const Node node = NodeAt(path[moves]);
      for (int i = 0; i < node.length(); ++i, --moves) {
        path[moves - 1] = Behind(path[moves], node.arrival(), 1);
      }
    }
    return path;
  }

  const AStar::Params& params_;
  const int diagonal_saving_;  // of a diagonal step against two straight ones; 0 without diagonal moves
  TileMap tiles_;
  BucketQueue open_;
};

}  // namespace

std::vector<AStar::Vec2> FindCheapestPath(const AStar::Params& params, BlockAllocator* allocator) {
  return JumpPointSearch(params, allocator).Run();
}

}  // namespace grid_search
}  // namespace controller_base_platform
