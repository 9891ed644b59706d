#include "astar/astar.h"

#include <algorithm>
#include <cstdlib>
#include <queue>
#include <tuple>
#include <unordered_map>

inline namespace controller_base_platform {
namespace {

constexpr std::uint64_t kStraight = 70;
constexpr std::uint64_t kDiagonal = 99;
constexpr std::uint64_t kExtraUnit = 7;

struct Node {
  std::uint64_t cost = ~std::uint64_t{0};
  std::uint32_t parent = 0;
  std::uint16_t extra = 0;
  bool known = false, passable = false, priced = false, closed = false;
};

std::uint32_t KeyOf(int x, int y) { return static_cast<std::uint32_t>(y) << 16 | static_cast<std::uint32_t>(x); }
AStar::Vec2 CellOf(std::uint32_t key) {
  return {static_cast<std::uint16_t>(key & 0xffff), static_cast<std::uint16_t>(key >> 16)};
}

}  // namespace

std::vector<AStar::Vec2> AStar::Find(const Params& params) {
  std::unordered_map<std::uint32_t, Node> nodes;
  const auto passable = [&](int x, int y) {
    if (x < 0 || y < 0 || x >= params.width || y >= params.height) {
      return false;
    }
    Node& node = nodes[KeyOf(x, y)];
    if (!node.known) {
      node.known = true;
      node.passable = !params.is_passable || params.is_passable(CellOf(KeyOf(x, y)));
    }
    return node.passable;
  };
  for (const Vec2& end : {params.start, params.goal}) {
    if (end.x >= params.width || end.y >= params.height) {
      return {};
    }
  }
  const auto estimate = [&](int x, int y) {
    const auto dx = static_cast<std::uint64_t>(std::abs(x - params.goal.x));
    const auto dy = static_cast<std::uint64_t>(std::abs(y - params.goal.y));
    return kStraight * (dx + dy) - (params.allow_diagonal ? (2 * kStraight - kDiagonal) * std::min(dx, dy) : 0);
  };
  std::vector<Vec2> chain;
  if (!passable(params.start.x, params.start.y) || !passable(params.goal.x, params.goal.y)) {
    return chain;
  }
  using Entry = std::tuple<std::uint64_t, std::uint64_t, std::uint32_t>;  // cost through the cell, rest of it, cell
  std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
  const std::uint32_t start = KeyOf(params.start.x, params.start.y);
  nodes[start].cost = 0;
  open.emplace(0, 0, start);
  while (!open.empty()) {
    const std::uint32_t at = std::get<2>(open.top());
    open.pop();
    if (nodes[at].closed) {
      continue;
    }
    nodes[at].closed = true;
    const Vec2 cell = CellOf(at);
    if (cell == params.goal) {
      for (std::uint32_t key = at; key != start; key = nodes[key].parent) {
        chain.push_back(CellOf(key));
      }
      chain.push_back(params.start);
      std::reverse(chain.begin(), chain.end());
      return chain;
    }
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const bool diagonal = dx != 0 && dy != 0;
        if ((dx == 0 && dy == 0) || (diagonal && !params.allow_diagonal)) {
          continue;
        }
        if (!passable(cell.x + dx, cell.y + dy) ||
            (diagonal && (!passable(cell.x + dx, cell.y) || !passable(cell.x, cell.y + dy)))) {
          continue;
        }
        const std::uint32_t key = KeyOf(cell.x + dx, cell.y + dy);
        Node& next = nodes[key];
        if (params.extra_cost && !next.priced) {
          next.priced = true;
          next.extra = params.extra_cost(CellOf(key));
        }
        const std::uint64_t cost = nodes[at].cost + (diagonal ? kDiagonal : kStraight) + kExtraUnit * next.extra;
        if (cost < next.cost) {
          next.cost = cost;
          next.parent = at;
          const std::uint64_t rest = estimate(cell.x + dx, cell.y + dy);
          open.emplace(cost + rest, rest, key);
        }
      }
    }
  }
  return chain;
}

}  // namespace controller_base_platform
