#ifndef PLATFORM_ASTAR_REQUEST_READER_H_
#define PLATFORM_ASTAR_REQUEST_READER_H_

#include <algorithm>
#include <cstdint>
#include <utility>

#include "astar/block.h"
#include "astar/tile.h"
#include "controller_base/platform/astar.h"

inline namespace controller_base_platform {
namespace grid_search {

// Asks the callbacks of a request about blocks of cells.
class RequestReader {
 public:
  // `params` must outlive the reader.
  explicit RequestReader(const AStar::Params& params) : params_(params) {}

  bool HasExtraCosts() const { return params_.extra_cost != nullptr; }

  // Asks about every cell of a block of `tile` that is on the map; enters the extra costs into `tile`, returns the
  // rest.
  BlockBits Ask(Tile* tile, int block_x, int block_y) const {
    const int left = tile->left + block_x * kBlockSide;
    const int top = tile->top + block_y * kBlockSide;
    const int columns = std::min(kBlockSide, params_.width - left);
    const int rows = std::min(kBlockSide, params_.height - top);
    BlockBits bits{0, GoalBit(left, top)};
    for (int row = 0; row < rows; ++row) {
      const auto y = static_cast<std::uint16_t>(top + row);
      const std::uint64_t passable = AskRow(left, y, columns);
      bits.passable |= passable << (row * 8);
      if (HasExtraCosts()) {
        std::uint16_t* const costs = tile->extra_costs->At(block_x * kBlockSide, block_y * kBlockSide + row);
        bits.must_stop |= AskExtraCosts(left, y, passable, costs) << (row * 8);
      }
    }
    return bits;
  }

 private:
  // The goal's bit in the block that begins at (left, top); 0 when it lies elsewhere.
  std::uint64_t GoalBit(int left, int top) const {
    const int x = params_.goal.x - left;
    const int y = params_.goal.y - top;
    const bool is_inside = 0 <= x && x < kBlockSide && 0 <= y && y < kBlockSide;
    return is_inside ? std::uint64_t{1} << (y * 8 + x) : 0;
  }

  // Which of the `columns` cells from (left, y) on are passable, as bits.
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

  // Asks the extra costs of the passable cells from (left, y) on and puts them into `costs`. Which have one, as bits.
  std::uint64_t AskExtraCosts(int left, std::uint16_t y, std::uint64_t passable, std::uint16_t* costs) const {
    std::uint64_t with_cost = 0;
    const auto ask = [this, left, y, costs, &with_cost](int i) {
      costs[i] = params_.extra_cost({static_cast<std::uint16_t>(left + i), y});
      with_cost |= std::uint64_t{costs[i] != 0} << i;
    };
    if (passable == (1U << kBlockSide) - 1) {
      ForWholeRow(ask);
    } else {
      for (; passable != 0; passable &= passable - 1) {
        ask(__builtin_ctzll(passable));
      }
    }
    return with_cost;
  }

  // Calls `call` for 0 to kBlockSide - 1, unrolled: a loop would take as long as a cheap callback.
  template <typename Call>
  static void ForWholeRow(const Call& call) {
    ForEach(std::make_integer_sequence<int, kBlockSide>(), call);
  }
  template <int... kIndices, typename Call>
  static void ForEach(std::integer_sequence<int, kIndices...> /*unused*/, const Call& call) {
    (call(kIndices), ...);
  }

  const AStar::Params& params_;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_REQUEST_READER_H_
