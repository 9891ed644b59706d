#include "demo/pictures/ticks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace controller_base::demo {
namespace {

using testing::DoubleEq;
using testing::DoubleNear;
using testing::ElementsAre;

TEST(RoundTicks, AreStepsOfOneTwoOrFive) {
  EXPECT_THAT(RoundTicks(0.0, 1.0, 5),
              ElementsAre(0.0, DoubleNear(0.2, 1e-12), DoubleNear(0.4, 1e-12), DoubleNear(0.6, 1e-12),
                          DoubleNear(0.8, 1e-12), DoubleNear(1, 1e-12)));
  EXPECT_THAT(RoundTicks(0.0, 45.0, 12), ElementsAre(0, 5, 10, 15, 20, 25, 30, 35, 40, 45));
  EXPECT_THAT(RoundTicks(-0.3, 0.6, 5), ElementsAre(DoubleNear(-0.2, 1e-12), 0.0, DoubleNear(0.2, 1e-12),
                                                    DoubleNear(0.4, 1e-12), DoubleNear(0.6, 1e-12)));
  EXPECT_THAT(RoundTicks(0.0, 7000.0, 4), ElementsAre(0, 2000, 4000, 6000));
}

TEST(RoundTicks, ReachFromEdgeToEdgeFarFromZero) {
  EXPECT_THAT(RoundTicks(9999999.5, 10000000.5, 2), ElementsAre(9999999.5, 10000000.0, 10000000.5));
}

TEST(RoundBelow, IsOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_THAT(RoundBelow(1.0), DoubleEq(1.0));
  EXPECT_THAT(RoundBelow(1.9), DoubleEq(1.0));
  EXPECT_THAT(RoundBelow(4.99), DoubleEq(2.0));
  EXPECT_THAT(RoundBelow(0.09), DoubleEq(0.05));
  EXPECT_THAT(RoundBelow(1000.0), DoubleEq(1000.0));
  EXPECT_THAT(RoundBelow(780.0), DoubleEq(500.0));
}

TEST(TickText, HasTheDecimalsOfItsStep) {
  EXPECT_EQ(TickText(2.0, 1.0), "2");
  EXPECT_EQ(TickText(2.0, 0.5), "2.0");
  EXPECT_EQ(TickText(-0.25, 0.05), "-0.25");
  EXPECT_EQ(TickText(0.1, 0.1), "0.1");
  EXPECT_EQ(TickText(10000000.5, 0.5), "10000000.5");
  EXPECT_EQ(TickText(400.0, 100.0), "400");
}

}  // namespace
}  // namespace controller_base::demo
