#ifndef PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
#define PLATFORM_ASTAR_SUCCESSOR_TABLE_H_

#include <array>

#include "astar/moves.h"

// Which moves from a cell n are worth making, given the move that led there, which of its neighbours are passable, and
// how the extra costs of its two sides compare with its own.
//
//   . s .     s n
//   p n .     p s     p -> n is the move that led here, s are the sides: the cells beside n, and for a diagonal move
//   . s .             the two that it passes between.
//
// A legal move n -> c is left out when p reaches c without n
//   - by a single move, or more cheaply through a side, or
//   - at the same cost through a side, going diagonally first where p -> n is straight.
// Nothing is lost. Where p reaches c more cheaply, no cheapest path has p, n, c. So let n be a cell before c on a
// cheapest path, reached at its lowest cost from p, and let n -> c be left out for a tie with p -> s -> c. Then n -> c
// is diagonal and s -> c straight, s comes before c on another cheapest path, and gets its lowest cost in its turn (by
// induction over the costs), whatever leads there. The move s -> c is kept: no other way to c is cheaper, and only
// diagonal moves are left out for a tie. So c gets its lowest cost from s. Other ties do not exist: extra costs are
// multiples of 7, and ways of two moves with one, two or no diagonal among them differ by 29 or 58.
inline namespace controller_base_platform {
namespace grid_search {

// The two sides, as moves from n.
struct Sides {
  Move first;
  Move second;
};
constexpr Sides SidesOf(Move arrival) {
  if (IsDiagonal(arrival)) {
    return {Opposite(HorizontalPart(arrival)), Opposite(VerticalPart(arrival))};
  }
  return kDx[arrival] != 0 ? Sides{kNorth, kSouth} : Sides{kWest, kEast};
}

// By how many units a side's extra cost may exceed that of n (has to fall short of it, where negative) for the way
// through the side to be the better one. Where a straight and a diagonal move lead from p to c, they do so in either
// order, and the way that goes diagonally first wins a tie. Otherwise it is two straight moves against two diagonal
// ones.
struct Margins {
  int wide;
  int narrow;
};
constexpr Margins kStraightMargins{0, -9};  // one of each, the side wins a tie; two straight moves through n
constexpr Margins kDiagonalMargins{8, -1};  // two diagonal moves through n; one of each, n wins a tie

// Whether `excess` is the most that keeps the way through a side cheaper, when its moves cost less by `difference`.
constexpr bool IsLargestBelow(int difference, int excess) {
  return kExtraUnit * excess < difference && kExtraUnit * (excess + 1) >= difference;
}
static_assert(IsLargestBelow(2 * kStraightCost - 2 * kDiagonalCost, kStraightMargins.narrow));
static_assert(IsLargestBelow(2 * kDiagonalCost - 2 * kStraightCost, kDiagonalMargins.wide));
static_assert(IsLargestBelow(0, kDiagonalMargins.narrow));

constexpr Margins MarginsOf(Move arrival) { return IsDiagonal(arrival) ? kDiagonalMargins : kStraightMargins; }

// How both sides compare with n: for each, how many of its margins it keeps.
using SideRanks = unsigned;
constexpr SideRanks kSideRanks = 9;
constexpr SideRanks RanksOf(int first_excess, int second_excess, const Margins& margins) {
  const auto rank = [&margins](int excess) {
    return static_cast<unsigned>(excess <= margins.wide) + static_cast<unsigned>(excess <= margins.narrow);
  };
  return 3 * rank(first_excess) + rank(second_excess);
}
constexpr SideRanks kEqualSides = 4;
static_assert(RanksOf(0, 0, kStraightMargins) == kEqualSides && RanksOf(0, 0, kDiagonalMargins) == kEqualSides);

// The cells within one step of a cell, which is (0, 0) and passable; the others as `neighbours` says.
class Surroundings {
 public:
  explicit constexpr Surroundings(MoveSet neighbours) : neighbours_(neighbours) {}

  // Whether the move by (dx, dy) from (x, y) leads to a neighbour, stays within these cells, and is legal.
  constexpr bool Allows(int x, int y, int dx, int dy) const {
    const bool to_neighbour = (dx != 0 || dy != 0) && IsStep(dx) && IsStep(dy) && IsStep(x + dx) && IsStep(y + dy);
    if (!to_neighbour || !IsPassable(x, y) || !IsPassable(x + dx, y + dy)) {
      return false;
    }
    return !IsDiagonal(dx, dy) || (IsPassable(x + dx, y) && IsPassable(x, y + dy));
  }

 private:
  static constexpr bool IsStep(int d) { return -1 <= d && d <= 1; }

  constexpr bool IsPassable(int x, int y) const { return (x == 0 && y == 0) || Contains(neighbours_, MoveBy(x, y)); }

  MoveSet neighbours_;
};

// The moves from n whose end is one legal move from cell (x, y), too.
constexpr MoveSet MovesAlsoFrom(int x, int y, const Surroundings& cells) {
  unsigned moves = 0;
  for (Move next = 0; next < kMoves; ++next) {
    if (cells.Allows(x, y, kDx[next] - x, kDy[next] - y)) {
      moves |= SetOf(next);
    }
  }
  return static_cast<MoveSet>(moves);
}

// The moves from n whose end p reaches at no higher cost through `side` than through n, when the side's extra cost
// exceeds that of n by `excess`.
constexpr MoveSet MovesBetterThrough(Move side, int excess, Move arrival, const Surroundings& cells) {
  const int first_dx = kDx[side] + kDx[arrival];
  const int first_dy = kDy[side] + kDy[arrival];
  if (!cells.Allows(-kDx[arrival], -kDy[arrival], first_dx, first_dy)) {
    return 0;
  }
  const MoveSet shared = MovesAlsoFrom(kDx[side], kDy[side], cells);
  unsigned better = 0;
  for (Move next = 0; next < kMoves; ++next) {
    const int through_side =
        StepCost(first_dx, first_dy) + kExtraUnit * excess + StepCost(kDx[next] - kDx[side], kDy[next] - kDy[side]);
    const int through_n = StepCost(arrival) + StepCost(next);
    if (Contains(shared, next) && through_side <= through_n) {
      better |= SetOf(next);
    }
  }
  return static_cast<MoveSet>(better);
}

// [how the sides compare][passable neighbours] -> the moves worth making.
using MovesAfter = std::array<std::array<MoveSet, 256>, kSideRanks>;

constexpr MovesAfter MakeMovesAfter(Move arrival) {
  MovesAfter moves{};
  for (unsigned neighbours = 0; neighbours < 256; ++neighbours) {
    const Surroundings cells(static_cast<MoveSet>(neighbours));
    unsigned first[3] = {};  // the moves that a side of each rank makes unnecessary
    unsigned second[3] = {};
    unsigned worth = MovesAlsoFrom(0, 0, cells);
    if (arrival != kNoMove) {
      worth &= ~(unsigned{SetOf(Opposite(arrival))} | MovesAlsoFrom(-kDx[arrival], -kDy[arrival], cells));
      const Margins margins = MarginsOf(arrival);
      const Sides sides = SidesOf(arrival);
      first[1] = MovesBetterThrough(sides.first, margins.wide, arrival, cells);
      first[2] = MovesBetterThrough(sides.first, margins.narrow, arrival, cells);
      second[1] = MovesBetterThrough(sides.second, margins.wide, arrival, cells);
      second[2] = MovesBetterThrough(sides.second, margins.narrow, arrival, cells);
    }
    for (SideRanks ranks = 0; ranks < kSideRanks; ++ranks) {
      moves[ranks][neighbours] = static_cast<MoveSet>(worth & ~(first[ranks / 3] | second[ranks % 3]));
    }
  }
  return moves;
}

// One constant each, because compilers limit the work on a single one.
template <Move kArrival>
constexpr MovesAfter kMovesAfter = MakeMovesAfter(kArrival);

// By the move that led to n, or kNoMove.
constexpr std::array<MovesAfter, kMoves + 1> kSuccessors = {kMovesAfter<0>, kMovesAfter<1>, kMovesAfter<2>,
                                                            kMovesAfter<3>, kMovesAfter<4>, kMovesAfter<5>,
                                                            kMovesAfter<6>, kMovesAfter<7>, kMovesAfter<kNoMove>};

// On open ground without extra costs a straight move goes on straight, a diagonal one on and to both sides of its
// direction.
static_assert(kSuccessors[kEast][kEqualSides][kAllMoves] == SetOf(kEast));
static_assert(kSuccessors[kNorthEast][kEqualSides][kAllMoves] == (SetOf(kNorth) | SetOf(kNorthEast) | SetOf(kEast)));
static_assert(kSuccessors[kNoMove][kEqualSides][kAllMoves] == kAllMoves);

// Without diagonal moves only the way back is left out.
constexpr MoveSet StraightSuccessors(Move arrival, MoveSet neighbours) {
  const unsigned back = arrival == kNoMove ? 0U : SetOf(Opposite(arrival));
  return static_cast<MoveSet>(neighbours & kStraightMoves & ~back);
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
