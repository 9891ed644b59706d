#ifndef PLATFORM_ASTAR_TILE_MAP_H_
#define PLATFORM_ASTAR_TILE_MAP_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "astar/block.h"
#include "astar/line.h"
#include "astar/moves.h"
#include "astar/request_reader.h"
#include "astar/tile.h"
#include "controller_base/platform/astar.h"
#include "controller_base/platform/block_allocator.h"

inline namespace controller_base_platform {
namespace grid_search {

// The tiles that a search has touched; their cells are asked about block by block, each block once. A tile is found
// through a hash table, so nothing grows with the map.
class TileMap {
 public:
  // `params` and `allocator` must outlive the map.
  TileMap(const AStar::Params& params, BlockAllocator* allocator)
      : reader_(params), width_(params.width), height_(params.height), allocator_(allocator) {
    MakeTable(kFirstSlots);
    no_extra_costs_ = NewExtraCosts();
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

  // Asks what is not known yet about cell (x, y) of `tile` and its neighbours, whose tiles exist from then on. False
  // when all was known.
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

  ExtraCosts* NewExtraCosts() { return ::new (allocator_->AllocateArray<ExtraCosts>(1)) ExtraCosts(); }

  // A tile of which nothing is known, except which cells are off the map.
  Tile* NewTile(int left, int top) {
    Tile* const tile = allocator_->AllocateArray<Tile>(1);
    std::fill_n(tile->nodes, kTileSide * kTileSide, Node::Unreached());
    const std::uint64_t columns = CellsOnMap(left, width_);
    const std::uint64_t rows = CellsOnMap(top, height_);
    for (int i = 0; i < kLines; ++i) {
      tile->rows[i] = {0, (rows >> i & 1) != 0 ? columns : 0};
      tile->columns[i] = {0, (columns >> i & 1) != 0 ? rows : 0};
    }
    const BlockSet block_columns = BlocksOnMap(left, width_);
    const BlockSet block_rows = BlocksOnMap(top, height_);
    tile->asked = 0;
    for (int i = 0; i < kTileBlocks + 2; ++i) {
      tile->asked |= (kBlockRow & ~((block_rows >> i & 1) != 0 ? block_columns : 0)) << (8 * i);
    }
    tile->extra_costs = reader_.HasExtraCosts() ? NewExtraCosts() : no_extra_costs_;
    tile->left = left;
    tile->top = top;
    return tile;
  }

  // Which cells of a line of a tile that begins at cell `first` lie on a map of `size` cells, as bits.
  static std::uint64_t CellsOnMap(int first, int size) {
    const int end = std::min(size - first, kTileSide + 1) + 1;
    return ((std::uint64_t{1} << end) - 1) & ~std::uint64_t{first == 0};
  }

  // The same for the blocks of a tile that begins at cell `first`.
  static BlockSet BlocksOnMap(int first, int size) {
    const int end = std::min((size - first + kBlockSide - 1) / kBlockSide, kTileBlocks + 1) + 1;
    return ((BlockSet{1} << end) - 1) & ~BlockSet{first == 0};
  }

  // Enters into `tile` what is known of its neighbour at `side`, `other`: of the blocks that touch `tile`.
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
      const BlockBits bits = reader_.Ask(owner, x, y);
      Enter(owner, x, y, bits);
      for (Move k = 0; k < kMoves; ++k) {
        if (owner->around[k] != nullptr && Touches(x, kDx[k]) && Touches(y, kDy[k])) {
          EnterFrom(*owner, x, y, bits, owner->around[k], Opposite(k));
        }
      }
    }
  }

  // Whether block `i` of a row or column of blocks touches the next tile in direction `d`, -1 to 1.
  static bool Touches(int i, int d) { return d == 0 || i == (d < 0 ? 0 : kTileBlocks - 1); }

  // Enters block (block_x, block_y) of `from`, the neighbour of `tile` at `side`, into `tile`: the cells that lie on
  // its ring.
  void EnterFrom(const Tile& from, int block_x, int block_y, const BlockBits& bits, Tile* tile, Move side) const {
    Enter(tile, block_x + kDx[side] * kTileBlocks, block_y + kDy[side] * kTileBlocks, bits);
    if (!reader_.HasExtraCosts()) {
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
        *tile->extra_costs->At(x + kDx[side] * kTileSide, y + kDy[side] * kTileSide) = *from.extra_costs->At(x, y);
      }
    }
  }

  const RequestReader reader_;
  const int width_;
  const int height_;
  BlockAllocator* const allocator_;
  ExtraCosts* no_extra_costs_ = nullptr;  // shared by all tiles when no cell has any
  Slot* slots_ = nullptr;
  std::size_t slot_mask_ = 0;
  std::size_t tiles_ = 0;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_TILE_MAP_H_
