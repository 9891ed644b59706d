#ifndef CONTROLLER_BASE_LOCAL_PLAN_BOXED_CELLS_H_
#define CONTROLLER_BASE_LOCAL_PLAN_BOXED_CELLS_H_

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "controller_base/platform/box2d.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller::internal {

// The cells of a map whose centres lie in a box, for as long as neither the map nor the boxes change.
//
// Cells are tested in blocks of 8 x 8, when one of a block is first asked about, and only against boxes whose bounds
// hold them: no cell is tested twice, and a box elsewhere costs one comparison a block.
class BoxedCells {
 public:
  // Both must outlive this.
  BoxedCells(const costmap_2d::Costmap2D& costmap, const std::vector<nav_core::math::Box2d>& boxes);

  // Whether the centre of the cell, which is on the map, lies in a box.
  bool Contains(unsigned int mx, unsigned int my) {
    const BlockKey key = std::uint64_t{my / kBlockSide} << 32 | mx / kBlockSide;
    if (key != last_key_) {
      last_cells_ = CellsOf(key);
      last_key_ = key;
    }
    return (last_cells_ >> (my % kBlockSide * kBlockSide + mx % kBlockSide) & 1) != 0;
  }

 private:
  static constexpr unsigned int kBlockSide = 8;  // cells

  using BlockKey = std::uint64_t;  // its row in the upper half, its column in the lower
  using CellBits = std::uint64_t;  // bit y * 8 + x stands for cell (x, y) of a block

  // The cells that a box may hold, both ends included.
  struct Bounds {
    unsigned int first_x;
    unsigned int last_x;
    unsigned int first_y;
    unsigned int last_y;
    const nav_core::math::Box2d* box;
  };

  void AddBounds(const nav_core::math::Box2d& box);
  CellBits CellsOf(BlockKey key);
  CellBits TestBlock(BlockKey key) const;

  const costmap_2d::Costmap2D& costmap_;
  std::vector<Bounds> bounds_;  // of the boxes that may hold any cell
  std::unordered_map<BlockKey, CellBits> tested_;
  BlockKey last_key_ = ~BlockKey{0};  // the block that was asked about last; no map has this one
  CellBits last_cells_ = 0;
};

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_LOCAL_PLAN_BOXED_CELLS_H_
