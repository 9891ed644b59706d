#ifndef PLATFORM_ASTAR_BLOCK_H_
#define PLATFORM_ASTAR_BLOCK_H_

#include <algorithm>
#include <cstdint>

#include "astar/line.h"
#include "astar/tile.h"

// Cells are asked about in blocks of 8 x 8: the calls follow each other closely, and jumps are long.
inline namespace controller_base_platform {
namespace grid_search {

constexpr int kBlockSide = 8;
constexpr int kTileBlocks = kTileSide / kBlockSide;

// Bit y * 8 + x stands for cell (x, y) of a block; the two words mean the same as in a Line.
struct BlockBits {
  std::uint64_t passable;
  std::uint64_t must_stop;
};

// The blocks of a tile and of the ring of blocks around it: bit (y + 1) * 8 + x + 1 stands for block (x, y), each -1
// to 4.
using BlockSet = std::uint64_t;
constexpr BlockSet kBlockRow = (BlockSet{1} << (kTileBlocks + 2)) - 1;
constexpr BlockSet SetOfBlock(int x, int y) { return BlockSet{1} << ((y + 1) * 8 + x + 1); }

// The blocks that hold cell (x, y) and its neighbours are columns[x] * rows[y]: the product repeats the bits of
// columns[x] in each row for which rows[y] has a bit.
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

// The 8 x 8 bits with rows and columns exchanged: swaps the off-diagonal quarters, then those of each quarter, then
// those of each quarter's quarters.
inline std::uint64_t Transposed(std::uint64_t bits) {
  const auto swap = [&bits](int distance, std::uint64_t mask) {
    const std::uint64_t changed = (bits ^ bits >> distance) & mask;
    bits ^= changed ^ changed << distance;
  };
  swap(28, 0x00000000F0F0F0F0);
  swap(14, 0x0000CCCC0000CCCC);
  swap(7, 0x00AA00AA00AA00AA);
  return bits;
}

// The lowest 8 of `bits`, moved to their place in a line, `along` blocks from its first cell.
inline std::uint64_t BitsInLine(std::uint64_t bits, int along) {
  const std::uint64_t block = bits & 0xFF;
  return along < 0 ? block >> (kBlockSide - 1) : block << (along * kBlockSide + 1) & kLineMask;
}

// Enters a block into the lines of a tile; it lies `along` blocks from the lines' first cell and `across` blocks from
// the tile's first line.
inline void EnterLines(Line* lines, int along, int across, const BlockBits& bits) {
  const int first = std::max(0, -across * kBlockSide - 1);
  const int end = std::min(kBlockSide, kTileSide + 1 - across * kBlockSide);
  for (int i = first; i < end; ++i) {
    Line& line = lines[across * kBlockSide + i + 1];
    line.passable |= BitsInLine(bits.passable >> (i * 8), along);
    line.must_stop &= ~BitsInLine(~(bits.must_stop >> (i * 8)), along);
  }
}

// Enters what is known of block (block_x, block_y), each -1 to 4, into the lines of `tile`.
inline void Enter(Tile* tile, int block_x, int block_y, const BlockBits& bits) {
  EnterLines(tile->rows, block_x, block_y, bits);
  EnterLines(tile->columns, block_y, block_x, {Transposed(bits.passable), Transposed(bits.must_stop)});
  tile->asked |= SetOfBlock(block_x, block_y);
}

// What is known of block (block_x, block_y) of `tile`.
inline BlockBits BitsOf(const Tile& tile, int block_x, int block_y) {
  BlockBits bits{0, 0};
  for (int i = 0; i < kBlockSide; ++i) {
    const Line& line = tile.rows[block_y * kBlockSide + i + 1];
    bits.passable |= (line.passable >> (block_x * kBlockSide + 1) & 0xFF) << (i * 8);
    bits.must_stop |= (line.must_stop >> (block_x * kBlockSide + 1) & 0xFF) << (i * 8);
  }
  return bits;
}

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_BLOCK_H_
