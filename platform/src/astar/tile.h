#ifndef PLATFORM_ASTAR_TILE_H_
#define PLATFORM_ASTAR_TILE_H_

#include <cstddef>
#include <cstdint>

#include "astar/line.h"
#include "astar/moves.h"

inline namespace controller_base_platform {
namespace grid_search {

// How a cell was reached at its lowest cost so far, in one word: cost, whether closed, length and direction of the
// jump.
class Node {
 public:
  Node() = default;  // not initialised: a tile fills its nodes at once
  constexpr Node(std::int64_t cost, Move arrival, int length)
      : word_(static_cast<std::uint64_t>(cost) << kCostShift | static_cast<std::uint64_t>(length) << kLengthShift |
              arrival) {}

  // Costs more than any reached node.
  static constexpr Node Unreached() { return Node(~std::uint64_t{0}); }

  constexpr std::int64_t cost() const { return static_cast<std::int64_t>(word_ >> kCostShift); }
  // The jump that ends here made the move `arrival` `length` times; kNoMove at the start.
  constexpr Move arrival() const { return static_cast<Move>(word_ & kArrivalMask); }
  constexpr int length() const { return static_cast<int>(word_ >> kLengthShift & kLengthMask); }
  // The moves from here were made.
  constexpr bool closed() const { return (word_ & kClosed) != 0; }
  constexpr void Close() { word_ |= kClosed; }

 private:
  explicit constexpr Node(std::uint64_t word) : word_(word) {}

  static constexpr std::uint64_t kArrivalMask = 15;
  static constexpr int kLengthShift = 4;
  static constexpr std::uint64_t kLengthMask = 63;
  static constexpr std::uint64_t kClosed = 1U << 10;
  static constexpr int kCostShift = 13;
  static_assert(kTileSide <= 63, "a jump ends one cell beyond its tile at the latest");
  // A path has less than 2^32 cells.
  static_assert((std::uint64_t{kDiagonalCost + kExtraUnit * kMaxExtra} << 32) < ~std::uint64_t{0} >> kCostShift,
                "every cost fits and is below that of an unreached node");

  std::uint64_t word_;
};
static_assert(sizeof(Node) == 8);

// The extra costs of the cells of a tile and of the ring around it.
class ExtraCosts {
 public:
  // From the place of a cell's extra cost to that of the cell that `move` leads to.
  static constexpr int Step(Move move) { return kDy[move] * kRow + kDx[move]; }

  // The extra cost of cell (x, y), each -1 to kTileSide.
  std::uint16_t* At(int x, int y) { return of_cell_ + static_cast<std::ptrdiff_t>((y + 1) * kRow + x + 1); }

 private:
  static constexpr int kRow = kTileSide + 2;

  std::uint16_t of_cell_[kRow * kRow];
};

// 32 x 32 cells: what is known of them and of the ring of cells around them, and how each was reached.
struct Tile {
  Node nodes[kTileSide * kTileSide];
  Line rows[kLines];        // row y is rows[y + 1]; bits of cells off the map are 0
  Line columns[kLines];     // the same cells, the other way round
  std::uint64_t asked;      // a BlockSet: blocks asked about or off the map
  Tile* around[kMoves];     // the neighbours that exist, else null
  ExtraCosts* extra_costs;  // 0 for a cell that is not passable or was not asked about
  int left;                 // the map's column of this tile's column 0
  int top;
};

// A cell of a tile, and its place in the tile's nodes.
struct Cell {
  Tile* tile;
  std::uint16_t index;
};
constexpr int IndexIn(int x, int y) { return y * kTileSide + x; }
constexpr int ColumnOf(int index) { return index % kTileSide; }
constexpr int RowOf(int index) { return index / kTileSide; }

// A cell and its 8 neighbours.
struct Neighbourhood {
  MoveSet passable;  // of the neighbours
  bool must_stop;    // whether one of the 9 cells stops jumps
};

inline Neighbourhood NeighbourhoodAt(const Tile& tile, int x, int y) {
  const Line* const lines = tile.rows + y;
  const std::uint64_t north = lines[0].passable >> x & 7;
  const std::uint64_t middle = lines[1].passable >> x;
  const std::uint64_t south = lines[2].passable >> x & 7;
  const std::uint64_t must_stop = (lines[0].must_stop | lines[1].must_stop | lines[2].must_stop) >> x & 7;
  return {static_cast<MoveSet>(north | south << 3 | (middle & 1) << 6 | (middle & 4) << 5), must_stop != 0};
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_TILE_H_
