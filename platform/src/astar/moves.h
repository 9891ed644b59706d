#ifndef PLATFORM_ASTAR_MOVES_H_
#define PLATFORM_ASTAR_MOVES_H_

#include <cstdint>

inline namespace controller_base_platform {
namespace grid_search {

// Costs, all on one whole-number scale.
constexpr int kStraightCost = 70;
constexpr int kDiagonalCost = 99;  // 99 / 70 is the square root of 2 to within 0.0051 %
constexpr int kExtraUnit = 7;      // ten units of extra cost weigh as much as a straight step
constexpr int kMaxExtra = 65535;

// A move to a neighbour is a number below 8; north is the way to row y - 1.
//
//   0 1 2
//   6 . 7     The order is that in which NeighbourhoodAt reads: the three to the north, the three to the south, then west
//   3 4 5     and east.
using Move = unsigned;
constexpr Move kNorthWest = 0;
constexpr Move kNorth = 1;
constexpr Move kNorthEast = 2;
constexpr Move kSouthWest = 3;
constexpr Move kSouth = 4;
constexpr Move kSouthEast = 5;
constexpr Move kWest = 6;
constexpr Move kEast = 7;
constexpr Move kNoMove = 8;  // how the start is reached
constexpr unsigned kMoves = 8;

constexpr int kDx[kMoves] = {-1, 0, 1, -1, 0, 1, -1, 1};
constexpr int kDy[kMoves] = {-1, -1, -1, 1, 1, 1, 0, 0};

// [dy + 1][dx + 1]
constexpr Move kMoveBy[3][3] = {
    {kNorthWest, kNorth, kNorthEast}, {kWest, kNoMove, kEast}, {kSouthWest, kSouth, kSouthEast}};
// The move by (dx, dy), each -1 to 1; kNoMove by (0, 0).
constexpr Move MoveBy(int dx, int dy) { return kMoveBy[dy + 1][dx + 1]; }

constexpr Move Opposite(Move move) { return MoveBy(-kDx[move], -kDy[move]); }

constexpr bool IsDiagonal(int dx, int dy) { return dx != 0 && dy != 0; }
constexpr bool IsDiagonal(Move move) { return IsDiagonal(kDx[move], kDy[move]); }
constexpr int StepCost(int dx, int dy) { return IsDiagonal(dx, dy) ? kDiagonalCost : kStraightCost; }
constexpr int StepCost(Move move) { return StepCost(kDx[move], kDy[move]); }

// The two straight moves that a diagonal one is made of.
constexpr Move HorizontalPart(Move diagonal) { return kDx[diagonal] < 0 ? kWest : kEast; }
constexpr Move VerticalPart(Move diagonal) { return kDy[diagonal] < 0 ? kNorth : kSouth; }

// Bit k stands for move k, or for the neighbour that it leads to.
using MoveSet = std::uint8_t;
constexpr MoveSet SetOf(Move move) { return static_cast<MoveSet>(1U << move); }
constexpr bool Contains(MoveSet set, Move move) { return ((set >> move) & 1) != 0; }
constexpr MoveSet kStraightMoves = SetOf(kNorth) | SetOf(kSouth) | SetOf(kWest) | SetOf(kEast);
constexpr MoveSet kAllMoves = 0xFF;

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_MOVES_H_
