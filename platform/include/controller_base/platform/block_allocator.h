#ifndef CONTROLLER_BASE_PLATFORM_BLOCK_ALLOCATOR_H_
#define CONTROLLER_BASE_PLATFORM_BLOCK_ALLOCATOR_H_

#include <cstddef>
#include <limits>
#include <new>
#include <type_traits>

inline namespace controller_base_platform {

// Memory for one search: handed out piece by piece, given back all at once.
//
//   BlockAllocator allocator;          // holds nothing yet
//   AStar astar(&allocator);
//   const auto cells = astar.Find(params);
//                                      // the end of `allocator` gives back everything
//
// Pieces are cut from blocks of kBlockBytes; a piece that does not fit one gets a block of its own size. Nothing is
// given back before the allocator ends, and no destructor is run on what was placed there.
//
// Blocks of the common size go to a cache of the destroying thread, which keeps at most kCachedBlocks of them for the
// thread's next allocator and frees them when the thread ends: a planner that searches in every control cycle then does
// not fetch fresh pages from the system each time. Everything else is freed at once.
//
// An allocator may move from thread to thread, but only one may use it at a time.
class BlockAllocator {
 public:
  // What fits into a block.
  static constexpr std::size_t kBlockBytes = std::size_t{96} * 1024;
  // 4 MB a thread at most: enough for a search over some 350 000 cells.
  static constexpr std::size_t kCachedBlocks = 40;
  // Every piece starts on a cache line of its own.
  static constexpr std::size_t kAlignment = 64;

  BlockAllocator() = default;
  ~BlockAllocator();
  BlockAllocator(const BlockAllocator&) = delete;
  BlockAllocator& operator=(const BlockAllocator&) = delete;

  // `bytes` of uninitialised memory, aligned to kAlignment and valid until the allocator ends. 0 bytes: a valid pointer
  // that must not be read. Throws std::bad_alloc when there is no memory, and keeps what it handed out before.
  void* Allocate(std::size_t bytes);

  // Room for `count` objects of type T that need neither constructor nor destructor, uninitialised.
  template <typename T>
  T* AllocateArray(std::size_t count) {
    static_assert(std::is_trivially_default_constructible_v<T> && std::is_trivially_destructible_v<T>);
    static_assert(alignof(T) <= kAlignment);
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      throw std::bad_alloc();
    }
    return static_cast<T*>(Allocate(count * sizeof(T)));
  }

  // Bytes of all blocks that this allocator holds now, what it needs for itself included.
  std::size_t held_bytes() const { return held_bytes_; }

 private:
  class Cache;

  // The head of a block; what is handed out follows it.
  struct alignas(kAlignment) Block {
    Block* next;
    std::size_t bytes;  // that follow
  };

  void Adopt(Block* block);

  Block* blocks_ = nullptr;  // newest first
  char* free_ = nullptr;     // the unused rest of a block
  std::size_t free_bytes_ = 0;
  std::size_t held_bytes_ = 0;
};

}  // namespace controller_base_platform

#endif  // CONTROLLER_BASE_PLATFORM_BLOCK_ALLOCATOR_H_
