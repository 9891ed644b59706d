// The search's queue against a plain sorted one.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "astar/block_allocator.h"
#include "astar/bucket_queue.h"
#include "astar/tile.h"

using controller_base_platform::grid_search::BucketQueue;
using controller_base_platform::grid_search::Cell;

namespace {

// Pushes and pops at random, keys up to `spread` above the last one popped; the cells' indices number the keys.
void ExpectSorted(std::int64_t lowest_key, int spread, std::uint32_t seed) {
  std::mt19937 engine(seed);
  std::uniform_int_distribution<int> above(0, spread);
  BlockAllocator allocator;
  BucketQueue queue(lowest_key, &allocator);
  std::multiset<std::int64_t> expected;
  std::vector<std::int64_t> keys;
  std::int64_t last = lowest_key;
  const auto pop = [&] {
    Cell cell{};
    ASSERT_TRUE(queue.Pop(&cell));
    last = keys[cell.index];
    ASSERT_EQ(last, *expected.begin());
    expected.erase(expected.begin());
  };
  for (int i = 0; i < 20000; ++i) {
    keys.push_back(last + above(engine));
    expected.insert(keys.back());
    queue.Push(keys.back(), {nullptr, static_cast<std::uint16_t>(i)});
    if (engine() % 3 != 0) {
      pop();
    }
  }
  while (!expected.empty()) {
    pop();
  }
  Cell cell{};
  EXPECT_FALSE(queue.Pop(&cell));
}

}  // namespace

TEST(BucketQueue, PopsTheSmallestKeyFirst) {
  for (const int spread : {0, 1, 99, 8191, 8192, 30000, 458844, static_cast<int>(BucketQueue::kReach) - 1}) {
    for (const std::int64_t lowest_key :
         {std::int64_t{0}, std::int64_t{8191}, std::int64_t{6487965}, std::int64_t{1} << 50}) {
      SCOPED_TRACE("spread " + std::to_string(spread) + ", lowest key " + std::to_string(lowest_key));
      ExpectSorted(lowest_key, spread, 1);
    }
  }
}

TEST(BucketQueue, PopsTheLatestOfEqualKeysFirst) {
  BlockAllocator allocator;
  BucketQueue queue(5, &allocator);
  for (std::uint16_t i = 0; i < 4; ++i) {
    queue.Push(7, {nullptr, i});
  }
  Cell cell{};
  for (int i = 3; i >= 0; --i) {
    ASSERT_TRUE(queue.Pop(&cell));
    EXPECT_EQ(cell.index, i);
  }
}
