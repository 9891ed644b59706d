// The search's memory: what it hands out, and that it comes back.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "astar/block_allocator.h"

namespace {

bool IsAligned(const void* piece) { return reinterpret_cast<std::uintptr_t>(piece) % BlockAllocator::kAlignment == 0; }

}  // namespace

TEST(BlockAllocator, HoldsNothingBeforeItIsAsked) { EXPECT_EQ(BlockAllocator().held_bytes(), 0u); }

TEST(BlockAllocator, PiecesOfAnySizeAreAlignedWritableAndApart) {
  BlockAllocator allocator;
  std::vector<std::pair<unsigned char*, std::size_t>> pieces;
  for (const std::size_t bytes : {0u, 1u, 63u, 64u, 65u, 1000u, 30000u, 98303u, 98304u, 98305u, 1000000u, 1u}) {
    auto* const piece = static_cast<unsigned char*>(allocator.Allocate(bytes));
    ASSERT_NE(piece, nullptr);
    EXPECT_TRUE(IsAligned(piece)) << bytes;
    std::memset(piece, static_cast<int>(pieces.size()), bytes);
    pieces.emplace_back(piece, bytes);
  }
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    for (std::size_t k = 0; k < pieces[i].second; ++k) {
      ASSERT_EQ(pieces[i].first[k], i);
    }
  }
  EXPECT_NE(pieces[0].first, pieces[1].first);
}

TEST(BlockAllocator, SmallPiecesShareABlock) {
  BlockAllocator allocator;
  for (int i = 0; i < 100; ++i) {
    allocator.Allocate(64);
  }
  constexpr std::size_t kOwnBytes = 64;
  EXPECT_GE(allocator.held_bytes(), BlockAllocator::kBlockBytes);
  EXPECT_LE(allocator.held_bytes(), BlockAllocator::kBlockBytes + kOwnBytes);
  allocator.Allocate(2 * BlockAllocator::kBlockBytes);
  EXPECT_GE(allocator.held_bytes(), 3 * BlockAllocator::kBlockBytes);
  EXPECT_LE(allocator.held_bytes(), 3 * BlockAllocator::kBlockBytes + 2 * kOwnBytes);
}

TEST(BlockAllocator, AThreadsNextAllocatorGetsTheSameBlocks) {
  auto first = std::make_unique<BlockAllocator>();
  void* const piece = first->Allocate(100);
  first.reset();
  BlockAllocator next;
  EXPECT_EQ(next.Allocate(100), piece);
}

TEST(BlockAllocator, ManyBlocksComeAndGoWithThreads) {
  for (int i = 0; i < 3; ++i) {
    std::thread([] {
      BlockAllocator allocator;
      for (std::size_t k = 0; k < 2 * BlockAllocator::kCachedBlocks; ++k) {
        std::memset(allocator.Allocate(60000), 1, 60000);
      }
    }).join();
  }
}

TEST(BlockAllocator, OneThreadMayEndWhatAnotherBegan) {
  BlockAllocator allocator;
  std::thread([&allocator] { std::memset(allocator.Allocate(100), 1, 100); }).join();
  std::memset(allocator.Allocate(100), 2, 100);
}

TEST(BlockAllocator, ASizeThatCannotBeIsBadAlloc) {
  BlockAllocator allocator;
  EXPECT_THROW(allocator.Allocate(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
  EXPECT_NE(allocator.Allocate(1), nullptr);
}

// Ends after main: the thread's cache is gone by then and must not be used.
BlockAllocator& EndsLast() {
  static BlockAllocator allocator;
  return allocator;
}

TEST(BlockAllocator, MayOutliveTheThreadsOtherObjects) { EXPECT_NE(EndsLast().Allocate(10), nullptr); }
