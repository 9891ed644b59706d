#ifndef PLATFORM_ASTAR_BUCKET_QUEUE_H_
#define PLATFORM_ASTAR_BUCKET_QUEUE_H_

#include <cstddef>
#include <cstdint>

#include "astar/block_allocator.h"
#include "astar/tile.h"

inline namespace controller_base_platform {
namespace grid_search {

// A monotone priority queue of cells with whole-number keys: the smallest key first, of equal ones the latest first. No
// key may be smaller than the last one popped, nor larger than it by kReach or more.
//
// Keys are cut into windows of 8192. The window of the smallest key has a bucket for each key, a later one is one heap
// of cells that is sorted into the buckets when its turn comes. A cell may be in the queue several times.
class BucketQueue {
 public:
  struct Cell {
    Tile* tile;
    std::uint16_t index;  // in the tile's nodes
  };

  explicit BucketQueue(BlockAllocator* allocator)
      : allocator_(allocator), buckets_(static_cast<Entry**>(allocator->Allocate(kWindow * sizeof(Entry*)))) {}

  void Push(std::uint64_t key, Cell cell) {
    Entry* const entry = NewEntry();
    *entry = {nullptr, cell.tile, cell.index, static_cast<std::uint16_t>(key % kWindow)};
    const std::uint64_t window = key / kWindow;
    if (window == window_) {
      PutIntoBucket(entry);
    } else {
      PutAside(entry, window % kLaterWindows);
    }
  }

  // Takes out a cell with the smallest key; false when there is none.
  bool Pop(Cell* cell) {
    while (used_[word_] == 0) {
      if (++word_ == kWords && !OpenNextWindow()) {
        return false;
      }
    }
    Entry** const bucket = buckets_ + word_ * 64 + LowestBit(used_[word_]);
    Entry* const entry = *bucket;
    *cell = {entry->tile, entry->index};
    *bucket = entry->next;
    if (entry->next == nullptr) {
      used_[word_] &= used_[word_] - 1;
    }
    entry->next = spare_;
    spare_ = entry;
    return true;
  }

 private:
  static constexpr unsigned kWindow = 8192;
  static constexpr unsigned kWords = kWindow / 64;
  static constexpr unsigned kLaterWindows = 64;

 public:
  static constexpr std::uint64_t kReach = std::uint64_t{kWindow} * (kLaterWindows - 1);

 private:
  struct Entry {
    Entry* next;
    Tile* tile;
    std::uint16_t index;
    std::uint16_t bucket;
  };

  static constexpr std::size_t kEntriesAtOnce = 128;

  static unsigned LowestBit(std::uint64_t word) { return static_cast<unsigned>(__builtin_ctzll(word)); }

  Entry* NewEntry() {
    if (spare_ != nullptr) {
      Entry* const entry = spare_;
      spare_ = entry->next;
      return entry;
    }
    if (fresh_ == fresh_end_) {
      fresh_ = static_cast<Entry*>(allocator_->Allocate(kEntriesAtOnce * sizeof(Entry)));
      fresh_end_ = fresh_ + kEntriesAtOnce;
    }
    return fresh_++;
  }

  void PutIntoBucket(Entry* entry) {
    const unsigned word = entry->bucket / 64U;
    const std::uint64_t bit = std::uint64_t{1} << (entry->bucket % 64U);
    entry->next = (used_[word] & bit) != 0 ? buckets_[entry->bucket] : nullptr;
    buckets_[entry->bucket] = entry;
    used_[word] |= bit;
  }

  void PutAside(Entry* entry, std::size_t window) {
    entry->next = later_[window];
    later_[window] = entry;
    later_used_ |= std::uint64_t{1} << window;
  }

  bool OpenNextWindow() {
    word_ = 0;
    if (later_used_ == 0) {
      return false;
    }
    const unsigned here = static_cast<unsigned>(window_ % kLaterWindows);
    const std::uint64_t from_here = here == 0 ? later_used_ : later_used_ >> here | later_used_ << (64 - here);
    window_ += LowestBit(from_here);
    const std::size_t window = window_ % kLaterWindows;
    Entry* entry = later_[window];
    later_[window] = nullptr;
    later_used_ &= ~(std::uint64_t{1} << window);
    while (entry != nullptr) {
      Entry* const next = entry->next;
      PutIntoBucket(entry);
      entry = next;
    }
    return true;
  }

  BlockAllocator* const allocator_;
  Entry** const buckets_;  // by key % kWindow; read only where `used_` has a bit
  std::uint64_t used_[kWords] = {};
  unsigned word_ = 0;         // no bucket of an earlier word is used any more
  std::uint64_t window_ = 0;  // number of the window that has buckets
  Entry* later_[kLaterWindows] = {};
  std::uint64_t later_used_ = 0;
  Entry* spare_ = nullptr;  // popped, to be used again
  Entry* fresh_ = nullptr;
  Entry* fresh_end_ = nullptr;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_BUCKET_QUEUE_H_
