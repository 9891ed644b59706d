#ifndef CONTROLLER_BASE_PLATFORM_ASTAR_H_
#define CONTROLLER_BASE_PLATFORM_ASTAR_H_

#include <cstdint>
#include <functional>
#include <vector>

inline namespace controller_base_platform {

class BlockAllocator;

// Cheapest path over the cells of a grid map that is only known through two callbacks.
//
//   AStar::Params request;
//   request.allow_diagonal = true;
//   request.width = 200, request.height = 100;
//   request.start = {3, 4}, request.goal = {190, 80};
//   request.is_passable = [&](const AStar::Vec2& cell) { return map.IsFree(cell.x, cell.y); };
//   BlockAllocator allocator;
//   const std::vector<AStar::Vec2> cells = AStar(&allocator).Find(request);
class AStar {
 public:
  // A cell: column `x` in [0, width), row `y` in [0, height).
  struct Vec2 {
    std::uint16_t x = 0;
    std::uint16_t y = 0;

    bool operator==(const Vec2& other) const { return x == other.x && y == other.y; }
    bool operator!=(const Vec2& other) const { return !(*this == other); }
  };

  // One request.
  struct Params {
    bool allow_diagonal = false;  // 8 neighbours when set, else the 4 that share a side
    std::uint16_t height = 0;     // rows
    std::uint16_t width = 0;      // columns
    Vec2 start;
    Vec2 goal;
    std::function<bool(const Vec2&)> is_passable;          // may the cell be entered? Empty: every cell may
    std::function<std::uint16_t(const Vec2&)> extra_cost;  // what entering it costs on top of the step. Empty: nothing
  };

  // `allocator` must not be null, must outlive the search object, and serves one search: every Find takes new memory
  // from it.
  explicit AStar(BlockAllocator* allocator) : allocator_(allocator) {}

  // The cells of a cheapest path from start to goal, both included; empty when there is none. An impassable or off-map
  // start or goal has none; a passable start that is the goal is a path of that one cell.
  //
  // Moves go to a neighbour on the map. A diagonal move never cuts a corner: both cells beside it must be passable.
  //
  //   # B     A -> B is allowed only when C and # are both passable
  //   A C
  //
  // The cost of a path is that of its steps plus the extra cost of every cell entered (the start costs nothing), in
  // whole numbers on one scale: a straight step 70, a diagonal step 99, one unit of extra cost 7, so that a straight
  // step weighs as much as an extra cost of 10. 99 / 70 is the square root of 2 to within 0.0051 %, hence a path
  // without extra cost is at most that much longer than the truly shortest one. No map and no extra cost overflows a
  // cost.
  //
  // The same request gives the same path. Each cell of the map is asked about at most once per call, in no particular
  // order and by small blocks, so cells near the search may be asked about without being entered; `extra_cost` is asked
  // of passable cells only. What a callback throws passes through. Time and memory grow with the cells that the search
  // looks at, not with the map. `params` is only read.
  std::vector<Vec2> Find(const Params& params);

 private:
  BlockAllocator* allocator_;
};

}  // namespace controller_base_platform

#endif  // CONTROLLER_BASE_PLATFORM_ASTAR_H_
