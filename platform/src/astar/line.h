#ifndef PLATFORM_ASTAR_LINE_H_
#define PLATFORM_ASTAR_LINE_H_

#include <cstdint>

#include "astar/moves.h"

inline namespace controller_base_platform {
namespace grid_search {

constexpr int kTileBits = 5;
constexpr int kTileSide = 1 << kTileBits;

// A line of cells, a row or a column of a tile, as bits: bit i + 1 is cell i, the bits before the first and after the
// last cell are the neighbours in the next tiles.
struct Line {
  std::uint64_t passable;
  // No jump goes past such a cell or one beside it: it has an extra cost, is the goal, or was not asked about yet (nor
  // is it passable then).
  std::uint64_t must_stop;
};
constexpr int kLines = kTileSide + 2;
constexpr std::uint64_t kLineMask = (std::uint64_t{1} << kLines) - 1;
constexpr std::uint64_t kLineEnds = std::uint64_t{1} << (kLines - 1) | 1;

// A straight jump repeats its move as long as kSuccessors has no other. It stops at a cell
//   - that ends the line: it belongs to the next tile;
//   - that must stop it, or has a neighbour that must;
//   - beside which a wall ends, so that it may turn:   # .
//                                                      > x
//
// The cells of the middle one of three lines that stop a jump wherever walls are, as bits.
inline std::uint64_t StopsWithoutWalls(const Line* lines) {
  const std::uint64_t must_stop = lines[0].must_stop | lines[1].must_stop | lines[2].must_stop;
  return must_stop | must_stop << 1 | must_stop >> 1 | kLineEnds;
}

// How many steps a straight jump makes from cell `from` of the middle one of three lines; 0 when it ends at a wall and
// leads to nothing. Up is towards higher cell numbers.
inline int JumpLengthUp(const Line* lines, int from) {
  const std::uint64_t before = lines[0].passable;
  const std::uint64_t after = lines[2].passable;
  const std::uint64_t wall_ends = (before & ~(before << 1)) | (after & ~(after << 1));
  const std::uint64_t stops = wall_ends | StopsWithoutWalls(lines) | ~lines[1].passable;
  const int steps = 1 + __builtin_ctzll(stops >> (from + 2));
  return (lines[1].passable >> (from + 1 + steps) & 1) != 0 ? steps : 0;
}

inline int JumpLengthDown(const Line* lines, int from) {
  const std::uint64_t before = lines[0].passable;
  const std::uint64_t after = lines[2].passable;
  const std::uint64_t wall_ends = (before & ~(before >> 1)) | (after & ~(after >> 1));
  const std::uint64_t stops = wall_ends | StopsWithoutWalls(lines) | ~lines[1].passable;
  const int steps = 1 + __builtin_clzll(stops << (63 - from));
  return (lines[1].passable >> (from + 1 - steps) & 1) != 0 ? steps : 0;
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_LINE_H_
