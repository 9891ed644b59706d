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
#include "astar/tile.h"

inline namespace controller_base_platform {
namespace grid_search {

// The blocks that hold cell (x, y) and its neighbours, as in Tile::asked, are columns[x] * rows[y]: the factor repeats
// a row of blocks in each row that it has a bit for.
struct BlocksAround {
  std::uint64_t columns[kTileSide];
  std::uint64_t rows[kTileSide];
};
constexpr BlocksAround MakeBlocksAround() {
  BlocksAround blocks{};
  for (int i = 0; i < kTileSide; ++i) {
    const int first = (i - 1 + kBlockSide) / kBlockSide;
    const int last = (i + 1 + kBlockSide) / kBlockSide;
    blocks.columns[i] = std::uint64_t{1} << first | std::uint64_t{1} << last;
    blocks.rows[i] = std::uint64_t{1} << (8 * first) | std::uint64_t{1} << (8 * last);
  }
  return blocks;
}
constexpr BlocksAround kBlocksAround = MakeBlocksAround();

// The tiles that a search has touched, and the only place that asks the callbacks of its request: block by block, each
// once. A tile is found through a hash table, so nothing grows with the map.
class TileMap {
 public:
  // Both must outlive the map. When `all_rough`, every cell counts as rough.
  TileMap(const AStar::Params& params, bool all_rough, BlockAllocator* allocator)
      : params_(params), all_rough_(all_rough), allocator_(allocator) {
    MakeTable(kFirstSlots);
    no_prices_ = NewPrices();
  }

  // The tile that holds the map's cell (x, y); made when there is none yet.
  Tile* TileAt(int x, int y) {
    const int left = x & ~(kTileSide - 1);
    const int top = y & ~(kTileSide - 1);
    Tile** const slot = SlotOf(left, top);
    return *slot != nullptr ? *slot : AddTile(slot, left, top);
  }

  // Asks about cell (x, y) of `tile`, unless it is known already.
  bool IsPassable(Tile* tile, int x, int y) {
    const std::uint64_t block = AskedBit(x / kBlockSide, y / kBlockSide);
    if ((tile->asked & block) == 0) {
      AskBlocks(tile, block);
    }
    return (tile->rows[y + 1].passable >> (x + 1) & 1) != 0;
  }

  // Asks what is not known yet about cell (x, y) of `tile` and its neighbours, whose tiles exist from then on. Was
  // there any?
  bool AskAround(Tile* tile, int x, int y) {
    const std::uint64_t missing = kBlocksAround.columns[x] * kBlocksAround.rows[y] & ~tile->asked;
    if (missing != 0) {
      AskBlocks(tile, missing);
    }
    return missing != 0;
  }

 private:
  static constexpr std::size_t kFirstSlots = 64;
  static constexpr std::uint64_t kAskedRow = (std::uint64_t{1} << (kTileBlocks + 2)) - 1;

  static constexpr std::uint64_t AskedBit(int block_x, int block_y) {
    return std::uint64_t{1} << ((block_y + 1) * 8 + block_x + 1);
  }

  void MakeTable(std::size_t slots) {
    slots_ = static_cast<Tile**>(allocator_->Allocate(slots * sizeof(Tile*)));
    std::uninitialized_fill_n(slots_, slots, nullptr);
    slot_mask_ = slots - 1;
  }

  // Where that tile is, or should be put.
  Tile** SlotOf(int left, int top) const {
    // Fibonacci hashing: a multiple of the golden ratio spreads neighbouring keys.
    const std::uint64_t key = static_cast<std::uint64_t>(top) << 32 | static_cast<std::uint64_t>(left);
    std::size_t i = (key * 0x9E3779B97F4A7C15U >> 40) & slot_mask_;
    while (slots_[i] != nullptr && (slots_[i]->left != left || slots_[i]->top != top)) {
      i = (i + 1) & slot_mask_;
    }
    return slots_ + i;
  }

  // At most half of the table is used.
  void Grow() {
    Tile** const old = slots_;
    const std::size_t old_slots = slot_mask_ + 1;
    MakeTable(2 * old_slots);
    for (std::size_t i = 0; i < old_slots; ++i) {
      if (old[i] != nullptr) {
        *SlotOf(old[i]->left, old[i]->top) = old[i];
      }
    }
  }

  Tile* AddTile(Tile** slot, int left, int top) {
    Tile* const tile = NewTile(left, top);
    *slot = tile;
    if (++tiles_ * 2 > slot_mask_) {
      Grow();
    }
    for (Move k = 0; k < kMoves; ++k) {
      Tile* const other = Existing(left + kDx[k] * kTileSide, top + kDy[k] * kTileSide);
      tile->around[k] = other;
      if (other != nullptr) {
        other->around[Opposite(k)] = tile;
        TakeOver(tile, *other, kDx[k], kDy[k]);
      }
    }
    return tile;
  }

  Tile* Existing(int left, int top) const { return left < 0 || top < 0 ? nullptr : *SlotOf(left, top); }

  Tile* NewTile(int left, int top) {
    Tile* const tile = ::new (allocator_->Allocate(sizeof(Tile))) Tile;
    std::fill_n(tile->nodes, kTileSide * kTileSide, Node::Unreached());
    const std::uint64_t columns_on_map = OnMap(left, params_.width);
    const std::uint64_t rows_on_map = OnMap(top, params_.height);
    for (int i = 0; i < kLines; ++i) {
      tile->rows[i] = {0, (rows_on_map >> i & 1) != 0 ? columns_on_map : 0};
      tile->columns[i] = {0, (columns_on_map >> i & 1) != 0 ? rows_on_map : 0};
    }
    tile->asked = 0;
    const std::uint64_t columns_off_map = BlocksOffMap(left, params_.width);
    const std::uint64_t rows_off_map = BlocksOffMap(top, params_.height);
    for (int i = 0; i < kTileBlocks + 2; ++i) {
      tile->asked |= ((rows_off_map >> i & 1) != 0 ? kAskedRow : columns_off_map) << (8 * i);
    }
    tile->prices = params_.extra_cost == nullptr ? no_prices_ : NewPrices();
    tile->left = left;
    tile->top = top;
    return tile;
  }

  Prices* NewPrices() { return ::new (allocator_->Allocate(sizeof(Prices))) Prices(); }

  // Which cells of a line that begins before `first` are on a map of `size` lines?
  static std::uint64_t OnMap(int first, int size) {
    const int cells = std::min(size - first, kTileSide + 1);
    const std::uint64_t after = (std::uint64_t{1} << (cells + 1)) - 1;
    return first == 0 ? after & ~std::uint64_t{1} : after;
  }

  // Which blocks of a line of them that begins one before `first` are off a map of `size` cells?
  static std::uint64_t BlocksOffMap(int first, int size) {
    const int blocks = std::min((size - first + kBlockSide - 1) / kBlockSide, kTileBlocks + 1);
    const std::uint64_t after = kAskedRow & ~((std::uint64_t{1} << (blocks + 1)) - 1);
    return first == 0 ? after | 1 : after;
  }

  // Copies what is known of the blocks of `other`, the neighbour at (dx, dy), that touch `tile`.
  void TakeOver(Tile* tile, const Tile& other, int dx, int dy) {
    const int first_x = dx < 0 ? kTileBlocks - 1 : 0;
    const int last_x = dx > 0 ? 0 : kTileBlocks - 1;
    const int first_y = dy < 0 ? kTileBlocks - 1 : 0;
    const int last_y = dy > 0 ? 0 : kTileBlocks - 1;
    for (int y = first_y; y <= last_y; ++y) {
      for (int x = first_x; x <= last_x; ++x) {
        if ((other.asked & AskedBit(x, y)) != 0) {
          Enter(tile, x + dx * kTileBlocks, y + dy * kTileBlocks, BitsOf(other, x, y));
          CopyPrices(tile, other, dx, dy, x, y);
        }
      }
    }
  }

  void AskBlocks(Tile* tile, std::uint64_t missing) {
    for (; missing != 0; missing &= missing - 1) {
      const int bit = __builtin_ctzll(missing);
      const int x = tile->left + (bit % 8 - 1) * kBlockSide;
      const int y = tile->top + (bit / 8 - 1) * kBlockSide;
      Tile* const owner = TileAt(x, y);
      const int block_x = (x - owner->left) / kBlockSide;
      const int block_y = (y - owner->top) / kBlockSide;
      const BlockBits bits = Ask(owner, block_x, block_y);
      Enter(owner, block_x, block_y, bits);
      for (Move k = 0; k < kMoves; ++k) {
        const int other_x = block_x - kDx[k] * kTileBlocks;
        const int other_y = block_y - kDy[k] * kTileBlocks;
        if (owner->around[k] != nullptr && IsNear(other_x) && IsNear(other_y)) {
          Enter(owner->around[k], other_x, other_y, bits);
          CopyPrices(owner->around[k], *owner, -kDx[k], -kDy[k], block_x, block_y);
        }
      }
    }
  }

  // Copies the extra costs of the cells of a block of `other`, the neighbour at (dx, dy), that touch `tile`.
  void CopyPrices(Tile* tile, const Tile& other, int dx, int dy, int block_x, int block_y) {
    if (params_.extra_cost == nullptr) {
      return;
    }
    const auto cells = [](int d, int block) {
      const int first = d < 0 ? kTileSide - 1 : block * kBlockSide;
      return std::pair<int, int>{first, d == 0 ? first + kBlockSide : first + 1};
    };
    const auto [first_x, end_x] = cells(dx, block_x);
    const auto [first_y, end_y] = cells(dy, block_y);
    for (int y = first_y; y < end_y; ++y) {
      for (int x = first_x; x < end_x; ++x) {
        *tile->prices->At(x + dx * kTileSide, y + dy * kTileSide) = *other.prices->At(x, y);
      }
    }
  }

  static bool IsNear(int block) { return -1 <= block && block <= kTileBlocks; }

  BlockBits Ask(Tile* tile, int block_x, int block_y) {
    const int left = tile->left + block_x * kBlockSide;
    const int top = tile->top + block_y * kBlockSide;
    const int columns = std::min(kBlockSide, params_.width - left);
    const int rows = std::min(kBlockSide, params_.height - top);
    BlockBits bits{0, 0};
    for (int row = 0; row < rows; ++row) {
      const auto y = static_cast<std::uint16_t>(top + row);
      const std::uint64_t passable = AskRow(left, y, columns);
      bits.passable |= passable << (row * kBlockSide);
      if (params_.extra_cost != nullptr) {
        std::uint16_t* const prices = tile->prices->At(block_x * kBlockSide, block_y * kBlockSide + row);
        bits.rough |= PriceRow(left, y, passable, prices) << (row * kBlockSide);
      }
    }
    if (all_rough_) {
      bits.rough = ~std::uint64_t{0};
    }
    const int goal_column = params_.goal.x - left;
    const int goal_row = params_.goal.y - top;
    if (0 <= goal_column && goal_column < kBlockSide && 0 <= goal_row && goal_row < kBlockSide) {
      bits.rough |= std::uint64_t{1} << (goal_row * kBlockSide + goal_column);
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
    ForEachOf(columns, ask);
    return passable;
  }

  // Asks the prices of the passable cells from (left, y) on; which have one?
  std::uint64_t PriceRow(int left, std::uint16_t y, std::uint64_t passable, std::uint16_t* prices) const {
    std::uint64_t priced = 0;
    const auto ask = [this, left, y, prices, &priced](int i) {
      prices[i] = params_.extra_cost({static_cast<std::uint16_t>(left + i), y});
      priced |= std::uint64_t{prices[i] != 0} << i;
    };
    if (passable == 0xFF) {
      ForEachOf(kBlockSide, ask);
    } else {
      for (; passable != 0; passable &= passable - 1) {
        ask(__builtin_ctzll(passable));
      }
    }
    return priced;
  }

  // Calls `call` for 0 to count - 1. Most rows are whole ones, for which the loop is unrolled.
  template <typename Call>
  static void ForEachOf(int count, const Call& call) {
    if (count == kBlockSide) {
      ForAll(std::make_integer_sequence<int, kBlockSide>(), call);
      return;
    }
    for (int i = 0; i < count; ++i) {
      call(i);
    }
  }
  template <typename Call, int... kIndices>
  static void ForAll(std::integer_sequence<int, kIndices...>, const Call& call) {
    (call(kIndices), ...);
  }

  // Enters what is known of block (block_x, block_y), from -1 to 4 in either direction, into the lines of `tile`.
  static void Enter(Tile* tile, int block_x, int block_y, const BlockBits& bits) {
    EnterLines(tile->rows, block_x, block_y, bits);
    EnterLines(tile->columns, block_y, block_x, {Transposed(bits.passable), Transposed(bits.rough)});
    tile->asked |= AskedBit(block_x, block_y);
  }

  // The block's lines are `along` blocks into their own, and the first of them is `across` blocks down.
  static void EnterLines(Line* lines, int along, int across, const BlockBits& bits) {
    const int first = std::max(0, -across * kBlockSide - 1);
    const int last = std::min(kBlockSide, kTileSide + 1 - across * kBlockSide);
    for (int i = first; i < last; ++i) {
      Line& line = lines[across * kBlockSide + i + 1];
      line.passable |= Placed(bits.passable >> (i * kBlockSide), along);
      line.rough &= ~Placed(~(bits.rough >> (i * kBlockSide)), along);
    }
  }

  // The first 8 of `bits` as they lie in a line, `along` blocks into it.
  static std::uint64_t Placed(std::uint64_t bits, int along) {
    const std::uint64_t block = bits & 0xFF;
    return along < 0 ? block >> (kBlockSide - 1) : block << (along * kBlockSide + 1) & kLineMask;
  }

  static BlockBits BitsOf(const Tile& tile, int block_x, int block_y) {
    BlockBits bits{0, 0};
    for (int i = 0; i < kBlockSide; ++i) {
      const Line& line = tile.rows[block_y * kBlockSide + i + 1];
      bits.passable |= (line.passable >> (block_x * kBlockSide + 1) & 0xFF) << (i * kBlockSide);
      bits.rough |= (line.rough >> (block_x * kBlockSide + 1) & 0xFF) << (i * kBlockSide);
    }
    return bits;
  }

  // Rows become columns: swaps the off-diagonal quarters of the 8 x 8 bits, then those of the quarters, then of theirs.
  static std::uint64_t Transposed(std::uint64_t bits) {
    const auto swap = [&bits](int shift, std::uint64_t mask) {
      const std::uint64_t changed = (bits ^ bits >> shift) & mask;
      bits ^= changed ^ changed << shift;
    };
    swap(28, 0x00000000F0F0F0F0);
    swap(14, 0x0000CCCC0000CCCC);
    swap(7, 0x00AA00AA00AA00AA);
    return bits;
  }

  const AStar::Params& params_;
  const bool all_rough_;
  BlockAllocator* const allocator_;
  Prices* no_prices_ = nullptr;  // shared by all tiles when nothing has a price
  Tile** slots_ = nullptr;
  std::size_t slot_mask_ = 0;
  std::size_t tiles_ = 0;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_TILE_MAP_H_
