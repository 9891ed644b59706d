#include "controller_base/local_plan/boxed_cells.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace nav_controller::internal {
namespace {

using nav_core::math::Box2d;
using nav_core::math::Vec2d;

constexpr double kMargin = 0.01;  // metres around a box; more than any rounding of its corners

// The cells along one axis of a map between two coordinates. False when there is none.
bool CellsBetween(double lowest, double highest, double origin, double resolution, unsigned int size,
                  unsigned int& first, unsigned int& last) {
  const double from = (lowest - origin) / resolution;
  const double to = (highest - origin) / resolution;
  if (!(from < size && to >= 0.0)) {
    return false;
  }
  first = static_cast<unsigned int>(std::max(from, 0.0));
  last = static_cast<unsigned int>(std::min(to, size - 1.0));
  return true;
}

}  // namespace

BoxedCells::BoxedCells(const costmap_2d::Costmap2D& costmap, const std::vector<Box2d>& boxes) : costmap_(costmap) {
  bounds_.reserve(boxes.size());
  for (const Box2d& box : boxes) {
    AddBounds(box);
  }
}

// A box that is not finite contains no point.
void BoxedCells::AddBounds(const Box2d& box) {
  Vec2d lowest(std::numeric_limits<double>::max(), std::numeric_limits<double>::max());
  Vec2d highest(-lowest.x, -lowest.y);
  for (const Vec2d& corner : box.GetAllCorners()) {
    if (!std::isfinite(corner.x) || !std::isfinite(corner.y)) {
      return;
    }
    lowest = Vec2d(std::min(lowest.x, corner.x), std::min(lowest.y, corner.y));
    highest = Vec2d(std::max(highest.x, corner.x), std::max(highest.y, corner.y));
  }
  Bounds bounds{};
  bounds.box = &box;
  if (CellsBetween(lowest.x - kMargin, highest.x + kMargin, costmap_.getOriginX(), costmap_.getResolution(),
                   costmap_.getSizeInCellsX(), bounds.first_x, bounds.last_x) &&
      CellsBetween(lowest.y - kMargin, highest.y + kMargin, costmap_.getOriginY(), costmap_.getResolution(),
                   costmap_.getSizeInCellsY(), bounds.first_y, bounds.last_y)) {
    bounds_.push_back(bounds);
  }
}

BoxedCells::CellBits BoxedCells::CellsOf(BlockKey key) {
  if (bounds_.empty()) {
    return 0;
  }
  const auto [block, is_new] = tested_.try_emplace(key, 0);
  if (is_new) {
    block->second = TestBlock(key);
  }
  return block->second;
}

BoxedCells::CellBits BoxedCells::TestBlock(BlockKey key) const {
  const auto left = static_cast<unsigned int>(key) * kBlockSide;
  const auto top = static_cast<unsigned int>(key >> 32) * kBlockSide;
  CellBits cells = 0;
  for (const Bounds& bounds : bounds_) {
    const unsigned int end_x = std::min(left + kBlockSide, bounds.last_x + 1);
    const unsigned int end_y = std::min(top + kBlockSide, bounds.last_y + 1);
    for (unsigned int y = std::max(top, bounds.first_y); y < end_y; ++y) {
      for (unsigned int x = std::max(left, bounds.first_x); x < end_x; ++x) {
        Vec2d center;
        costmap_.mapToWorld(x, y, center.x, center.y);
        if (bounds.box->IsPointIn(center)) {
          cells |= CellBits{1} << ((y - top) * kBlockSide + x - left);
        }
      }
    }
  }
  return cells;
}

}  // namespace nav_controller::internal
