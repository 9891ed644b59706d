#ifndef PLATFORM_ASTAR_TILE_MAP_H_
#define PLATFORM_ASTAR_TILE_MAP_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "astar/astar.h"
#include "astar/block_allocator.h"
#include "astar/line.h"
#include "astar/moves.h"
#include "astar/tile.h"

inline namespace controller_base_platform {
namespace grid_search {

// Cells are asked about in blocks of 8 x 8: the calls follow each other closely, and moves over plain ground are long.
constexpr int kBlockSide = 8;
constexpr int kTileBlocks = kTileSide / kBlockSide;

// One bit for each cell of a block, that of cell (x, y) is y * 8 + x.
struct BlockBits {
  std::uint64_t passable;
  std::uint64_t rough;
};

// One bit for each block of a tile and of the ring of blocks around it: that of block (x, y), -1 to 4, is
// (y + 1) * 8 + x + 1.
using BlockSet = std::uint64_t;
constexpr BlockSet kBlockRow = (BlockSet{1} << (kTileBlocks + 2)) - 1;
constexpr BlockSet SetOfBlock(int x, int y) { return BlockSet{1} << ((y + 1) * 8 + x + 1); }

// The blocks that hold cell (x, y) and its neighbours are columns[x] * rows[y]: the factor repeats the former in every
// row that it has a bit for.
struct BlocksAround {
  BlockSet columns[kTileSide];
  BlockSet rows[kTileSide];
};
constexpr BlocksAround MakeBlocksAround() {
  BlocksAround blocks{};
  for (int i = 0; i < kTileSide; ++i) {
    const int first = (i - 1 + kBlockSide) / kBlockSide;
    const int last = (i + 1 + kBlockSide) / kBlockSide;
    blocks.columns[i] = BlockSet{1} << first | BlockSet{1} << last;
    blocks.rows[i] = BlockSet{1} << (8 * first) | BlockSet{1} << (8 * last);
  }
  return blocks;
}
constexpr BlocksAround kBlocksAround = MakeBlocksAround();

// The tiles that a search has touched, and the only place that asks the callbacks of its request: block by block, each
// once. A tile is found through a hash table, so nothing grows with the map.
class TileMap {
 public:
  // `params` and `allocator` must outlive the map.
  TileMap(const AStar::Params& params, BlockAllocator* allocator) : params_(params), allocator_(allocator) {
    MakeTable(kFirstSlots);
    no_prices_ = NewPrices();
  }

  // A cell of the map; its tile is made when there is none yet.
  Cell CellAt(int x, int y) {
    Tile* const tile = TileAt(x, y);
    return {tile, static_cast<std::uint16_t>(IndexIn(x - tile->left, y - tile->top))};
  }

  // Asks about `cell` unless it is known already.
  bool IsPassable(const Cell& cell) {
    const int x = ColumnOf(cell.index);
    const int y = RowOf(cell.index);
    AskBlocks(cell.tile, SetOfBlock(x / kBlockSide, y / kBlockSide) & ~cell.tile->asked);
    return (cell.tile->rows[y + 1].passable >> (x + 1) & 1) != 0;
  }

  // Asks what is not known yet about cell (x, y) of `tile` and its neighbours, whose tiles exist from then on. Was
  // there any?
  bool AskAround(Tile* tile, int x, int y) {
    const BlockSet missing = kBlocksAround.columns[x] * kBlocksAround.rows[y] & ~tile->asked;
    if (missing != 0) {
      AskBlocks(tile, missing);
    }
    return missing != 0;
  }

 private:
  struct Slot {
    Tile* tile;
  };
  static constexpr std::size_t kFirstSlots = 64;

  void MakeTable(std::size_t slots) {
    slots_ = allocator_->AllocateArray<Slot>(slots);
    std::uninitialized_fill_n(slots_, slots, Slot{nullptr});
    slot_mask_ = slots - 1;
  }

  // Where that tile is, or should be put.
  Slot* SlotOf(int left, int top) const {
    // Fibonacci hashing: a multiple of the golden ratio spreads neighbouring keys.
    const std::uint64_t key = static_cast<std::uint64_t>(top) << 32 | static_cast<std::uint64_t>(left);
    std::size_t i = (key * 0x9E3779B97F4A7C15U >> 40) & slot_mask_;
    while (slots_[i].tile != nullptr && (slots_[i].tile->left != left || slots_[i].tile->top != top)) {
      i = (i + 1) & slot_mask_;
    }
    return slots_ + i;
  }

  // At most half of the table is used.
  void GrowTable() {
    const Slot* const old = slots_;
    const std::size_t old_slots = slot_mask_ + 1;
    MakeTable(2 * old_slots);
    for (std::size_t i = 0; i < old_slots; ++i) {
      if (old[i].tile != nullptr) {
        *SlotOf(old[i].tile->left, old[i].tile->top) = old[i];
      }
    }
  }

  Tile* TileAt(int x, int y) {
    const int left = x & ~(kTileSide - 1);
    const int top = y & ~(kTileSide - 1);
    Slot* const slot = SlotOf(left, top);
    return slot->tile != nullptr ? slot->tile : AddTile(slot, left, top);
  }

  Tile* ExistingTile(int left, int top) const { return left < 0 || top < 0 ? nullptr : SlotOf(left, top)->tile; }

  Tile* AddTile(Slot* slot, int left, int top) {
    Tile* const tile = NewTile(left, top);
    slot->tile = tile;
    if (++tiles_ * 2 > slot_mask_) {
      GrowTable();
    }
    for (Move k = 0; k < kMoves; ++k) {
      Tile* const other = ExistingTile(left + kDx[k] * kTileSide, top + kDy[k] * kTileSide);
      tile->around[k] = other;
      if (other != nullptr) {
        other->around[Opposite(k)] = tile;
        TakeOver(tile, *other, k);
      }
    }
    return tile;
  }

  Prices* NewPrices() { return ::new (allocator_->AllocateArray<Prices>(1)) Prices(); }

  // A tile of which nothing is known, but what is off the map.
  Tile* NewTile(int left, int top) {
    Tile* const tile = allocator_->AllocateArray<Tile>(1);
    std::fill_n(tile->nodes, kTileSide * kTileSide, Node::Unreached());
    const std::uint64_t columns = CellsOnMap(left, params_.width);
    const std::uint64_t rows = CellsOnMap(top, params_.height);
    for (int i = 0; i < kLines; ++i) {
      tile->rows[i] = {0, (rows >> i & 1) != 0 ? columns : 0};
      tile->columns[i] = {0, (columns >> i & 1) != 0 ? rows : 0};
    }
    const BlockSet block_columns = BlocksOnMap(left, params_.width);
    const BlockSet block_rows = BlocksOnMap(top, params_.height);
    tile->asked = 0;
    for (int i = 0; i < kTileBlocks + 2; ++i) {
      tile->asked |= (kBlockRow & ~((block_rows >> i & 1) != 0 ? block_columns : 0)) << (8 * i);
    }
    tile->prices = params_.extra_cost == nullptr ? no_prices_ : NewPrices();
    tile->left = left;
    tile->top = top;
    return tile;
  }

  // Which cells of a line of a tile that begins at cell `first` lie on a map of `size` cells?
  static std::uint64_t CellsOnMap(int first, int size) {
    const int end = std::min(size - first, kTileSide + 1) + 1;
    return ((std::uint64_t{1} << end) - 1) & ~std::uint64_t{first == 0};
  }

  // The same for the blocks of a tile that begins at cell `first`.
  static BlockSet BlocksOnMap(int first, int size) {
    const int end = std::min((size - first + kBlockSide - 1) / kBlockSide, kTileBlocks + 1) + 1;
    return ((BlockSet{1} << end) - 1) & ~BlockSet{first == 0};
  }

  // Enters into `tile` what is known of the blocks that touch it of `other`, its neighbour at `side`.
  void TakeOver(Tile* tile, const Tile& other, Move side) const {
    const int first_x = kDx[side] < 0 ? kTileBlocks - 1 : 0;
    const int last_x = kDx[side] > 0 ? 0 : kTileBlocks - 1;
    const int first_y = kDy[side] < 0 ? kTileBlocks - 1 : 0;
    const int last_y = kDy[side] > 0 ? 0 : kTileBlocks - 1;
    for (int y = first_y; y <= last_y; ++y) {
      for (int x = first_x; x <= last_x; ++x) {
        if ((other.asked & SetOfBlock(x, y)) != 0) {
          EnterFrom(other, x, y, BitsOf(other, x, y), tile, side);
        }
      }
    }
  }

  // Asks about `missing` blocks of `tile` and its neighbours.
  void AskBlocks(Tile* tile, BlockSet missing) {
    for (; missing != 0; missing &= missing - 1) {
      const int bit = __builtin_ctzll(missing);
      Tile* const owner = TileAt(tile->left + (bit % 8 - 1) * kBlockSide, tile->top + (bit / 8 - 1) * kBlockSide);
      const int x = (bit % 8 - 1) & (kTileBlocks - 1);
      const int y = (bit / 8 - 1) & (kTileBlocks - 1);
      const BlockBits bits = Ask(owner, x, y);
      Enter(owner, x, y, bits);
      for (Move k = 0; k < kMoves; ++k) {
        if (owner->around[k] != nullptr && Touches(x, kDx[k]) && Touches(y, kDy[k])) {
          EnterFrom(*owner, x, y, bits, owner->around[k], Opposite(k));
        }
      }
    }
  }

  // Does a block at `i` in its tile touch the tile at `d` along that direction?
  static bool Touches(int i, int d) { return d == 0 || i == (d < 0 ? 0 : kTileBlocks - 1); }

  // Asks about a block of `tile`; puts down the prices, returns the rest.
  BlockBits Ask(Tile* tile, int block_x, int block_y) {
    const int left = tile->left + block_x * kBlockSide;
    const int top = tile->top + block_y * kBlockSide;
    const int columns = std::min(kBlockSide, params_.width - left);
    const int rows = std::min(kBlockSide, params_.height - top);
    BlockBits bits{0, 0};
    for (int row = 0; row < rows; ++row) {
      const auto y = static_cast<std::uint16_t>(top + row);
      const std::uint64_t passable = AskRow(left, y, columns);
      bits.passable |= passable << (row * 8);
      if (params_.extra_cost != nullptr) {
        std::uint16_t* const prices = tile->prices->At(block_x * kBlockSide, block_y * kBlockSide + row);
        bits.rough |= PriceRow(left, y, passable, prices) << (row * 8);
      }
    }
    const int goal_x = params_.goal.x - left;
    const int goal_y = params_.goal.y - top;
    if (0 <= goal_x && goal_x < kBlockSide && 0 <= goal_y && goal_y < kBlockSide) {
      bits.rough |= std::uint64_t{1} << (goal_y * 8 + goal_x);
    }
    return bits;
  }

  // Which of the `columns` cells from (left, y) on are passable?
  std::uint64_t AskRow(int left, std::uint16_t y, int columns) const {
    if (params_.is_passable == nullptr) {
      return (std::uint64_t{1} << columns) - 1;
    }
    std::uint64_t passable = 0;
    const auto ask = [this, left, y, &passable](int i) {
      const bool pass = params_.is_passable({static_cast<std::uint16_t>(left + i), y});
      passable |= std::uint64_t{pass} << i;
    };
    if (columns == kBlockSide) {
      ForWholeRow(ask);
    } else {
      for (int i = 0; i < columns; ++i) {
        ask(i);
      }
    }
    return passable;
  }

  // Asks the prices of the passable cells from (left, y) on; which have one?
  std::uint64_t PriceRow(int left, std::uint16_t y, std::uint64_t passable, std::uint16_t* prices) const {
    std::uint64_t priced = 0;
    const auto ask = [this, left, y, prices, &priced](int i) {
      prices[i] = params_.extra_cost({static_cast<std::uint16_t>(left + i), y});
      priced |= std::uint64_t{prices[i] != 0} << i;
    };
    if (passable == (1U << kBlockSide) - 1) {
      ForWholeRow(ask);
    } else {
      for (; passable != 0; passable &= passable - 1) {
        ask(__builtin_ctzll(passable));
      }
    }
    return priced;
  }

  // Calls `call` for 0 to kBlockSide - 1 without a loop, which takes as long as some callbacks do.
  template <typename Call>
  static void ForWholeRow(const Call& call) {
    ForEach(std::make_integer_sequence<int, kBlockSide>(), call);
  }
  template <int... kIndices, typename Call>
  static void ForEach(std::integer_sequence<int, kIndices...> /*unused*/, const Call& call) {
    (call(kIndices), ...);
  }

  // Enters what is known of block (block_x, block_y) into the lines of `tile`.
  static void Enter(Tile* tile, int block_x, int block_y, const BlockBits& bits) {
    EnterLines(tile->rows, block_x, block_y, bits);
    EnterLines(tile->columns, block_y, block_x, {Transposed(bits.passable), Transposed(bits.rough)});
    tile->asked |= SetOfBlock(block_x, block_y);
  }

  // Enters block (block_x, block_y) of `from` into `tile`, whose neighbour at `side` that is: what lies on the ring of
  // `tile`.
  void EnterFrom(const Tile& from, int block_x, int block_y, const BlockBits& bits, Tile* tile, Move side) const {
    Enter(tile, block_x + kDx[side] * kTileBlocks, block_y + kDy[side] * kTileBlocks, bits);
    if (params_.extra_cost == nullptr) {
      return;
    }
    const auto cells_to_copy = [](int d, int block) {
      const int first = d < 0 ? kTileSide - 1 : block * kBlockSide;
      return std::pair<int, int>{first, d == 0 ? first + kBlockSide : first + 1};
    };
    const auto [first_x, end_x] = cells_to_copy(kDx[side], block_x);
    const auto [first_y, end_y] = cells_to_copy(kDy[side], block_y);
    for (int y = first_y; y < end_y; ++y) {
      for (int x = first_x; x < end_x; ++x) {
        *tile->prices->At(x + kDx[side] * kTileSide, y + kDy[side] * kTileSide) = *from.prices->At(x, y);
      }
    }
  }

  // The block is `along` blocks into its lines, the first of which is `across` blocks down.
  static void EnterLines(Line* lines, int along, int across, const BlockBits& bits) {
    const int first = std::max(0, -across * kBlockSide - 1);
    const int end = std::min(kBlockSide, kTileSide + 1 - across * kBlockSide);
    for (int i = first; i < end; ++i) {
      Line& line = lines[across * kBlockSide + i + 1];
      line.passable |= BitsInLine(bits.passable >> (i * 8), along);
      line.rough &= ~BitsInLine(~(bits.rough >> (i * 8)), along);
    }
  }

  // The lowest 8 of `bits` as they lie in a line, `along` blocks into it.
  static std::uint64_t BitsInLine(std::uint64_t bits, int along) {
    const std::uint64_t block = bits & 0xFF;
    return along < 0 ? block >> (kBlockSide - 1) : block << (along * kBlockSide + 1) & kLineMask;
  }

  static BlockBits BitsOf(const Tile& tile, int block_x, int block_y) {
    BlockBits bits{0, 0};
    for (int i = 0; i < kBlockSide; ++i) {
      const Line& line = tile.rows[block_y * kBlockSide + i + 1];
      bits.passable |= (line.passable >> (block_x * kBlockSide + 1) & 0xFF) << (i * 8);
      bits.rough |= (line.rough >> (block_x * kBlockSide + 1) & 0xFF) << (i * 8);
    }
    return bits;
  }

  // Rows become columns: swaps the off-diagonal quarters of the 8 x 8 bits, then those of the quarters, then of theirs.
  static std::uint64_t Transposed(std::uint64_t bits) {
    const auto swap = [&bits](int distance, std::uint64_t mask) {
      const std::uint64_t changed = (bits ^ bits >> distance) & mask;
      bits ^= changed ^ changed << distance;
    };
    swap(28, 0x00000000F0F0F0F0);
    swap(14, 0x0000CCCC0000CCCC);
    swap(7, 0x00AA00AA00AA00AA);
    return bits;
  }

  const AStar::Params& params_;
  BlockAllocator* const allocator_;
  Prices* no_prices_ = nullptr;  // shared by all tiles when nothing has a price
  Slot* slots_ = nullptr;
  std::size_t slot_mask_ = 0;
  std::size_t tiles_ = 0;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_TILE_MAP_H_
