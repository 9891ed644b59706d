#ifndef PLATFORM_ASTAR_BUCKET_QUEUE_H_
#define PLATFORM_ASTAR_BUCKET_QUEUE_H_

#include <cstddef>
#include <cstdint>

#include "astar/moves.h"
#include "astar/tile.h"
#include "controller_base/platform/block_allocator.h"

inline namespace controller_base_platform {
namespace grid_search {

// A monotone priority queue of cells with whole-number keys: the smallest key first, of equal ones the latest first. No
// key may be smaller than the last one popped (at first: the lowest key), nor larger by kReach or more. A cell may be
// queued several times.
//
// Keys are cut into windows of 8192. The window of the smallest key has a bucket for each key; each later window is one
// list, whose cells go to the buckets when its turn comes.
class BucketQueue {
 private:
  static constexpr unsigned kWindow = 8192;
  static constexpr unsigned kWords = kWindow / 64;
  static constexpr unsigned kLaterWindows = 64;

 public:
  static constexpr std::int64_t kReach = std::int64_t{kWindow} * (kLaterWindows - 1);

  BucketQueue(std::int64_t lowest_key, BlockAllocator* allocator)
      : allocator_(allocator),
        buckets_(allocator->AllocateArray<Bucket>(kWindow)),
        window_(static_cast<std::uint64_t>(lowest_key) / kWindow) {}

  void Push(std::int64_t key, Cell cell) {
    Entry* const entry = NewEntry();
    const auto unsigned_key = static_cast<std::uint64_t>(key);
    *entry = {nullptr, cell.tile, cell.index, static_cast<std::uint16_t>(unsigned_key % kWindow)};
    const std::uint64_t window = unsigned_key / kWindow;
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
    Bucket& bucket = buckets_[std::size_t{word_} * 64 + LowestBit(used_[word_])];
    Entry* const entry = bucket.latest;
    *cell = {entry->tile, entry->index};
    bucket.latest = entry->next;
    if (entry->next == nullptr) {
      used_[word_] &= used_[word_] - 1;
    }
    entry->next = spare_;
    spare_ = entry;
    return true;
  }

 private:
  struct Entry {
    Entry* next;
    Tile* tile;
    std::uint16_t index;
    std::uint16_t bucket;
  };
  struct Bucket {
    Entry* latest;  // the others follow
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
      fresh_ = allocator_->AllocateArray<Entry>(kEntriesAtOnce);
      fresh_end_ = fresh_ + kEntriesAtOnce;
    }
    return fresh_++;
  }

  void PutIntoBucket(Entry* entry) {
    std::uint64_t& word = used_[entry->bucket / 64U];
    const std::uint64_t bit = std::uint64_t{1} << (entry->bucket % 64U);
    Bucket& bucket = buckets_[entry->bucket];
    entry->next = (word & bit) != 0 ? bucket.latest : nullptr;
    bucket.latest = entry;
    word |= bit;
  }

  void PutAside(Entry* entry, std::size_t window) {
    entry->next = later_[window];
    later_[window] = entry;
    later_used_ |= std::uint64_t{1} << window;
  }

  // Fills the buckets from the next window that has cells; false when none has.
  bool OpenNextWindow() {
    word_ = 0;
    if (later_used_ == 0) {
      return false;
    }
    const auto here = static_cast<unsigned>(window_ % kLaterWindows);
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
  Bucket* const buckets_;            // read only where `used_` has a bit
  std::uint64_t window_;             // number of the window that has the buckets
  std::uint64_t used_[kWords] = {};  // which buckets hold cells
  unsigned word_ = 0;                // no word of `used_` before this one has a bit
  Entry* later_[kLaterWindows] = {};
  std::uint64_t later_used_ = 0;
  Entry* spare_ = nullptr;  // popped, to be used again
  Entry* fresh_ = nullptr;  // never used yet
  Entry* fresh_end_ = nullptr;
};

}  // namespace grid_search
}  // namespace controller_base_platform

#endif  // PLATFORM_ASTAR_BUCKET_QUEUE_H_
