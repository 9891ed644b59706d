#ifndef PLATFORM_ASTAR_JUMP_POINT_SEARCH_H_
#define PLATFORM_ASTAR_JUMP_POINT_SEARCH_H_

#include <vector>

#include "controller_base/platform/astar.h"

// A cheapest path on a grid by jump point search: A* over the exact distance on an empty map, in which
//   - of paths that are as good as each other only one is followed: the other moves are pruned, given the move that led
//     to a cell (successor_table.h);
//   - the one move that is left is repeated at once, without the queue, up to a cell that has several, a jump point.
//     Rows and columns are bits of a word, so that a straight jump takes a few operations (line.h);
//   - a diagonal jump starts straight jumps from the cells that it passes, and queues only where those end and where it
//     ends itself.
//
// Sources: D. Harabor and A. Grastien, "Online graph pruning for pathfinding on grid maps", AAAI 2011, for pruning and
// jumps; the same, "Improving jump point search", ICAPS 2014, for jumps by blocks of bits and for diagonal jumps that
// are not queued on their way.
//
// Those know passable cells and walls, all of them beforehand. Here a search also meets
//   - extra costs: what is pruned depends on how the extra costs of a cell and of the cells beside it compare. A jump
//     stops at a cell that has one, or has a neighbour with one; from there on moves are made step by step;
//   - unknown ground: cells are asked about, by blocks, when the search goes on from one of their neighbours, and not
//     before (tile_map.h). A jump stops at a cell with such a neighbour.
// Both come down to one rule: a jump passes a cell only when the cell and its neighbours are known, passable or not,
// and have no extra cost.
inline namespace controller_base_platform {
namespace grid_search {

// What AStar::Find promises, for a start and a goal on the map.
std::vector<AStar::Vec2> FindCheapestPath(const AStar::Params& params, BlockAllocator* allocator);

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_JUMP_POINT_SEARCH_H_
