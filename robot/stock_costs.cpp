#include "robot/stock_costs.h"

#include <algorithm>
#include <cstddef>

namespace controller_base::robot {
namespace {

constexpr int kHighestStockCost = 252;  // beside an obstacle; from here up a byte is a kind of cell, not a cost
constexpr int kLowestCost = 1;
constexpr int kLowestRingCost = 94;  // the lowest byte that the shortcut smoother does not cross
constexpr int kHighestCost = 127;    // the largest byte that stays positive when read as signed

bool IsClosed(std::uint8_t stock) { return stock > kHighestStockCost; }

// The share of `stock` in 0..252, between `low` and `high`.
std::uint8_t Scaled(std::uint8_t stock, int low, int high) {
  return static_cast<std::uint8_t>(low + stock * (high - low) / kHighestStockCost);
}

// Whether a cell around (mx, my), or the cell itself, is closed.
bool TouchesClosed(const std::uint8_t* stock, unsigned int size_x, unsigned int size_y, unsigned int mx,
                   unsigned int my) {
  const unsigned int first_x = mx > 0 ? mx - 1 : 0;
  const unsigned int last_x = std::min(mx + 1, size_x - 1);
  const unsigned int last_y = std::min(my + 1, size_y - 1);
  for (unsigned int y = my > 0 ? my - 1 : 0; y <= last_y; ++y) {
    const std::uint8_t* row = stock + static_cast<std::size_t>(y) * size_x;
    if (std::any_of(row + first_x, row + last_x + 1, IsClosed)) {
      return true;
    }
  }
  return false;
}

}  // namespace

void ReadStockCosts(const std::uint8_t* stock, unsigned int size_x, unsigned int size_y,
                    std::vector<std::uint8_t>* costs) {
  costs->resize(static_cast<std::size_t>(size_x) * size_y);
  auto cost = costs->begin();
  for (unsigned int my = 0; my < size_y; ++my) {
    for (unsigned int mx = 0; mx < size_x; ++mx, ++cost) {
      const std::uint8_t byte = stock[static_cast<std::size_t>(my) * size_x + mx];
      if (IsClosed(byte)) {
        *cost = byte;
      } else if (TouchesClosed(stock, size_x, size_y, mx, my)) {
        *cost = Scaled(byte, kLowestRingCost, kHighestCost);
      } else {
        *cost = Scaled(byte, kLowestCost, kLowestRingCost - 1);
      }
    }
  }
}

}  // namespace controller_base::robot
