#include "controller_base/follower/event.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace controller_base::follower {
namespace {

TEST(EventKind, EachHasANameOfItsOwnByWhichItIsFound) {
  std::set<std::string> names;
  for (int kind = 0; kind <= static_cast<int>(EventKind::kStop); ++kind) {
    const auto typed = static_cast<EventKind>(kind);
    EXPECT_TRUE(names.insert(Name(typed)).second) << Name(typed);
    EXPECT_EQ(EventKindOf(Name(typed)), typed);
  }
  EXPECT_STREQ(Name(EventKind::kContact), "contact");
  EXPECT_STREQ(Name(EventKind::kStop), "stop");
}

TEST(EventKind, AnUnknownNameIsNone) {
  EXPECT_EQ(EventKindOf("contakt"), std::nullopt);
  EXPECT_EQ(EventKindOf(""), std::nullopt);
}

}  // namespace
}  // namespace controller_base::follower
