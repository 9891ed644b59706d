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

// One bit for each cell of a block, that of cell (x, y) is y * 8 + x. As in a Line.
struct BlockBits {
  std::uint64_t passable;
  std::uint64_t must_stop;
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

// Rows become columns: swaps the off-diagonal quarters of the 8 x 8 bits, then those of the quarters, then of theirs.
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

// The lowest 8 of `bits` as they lie in a line, `along` blocks into it.
inline std::uint64_t BitsInLine(std::uint64_t bits, int along) {
  const std::uint64_t block = bits & 0xFF;
  return along < 0 ? block >> (kBlockSide - 1) : block << (along * kBlockSide + 1) & kLineMask;
}

// Enters a block that lies `along` blocks into the lines, the first of which is `across` blocks down.
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
