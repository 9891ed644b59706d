#ifndef ASTAR_BLOCK_ALLOCATOR_H_
#define ASTAR_BLOCK_ALLOCATOR_H_

class BlockAllocator {};

#endif  // ASTAR_BLOCK_ALLOCATOR_H_
