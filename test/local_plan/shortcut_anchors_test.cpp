// Which poses a path keeps, and which lines are tested to find them, against the rule step by step.
#include "controller_base/local_plan/shortcut_anchors.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

using nav_controller::internal::VisitShortcutAnchors;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Line = std::pair<std::size_t, std::size_t>;

struct Shortcuts {
  std::vector<std::size_t> kept;
  std::vector<Line> tested;  // in order, repeated ones too
  bool operator==(const Shortcuts& other) const { return kept == other.kept && tested == other.tested; }
};

// `is_free(i, j)` for i + 2 <= j.
template <typename IsFree>
Shortcuts ShortcutsOf(std::size_t poses, IsFree&& is_free) {
  Shortcuts shortcuts;
  const auto sees = [&](std::size_t from, std::size_t to) {
    shortcuts.tested.emplace_back(from, to);
    return is_free(from, to);
  };
  VisitShortcutAnchors(poses, sees, [&](std::size_t kept) { shortcuts.kept.push_back(kept); });
  return shortcuts;
}

template <typename IsFree>
Shortcuts PlainShortcutsOf(std::size_t n, IsFree&& is_free) {
  Shortcuts shortcuts;
  std::size_t i = 0;
  while (i < n - 1) {
    shortcuts.kept.push_back(i);
    std::size_t j = n - 1;
    if (j <= i + 1) {
      break;
    }
    while (j > i + 1) {
      shortcuts.tested.emplace_back(i, j);
      if (is_free(i, j)) {
        break;
      }
      --j;
    }
    if (j == n - 1) {
      break;
    }
    i = j;
  }
  shortcuts.kept.push_back(n - 1);
  return shortcuts;
}

bool AllFree(std::size_t, std::size_t) { return true; }
bool NoneFree(std::size_t, std::size_t) { return false; }

TEST(ShortcutAnchors, UpToTwoPosesAreKeptWithoutATest) {
  for (std::size_t poses = 0; poses <= 2; ++poses) {
    const Shortcuts shortcuts = ShortcutsOf(poses, NoneFree);
    EXPECT_EQ(shortcuts.kept.size(), poses);
    EXPECT_THAT(shortcuts.tested, IsEmpty());
  }
}

TEST(ShortcutAnchors, OpenGroundTakesOneTest) {
  EXPECT_THAT(ShortcutsOf(1000, AllFree).kept, ElementsAre(0, 999));
  EXPECT_THAT(ShortcutsOf(1000, AllFree).tested, ElementsAre(Pair(0, 999)));
}

TEST(ShortcutAnchors, WhereNothingIsFreeEachPairIsTestedOnceAndNeighboursNever) {
  const Shortcuts shortcuts = ShortcutsOf(5, NoneFree);
  EXPECT_THAT(shortcuts.kept, ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(shortcuts.tested, ElementsAre(Pair(0, 4), Pair(0, 3), Pair(0, 2), Pair(1, 4), Pair(1, 3), Pair(2, 4)));
}

TEST(ShortcutAnchors, KeepAndTestWhatTheRuleSaysForEveryLineOfSight) {
  for (std::size_t poses = 1; poses <= 7; ++poses) {
    std::vector<std::size_t> bit_of(poses * poses, 0);
    std::size_t bits = 0;
    for (std::size_t i = 0; i < poses; ++i) {
      for (std::size_t j = i + 2; j < poses; ++j) {
        bit_of[i * poses + j] = bits++;
      }
    }
    for (std::uint32_t free_lines = 0; free_lines < 1U << bits; ++free_lines) {
      const auto is_free = [&](std::size_t i, std::size_t j) { return (free_lines >> bit_of[i * poses + j] & 1) != 0; };
      ASSERT_TRUE(ShortcutsOf(poses, is_free) == PlainShortcutsOf(poses, is_free))
          << poses << " poses, free lines " << free_lines;
    }
  }
}

}  // namespace
