#ifndef PLATFORM_ASTAR_TILE_H_
#define PLATFORM_ASTAR_TILE_H_

#include <cstdint>

#include "astar/moves.h"

inline namespace controller_base_platform {
namespace grid_search {

constexpr int kTileBits = 5;
constexpr int kTileSide = 1 << kTileBits;
constexpr int kBlockSide = 8;  // cells are asked about in blocks of this side
constexpr int kTileBlocks = kTileSide / kBlockSide;

// How a cell was reached at its lowest cost so far, in one word: cost, then closed, length of the last stretch, its
// move. 51 bits hold every cost: a chain has less than 2^32 cells, and none costs more than 99 + 7 * 65535 to enter.
class Node {
 public:
  Node() = default;  // not initialised: a tile fills its nodes at once
  constexpr Node(std::int64_t cost, Move arrival, int length)
      : word_(static_cast<std::uint64_t>(cost) << kLinkBits | static_cast<std::uint64_t>(length) << kLengthShift |
              arrival) {}

  // Dearer than any reached one.
  static constexpr Node Unreached() { return Node(~std::uint64_t{0}); }

  constexpr std::int64_t cost() const { return static_cast<std::int64_t>(word_ >> kLinkBits); }
  // The cell before the last turn is `length` moves `arrival` back; kNoMove at the start.
  constexpr Move arrival() const { return static_cast<Move>(word_ & kArrivalMask); }
  constexpr int length() const { return static_cast<int>(word_ >> kLengthShift & kLengthMask); }
  constexpr bool closed() const { return (word_ & kClosed) != 0; }  // its moves were made
  constexpr void Close() { word_ |= kClosed; }

 private:
  explicit constexpr Node(std::uint64_t word) : word_(word) {}

  static constexpr unsigned kLinkBits = 13;
  static constexpr std::uint64_t kArrivalMask = 15;
  static constexpr unsigned kLengthShift = 4;
  static constexpr std::uint64_t kLengthMask = 63;
  static constexpr std::uint64_t kClosed = 1U << 10;
  static_assert(kTileSide <= 63, "a stretch ends one cell beyond its tile at the latest");
  static_assert((std::uint64_t{99 + 7 * 65535} << 32) < (~std::uint64_t{0} >> kLinkBits), "every cost fits");

  std::uint64_t word_;
};
static_assert(sizeof(Node) == 8, "memory is counted");

// A line of cells, a row or a column of a tile: bit i + 1 is cell i, so that there is room for a neighbour at either
// end. A cell that was not asked about yet is rough and not passable, one off the map is neither.
struct Line {
  std::uint64_t passable;
  std::uint64_t rough;  // passes for nothing but itself: priced, unknown, or the goal
};
constexpr int kLines = kTileSide + 2;
constexpr std::uint64_t kLineMask = (std::uint64_t{1} << kLines) - 1;

// An 8 x 8 block of bits, cell (x, y) at bit y * 8 + x.
struct BlockBits {
  std::uint64_t passable;
  std::uint64_t rough;
};

// Extra costs of the cells of a tile and of the ring around it.
class Prices {
 public:
  static constexpr int kRow = kTileSide + 2;  // from a cell to the next one south

  std::uint16_t* At(int x, int y) { return of_cell_ + (y + 1) * kRow + x + 1; }

 private:
  std::uint16_t of_cell_[kRow * kRow];
};

// 32 x 32 cells: what is known of them and of the ring of cells around them, and how each was reached.
struct Tile {
  Node nodes[kTileSide * kTileSide];
  Line rows[kLines];     // row y is rows[y + 1]
  Line columns[kLines];  // the same cells, the other way round
  std::uint64_t asked;   // blocks asked about or off the map: block (x, y), -1 to 4, at bit (y + 1) * 8 + x + 1
  Tile* around[kMoves];  // the neighbours that exist
  Prices* prices;        // 0 for a cell that is not passable or was not asked about
  int left;              // the map's column of this tile's column 0
  int top;
};

constexpr int IndexIn(int x, int y) { return y * kTileSide + x; }
constexpr int ColumnOf(int index) { return index % kTileSide; }
constexpr int RowOf(int index) { return index / kTileSide; }

// The 3 x 3 cells around a cell of a tile.
struct Window {
  MoveSet passable;  // its 8 neighbours
  bool rough;        // is any of the 9 cells rough?
};

inline Window WindowAt(const Tile& tile, int x, int y) {
  const Line* const lines = tile.rows + y;
  const std::uint64_t north = lines[0].passable >> x & 7;
  const std::uint64_t middle = lines[1].passable >> x;
  const std::uint64_t south = lines[2].passable >> x & 7;
  const std::uint64_t rough = (lines[0].rough | lines[1].rough | lines[2].rough) >> x & 7;
  return {static_cast<MoveSet>(north | south << 3 | (middle & 1) << 6 | (middle & 4) << 5), rough != 0};
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_TILE_H_
