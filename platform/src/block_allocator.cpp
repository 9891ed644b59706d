#include "controller_base/platform/block_allocator.h"

#include <limits>
#include <new>

inline namespace controller_base_platform {
namespace {

constexpr std::align_val_t kBlockAlignment{BlockAllocator::kAlignment};

}  // namespace

// The spare blocks of a thread, as a list. Trivially destructible, so that an allocator with static storage duration,
// which may end after the thread's other objects, still finds it.
class BlockAllocator::Cache {
 public:
  static Cache& OfThisThread() {
    static thread_local Cache cache;
    return cache;
  }

  // A block of kBlockBytes, from the cache or else from the system.
  Block* Take() {
    if (spare_ == nullptr) {
      return FromSystem(kBlockBytes);
    }
    Block* const block = spare_;
    spare_ = block->next;
    --count_;
    return block;
  }

  void Give(Block* block) {
    static thread_local const Emptier emptier;
    if (closed_ || block->bytes != kBlockBytes || count_ == kCachedBlocks) {
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
  // Frees what the cache holds when the thread ends.
  struct Emptier {
    Emptier() = default;
    Emptier(const Emptier&) = delete;
    Emptier& operator=(const Emptier&) = delete;
    ~Emptier() { OfThisThread().Close(); }
  };

  void Close() {
    closed_ = true;
    while (spare_ != nullptr) {
      ToSystem(Take());
    }
  }

  static void ToSystem(Block* block) { ::operator delete(block, kBlockAlignment); }

  Block* spare_ = nullptr;
  std::size_t count_ = 0;
  bool closed_ = false;  // the thread is ending: nothing is kept from now on
};

BlockAllocator::~BlockAllocator() {
  Cache& cache = Cache::OfThisThread();
  while (blocks_ != nullptr) {
    Block* const block = blocks_;
    blocks_ = block->next;
    cache.Give(block);
  }
}

void* BlockAllocator::Allocate(std::size_t bytes) {
  if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Block) - kAlignment) {
    throw std::bad_alloc();
  }
  // Never 0, so that every piece has an address of its own.
  const std::size_t rounded = bytes == 0 ? kAlignment : (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (rounded > kBlockBytes) {
    Block* const block = Cache::FromSystem(rounded);
    Adopt(block);
    return block + 1;
  }
  if (rounded > free_bytes_) {
    Block* const block = Cache::OfThisThread().Take();
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
