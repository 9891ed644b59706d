#ifndef PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
#define PLATFORM_ASTAR_SUCCESSOR_TABLE_H_

#include <array>
#include <cstddef>

#include "astar/moves.h"

inline namespace controller_base_platform {
namespace grid_search {

// Which moves from a cell n are worth making, given the move that led there, which of its neighbours are passable, and
// how the extra costs of its two sides compare with its own.
//
//   . s .     s n     p -> n is the move that led here, s are the sides: the cells beside n, and for a diagonal move
//   the p n .     p s     two that it passes between. . s .
//
// A legal move n -> c is left out when p reaches c without n
//   - by a single move, or more cheaply through a side, or
//   - at the same cost through a side, going diagonally first where p -> n is straight.
// Nothing is lost. A way that is cheaper says that no cheapest chain has p, n, c. So let n be a cell before c on a
// cheapest chain, reached at its lowest cost from p, and let n -> c be left out for a tie with p -> s -> c. Then n -> c
// is diagonal and s -> c straight, s comes before c on another cheapest chain, and gets its lowest cost in its turn (by
// induction over the costs), whatever leads there. The move s -> c is not left out: not as dearer, and not for a tie,
// since it is straight. So c gets its lowest cost from s. Other ties do not exist: extra costs are multiples of 7, and
// two moves with one, two or no diagonal among them differ by 29 or 58.

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

// Extra costs matter up to two margins, in units of extra cost: by how much a side's may exceed n's (or must fall short
// of it, where negative) for the way through the side to be the better one.
struct Margins {
  int wide;    // straight: to a cell diagonally ahead. Diagonal: to one beside p's
  int narrow;  // straight: to the cell ahead. Diagonal: to a cell that the side is beside of
};
constexpr Margins MarginsOf(Move arrival) { return IsDiagonal(arrival) ? Margins{8, -1} : Margins{0, -9}; }

// How both sides compare with n: for each one the number of margins that it keeps.
using SideRanks = unsigned;
constexpr SideRanks kSideRanks = 9;
constexpr SideRanks RanksOf(int first_excess, int second_excess, const Margins& margins) {
  const auto rank = [&margins](int excess) {
    return static_cast<unsigned>(excess <= margins.wide) + static_cast<unsigned>(excess <= margins.narrow);
  };
  return 3 * rank(first_excess) + rank(second_excess);
}
constexpr SideRanks kEqualSides = 4;
static_assert(RanksOf(0, 0, MarginsOf(kEast)) == kEqualSides && RanksOf(0, 0, MarginsOf(kNorthEast)) == kEqualSides);

// The cells within one step of a cell, which is (0, 0) and passable; the others as `neighbours` says.
class Surroundings {
 public:
  explicit constexpr Surroundings(MoveSet neighbours) : neighbours_(neighbours) {}

  // Is the move by (dx, dy) from (x, y) one to a neighbour, within these cells, and allowed?
  constexpr bool Allows(int x, int y, int dx, int dy) const {
    const bool to_neighbour = (dx != 0 || dy != 0) && IsStep(dx) && IsStep(dy) && IsStep(x + dx) && IsStep(y + dy);
    if (!to_neighbour || !IsPassable(x, y) || !IsPassable(x + dx, y + dy)) {
      return false;
    }
    return dx == 0 || dy == 0 || (IsPassable(x + dx, y) && IsPassable(x, y + dy));
  }

 private:
  static constexpr bool IsStep(int d) { return -1 <= d && d <= 1; }

  constexpr bool IsPassable(int x, int y) const { return (x == 0 && y == 0) || Contains(neighbours_, MoveBy(x, y)); }

  MoveSet neighbours_;
};

constexpr MoveSet LegalMoves(const Surroundings& cells) {
  unsigned legal = 0;
  for (Move next = 0; next < kMoves; ++next) {
    if (cells.Allows(0, 0, kDx[next], kDy[next])) {
      legal |= SetOf(next);
    }
  }
  return static_cast<MoveSet>(legal);
}

constexpr int OffsetCost(int dx, int dy) { return dx != 0 && dy != 0 ? kDiagonalCost : kStraightCost; }

// The moves that p need not leave to n, because a single legal move takes p there as well; the way back among them.
constexpr MoveSet NearerToP(Move arrival, const Surroundings& cells) {
  const int px = -kDx[arrival];
  const int py = -kDy[arrival];
  unsigned nearer = SetOf(Opposite(arrival));
  for (Move next = 0; next < kMoves; ++next) {
    if (cells.Allows(px, py, kDx[next] - px, kDy[next] - py)) {
      nearer |= SetOf(next);
    }
  }
  return static_cast<MoveSet>(nearer);
}

// The moves whose end p reaches through `side` more cheaply than through n, or as well and diagonally first, when the
// side's extra cost exceeds that of n by `excess`.
constexpr MoveSet BetterThrough(Move side, int excess, Move arrival, const Surroundings& cells) {
  const int first_dx = kDx[side] + kDx[arrival];
  const int first_dy = kDy[side] + kDy[arrival];
  if (!cells.Allows(-kDx[arrival], -kDy[arrival], first_dx, first_dy)) {
    return 0;
  }
  const bool diagonal_first = !IsDiagonal(arrival) && first_dx != 0 && first_dy != 0;
  unsigned better = 0;
  for (Move next = 0; next < kMoves; ++next) {
    const int dx = kDx[next] - kDx[side];
    const int dy = kDy[next] - kDy[side];
    if (cells.Allows(kDx[side], kDy[side], dx, dy)) {
      const int through_side = OffsetCost(first_dx, first_dy) + OffsetCost(dx, dy) + kExtraUnit * excess;
      const int through_n = StepCost(arrival) + StepCost(next);
      if (through_side < through_n || (through_side == through_n && diagonal_first)) {
        better |= SetOf(next);
      }
    }
  }
  return static_cast<MoveSet>(better);
}

// [the move that led here, or kNoMove][how the sides compare][passable neighbours] -> the moves worth making.
using SuccessorTable = std::array<std::array<std::array<MoveSet, 256>, kSideRanks>, kMoves + 1>;

constexpr SuccessorTable EightNeighbours() {
  SuccessorTable table{};
  for (unsigned neighbours = 0; neighbours < 256; ++neighbours) {
    const Surroundings cells(static_cast<MoveSet>(neighbours));
    const unsigned legal = LegalMoves(cells);
    for (SideRanks ranks = 0; ranks < kSideRanks; ++ranks) {
      table[kNoMove][ranks][neighbours] = static_cast<MoveSet>(legal);
    }
    for (Move arrival = 0; arrival < kMoves; ++arrival) {
      const Sides sides = SidesOf(arrival);
      const Margins margins = MarginsOf(arrival);
      const unsigned worth = legal & ~unsigned{NearerToP(arrival, cells)};
      const MoveSet first[3] = {0, BetterThrough(sides.first, margins.wide, arrival, cells),
                                BetterThrough(sides.first, margins.narrow, arrival, cells)};
      const MoveSet second[3] = {0, BetterThrough(sides.second, margins.wide, arrival, cells),
                                 BetterThrough(sides.second, margins.narrow, arrival, cells)};
      for (SideRanks ranks = 0; ranks < kSideRanks; ++ranks) {
        const unsigned better = first[ranks / 3] | second[ranks % 3];
        table[arrival][ranks][neighbours] = static_cast<MoveSet>(worth & ~better);
      }
    }
  }
  return table;
}

// Without diagonal moves only the way back is left out.
constexpr MoveSet StraightSuccessorsOf(Move arrival, MoveSet neighbours) {
  const unsigned back = arrival == kNoMove ? 0U : SetOf(Opposite(arrival));
  return static_cast<MoveSet>(neighbours & ~(kDiagonals | back));
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_SUCCESSOR_TABLE_H_
