// Differences of times, to the last bit: those of ros::Duration, and exact where that one throws.
#include "controller_base/common/time_difference.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <ros/duration.h>
#include <ros/time.h>

#include <cstdint>

namespace {

using nav_controller::internal::NanosecondsBetween;
using nav_controller::internal::SecondsBetween;

constexpr std::uint32_t kLastSecond = 4294967295U;
constexpr std::uint32_t kLastNanosecond = 999999999U;

TEST(TimeDifference, NoTimeIsZero) {
  for (const ros::Time& time : {ros::Time(0, 0), ros::Time(100, 300000000), ros::Time(kLastSecond, kLastNanosecond)}) {
    EXPECT_EQ(NanosecondsBetween(time, time), 0);
    EXPECT_EQ(SecondsBetween(time, time), 0.0);
  }
}

// A negative difference is whole seconds, rounded down, plus a positive rest: -1 + 0.7, which is not -0.3.
TEST(TimeDifference, ANegativeDifferenceRoundsAsWholeSecondsPlusTheRest) {
  const ros::Time earlier(10, 300000000);
  const ros::Time later(10, 0);
  EXPECT_EQ(NanosecondsBetween(earlier, later), -300000000);
  EXPECT_EQ(SecondsBetween(earlier, later), -1.0 + 700000000 * 1e-9);
  EXPECT_NE(SecondsBetween(earlier, later), -0.3);
  EXPECT_EQ(SecondsBetween(later, earlier), 300000000 * 1e-9);
  EXPECT_EQ(SecondsBetween(ros::Time(12, 0), ros::Time(10, 0)), -2.0);
  EXPECT_EQ(SecondsBetween(ros::Time(12, 1), ros::Time(10, 0)), -3.0 + 999999999 * 1e-9);
  EXPECT_EQ(SecondsBetween(ros::Time(12, 0), ros::Time(10, 1)), -2.0 + 1 * 1e-9);
}

TEST(TimeDifference, HoldsFromOneEndOfTimeToTheOther) {
  const ros::Time first(0, 0);
  const ros::Time last(kLastSecond, kLastNanosecond);
  EXPECT_EQ(NanosecondsBetween(first, last), 4294967295999999999);
  EXPECT_EQ(NanosecondsBetween(last, first), -4294967295999999999);
  EXPECT_EQ(SecondsBetween(first, last), 4294967295.0 + 999999999 * 1e-9);
  EXPECT_EQ(SecondsBetween(last, first), -4294967296.0 + 1 * 1e-9);
}

ros::Time AnyTime() {
  const auto seconds = *rc::gen::inRange<std::uint32_t>(0, 0x7FFFFFFF);
  const auto nanoseconds = *rc::gen::oneOf(rc::gen::element<std::uint32_t>(0, 1, 500000000, kLastNanosecond),
                                           rc::gen::inRange<std::uint32_t>(0, kLastNanosecond + 1));
  return ros::Time(seconds, nanoseconds);
}

RC_GTEST_PROP(TimeDifference, IsThatOfRosToTheLastBit, ()) {
  const ros::Time earlier = AnyTime();
  const ros::Time later = AnyTime();
  RC_ASSERT(SecondsBetween(earlier, later) == (later - earlier).toSec());
  RC_ASSERT(NanosecondsBetween(earlier, later) == (later - earlier).toNSec());
}

}  // namespace
