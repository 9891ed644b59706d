#ifndef PLATFORM_ASTAR_LINE_H_
#define PLATFORM_ASTAR_LINE_H_

#include <cstdint>

#include "astar/moves.h"

inline namespace controller_base_platform {
namespace grid_search {

constexpr int kTileBits = 5;
constexpr int kTileSide = 1 << kTileBits;

// A line of cells, a row or a column of a tile: bit i + 1 is cell i, so that there is room for a neighbour at either
// end.
struct Line {
  std::uint64_t passable;
  // Plain moves must stop here: the cell has a price, is the goal, or was not asked about yet (nor is it passable
  // then).
  std::uint64_t rough;
};
constexpr int kLines = kTileSide + 2;
constexpr std::uint64_t kLineMask = (std::uint64_t{1} << kLines) - 1;

// A straight move over plain ground goes on as long as going on is all that kSuccessors has for it. It stops at a cell
//   - that ends the line: it belongs to the next tile;
//   - that is rough or has a rough neighbour;
//   - beside which a wall ends, so that there is something to turn to:   # .
//                                                                        > x
// Both functions take the three lines around that of the move, which starts at cell `from`, and return how many steps
// it makes; 0 when it ends at a wall and leads to nothing.
constexpr std::uint64_t kLineEnds = std::uint64_t{1} << (kLines - 1) | 1;

inline std::uint64_t UnevenCells(const Line* lines) {
  const std::uint64_t rough = lines[0].rough | lines[1].rough | lines[2].rough;
  return rough | rough << 1 | rough >> 1;
}

inline int StepsUp(const Line* lines, int from) {
  const std::uint64_t before = lines[0].passable;
  const std::uint64_t after = lines[2].passable;
  const std::uint64_t wall_ends = (before & ~(before << 1)) | (after & ~(after << 1));
  const std::uint64_t stops = wall_ends | UnevenCells(lines) | ~lines[1].passable | kLineEnds;
  const int steps = 1 + __builtin_ctzll(stops >> (from + 2));
  return (lines[1].passable >> (from + 1 + steps) & 1) != 0 ? steps : 0;
}

inline int StepsDown(const Line* lines, int from) {
  const std::uint64_t before = lines[0].passable;
  const std::uint64_t after = lines[2].passable;
  const std::uint64_t wall_ends = (before & ~(before >> 1)) | (after & ~(after >> 1));
  const std::uint64_t stops = wall_ends | UnevenCells(lines) | ~lines[1].passable | kLineEnds;
  const int steps = 1 + __builtin_clzll(stops << (63 - from));
  return (lines[1].passable >> (from + 1 - steps) & 1) != 0 ? steps : 0;
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_LINE_H_
