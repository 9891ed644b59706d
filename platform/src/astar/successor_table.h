#ifndef PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
#define PLATFORM_ASTAR_SUCCESSOR_TABLE_H_

#include <array>
#include <cstddef>

#include "astar/moves.h"

// Which moves from a cell are worth making, given the move that led there and which of its neighbours are passable.
//
// Let p be the cell before n, and n -> c a legal move. It is left out when p reaches c another way that is
//   - cheaper, or
//   - as cheap, and goes diagonally first where p -> n is straight.
// Nothing is lost. A way that is cheaper says that p, n, c lies on no cheapest chain. So let n be a cell that comes
// before c on a cheapest chain, reached at its lowest cost through p, and let n -> c be left out by a tie: p -> n is
// straight, n -> c diagonal, and p -> a -> c costs the same with p -> a diagonal and a -> c straight. Then a comes
// before c on a cheapest chain too, and is reached at its lowest cost in its turn (induction over the costs). Whatever
// leads to a, the straight move a -> c is not left out of a tie, because a tie takes a diagonal one; nor as dearer. So
// c gets its lowest cost.
inline namespace controller_base_platform {
namespace grid_search {

// What is known of the extra costs of n and its neighbours.
enum class Prices {
  kAny,   // nothing: p reaches c more cheaply for certain only by a single legal move
  kZero,  // there are none: every way of two moves from p round n is compared as well
};

// [the move that led here, or kNoMove][passable neighbours] -> moves to make.
using SuccessorTable = std::array<std::array<MoveSet, 256>, kMoves + 1>;

// The cells within one step of a cell, which is (0, 0) and passable; the others as `neighbours` says.
class Surroundings {
 public:
  explicit constexpr Surroundings(MoveSet neighbours) : neighbours_(neighbours) {}

  // Is the move by (dx, dy) from (x, y) one to a neighbour, within these cells, and allowed?
  constexpr bool Allows(int x, int y, int dx, int dy) const {
    if ((dx == 0 && dy == 0) || !IsStep(dx) || !IsStep(dy) || !IsPassable(x, y) || !IsPassable(x + dx, y + dy)) {
      return false;
    }
    return dx == 0 || dy == 0 || (IsPassable(x + dx, y) && IsPassable(x, y + dy));
  }

 private:
  static constexpr bool IsStep(int d) { return -1 <= d && d <= 1; }

  constexpr bool IsPassable(int x, int y) const {
    if (x == 0 && y == 0) {
      return true;
    }
    for (Move k = 0; k < kMoves; ++k) {
      if (kDx[k] == x && kDy[k] == y) {
        return Contains(neighbours_, k);
      }
    }
    return false;
  }

  MoveSet neighbours_;
};

constexpr unsigned OffsetCost(int dx, int dy) { return dx != 0 && dy != 0 ? kDiagonalCost : kStraightCost; }

// Does the cell before `arrival` reach the end of `next` another way that makes `next` needless?
constexpr bool IsNeedless(Move arrival, Move next, const Surroundings& cells, Prices prices) {
  const int px = -kDx[arrival];
  const int py = -kDy[arrival];
  if (next == Opposite(arrival) || cells.Allows(px, py, kDx[next] - px, kDy[next] - py)) {
    return true;
  }
  if (prices == Prices::kAny) {
    return false;
  }
  const unsigned cost = StepCost(arrival) + StepCost(next);
  for (Move first = 0; first < kMoves; ++first) {
    const int ax = px + kDx[first];
    const int ay = py + kDy[first];
    if ((ax == 0 && ay == 0) || !cells.Allows(px, py, kDx[first], kDy[first]) ||
        !cells.Allows(ax, ay, kDx[next] - ax, kDy[next] - ay)) {
      continue;
    }
    const unsigned other_cost = StepCost(first) + OffsetCost(kDx[next] - ax, kDy[next] - ay);
    if (other_cost < cost || (other_cost == cost && IsDiagonal(first) && !IsDiagonal(arrival))) {
      return true;
    }
  }
  return false;
}

constexpr MoveSet SuccessorsOf(Move arrival, MoveSet neighbours, Prices prices) {
  const Surroundings cells(neighbours);
  unsigned successors = 0;
  for (Move next = 0; next < kMoves; ++next) {
    if (cells.Allows(0, 0, kDx[next], kDy[next]) && (arrival == kNoMove || !IsNeedless(arrival, next, cells, prices))) {
      successors |= SetOf(next);
    }
  }
  return static_cast<MoveSet>(successors);
}

constexpr SuccessorTable EightNeighbours(Prices prices) {
  SuccessorTable table{};
  for (Move arrival = 0; arrival <= kNoMove; ++arrival) {
    for (unsigned neighbours = 0; neighbours < 256; ++neighbours) {
      table[arrival][neighbours] = SuccessorsOf(arrival, static_cast<MoveSet>(neighbours), prices);
    }
  }
  return table;
}

// Without diagonal moves nothing is left out but the way back.
constexpr SuccessorTable FourNeighbours() {
  SuccessorTable table{};
  for (Move arrival = 0; arrival <= kNoMove; ++arrival) {
    for (unsigned neighbours = 0; neighbours < 256; ++neighbours) {
      unsigned successors = neighbours & ~unsigned{kDiagonals};
      if (arrival != kNoMove) {
        successors &= ~unsigned{SetOf(Opposite(arrival))};
      }
      table[arrival][neighbours] = static_cast<MoveSet>(successors);
    }
  }
  return table;
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
