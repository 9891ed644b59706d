#include "astar/block_allocator.h"

#include <limits>
#include <new>

inline namespace controller_base_platform {

// The spare blocks of the running thread, as a list. All of its state is trivially destructible, so that an allocator
// with static storage duration, which may end after the thread's other objects, still finds it.
class BlockCache {
 public:
  using Block = BlockAllocator::Block;

  // A block of kBlockBytes, from the cache or else from the system.
  static Block* Take() {
    if (spare_ == nullptr) {
      return FromSystem(BlockAllocator::kBlockBytes);
    }
    Block* const block = spare_;
    spare_ = block->next;
    --count_;
    return block;
  }

  static void Give(Block* block) {
    thread_local const Owner owner;
    if (closed_ || block->bytes != BlockAllocator::kBlockBytes || count_ == BlockAllocator::kCachedBlocks) {
      ToSystem(block);
      return;
    }
    block->next = spare_;
    spare_ = block;
    ++count_;
  }

  static Block* FromSystem(std::size_t bytes) {
    return ::new (::operator new(sizeof(Block) + bytes, kBlockAlignment)) Block{nullptr, bytes};
  }

 private:
  // Empties the cache when the thread ends.
  struct Owner {
    Owner() = default;
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() {
      closed_ = true;
      while (spare_ != nullptr) {
        ToSystem(Take());
      }
    }
  };

  static void ToSystem(Block* block) { ::operator delete(block, kBlockAlignment); }

  static constexpr std::align_val_t kBlockAlignment{BlockAllocator::kAlignment};
  static thread_local Block* spare_;
  static thread_local std::size_t count_;
  static thread_local bool closed_;  // the thread is ending: keep nothing any more
};

thread_local BlockAllocator::Block* BlockCache::spare_ = nullptr;
thread_local std::size_t BlockCache::count_ = 0;
thread_local bool BlockCache::closed_ = false;

BlockAllocator::~BlockAllocator() {
  while (blocks_ != nullptr) {
    Block* const block = blocks_;
    blocks_ = block->next;
    BlockCache::Give(block);
  }
}

void* BlockAllocator::Allocate(std::size_t bytes) {
  if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Block) - kAlignment) {
    throw std::bad_alloc();
  }
  // Never 0, so that every piece has an address of its own.
  const std::size_t rounded = bytes == 0 ? kAlignment : (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (rounded > kBlockBytes) {
    Block* const block = BlockCache::FromSystem(rounded);
    Adopt(block);
    return block + 1;
  }
  if (rounded > free_bytes_) {
    Block* const block = BlockCache::Take();
    Adopt(block);
    free_ = reinterpret_cast<char*>(block + 1);
    free_bytes_ = kBlockBytes;
  }
  char* const piece = free_;
  free_ += rounded;
  free_bytes_ -= rounded;
  return piece;
}

void BlockAllocator::Adopt(Block* block) {
  block->next = blocks_;
  blocks_ = block;
  held_bytes_ += sizeof(Block) + block->bytes;
}

}  // namespace controller_base_platform
