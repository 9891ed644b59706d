#include "robot/input_watch.h"

#include <gmock/gmock.h>

#include <string>

namespace controller_base_test {
namespace {

using controller_base::robot::ClockWatch;
using controller_base::robot::InputWatch;
using testing::HasSubstr;
using testing::Optional;

class InputWatchTest : public testing::Test {
 protected:
  // A message that arrives at `time`, `delay` seconds after its stamp.
  void Receive(double time, double delay = 0.0) { watch_.Receive(ros::Time(time - delay), ros::Time(time)); }
  std::optional<std::string> ProblemAt(double time) const { return watch_.Problem(ros::Time(time)); }

  InputWatch watch_{"scan", 0.2, 0.5};
};

TEST_F(InputWatchTest, NothingCameYet) { EXPECT_EQ(ProblemAt(100.0), "scan: none yet"); }

TEST_F(InputWatchTest, AMessageIsGoodForTheTimeout) {
  Receive(100.0);
  EXPECT_EQ(ProblemAt(100.0), std::nullopt);
  EXPECT_EQ(ProblemAt(100.19), std::nullopt);
  EXPECT_EQ(ProblemAt(100.21), "scan: none for 0.21 s, since 100.000");
}

TEST_F(InputWatchTest, ItIsWellAgainWithTheNextMessage) {
  Receive(100.0);
  EXPECT_NE(ProblemAt(105.0), std::nullopt);
  Receive(105.0);
  EXPECT_EQ(ProblemAt(105.1), std::nullopt);
}

TEST_F(InputWatchTest, ADelayIsAllowedUpToItsLimit) {
  Receive(100.0, 0.49);
  EXPECT_EQ(ProblemAt(100.1), std::nullopt);
  Receive(101.0, 0.51);
  EXPECT_THAT(ProblemAt(101.0), Optional(HasSubstr("it came 0.51 s after its stamp; 0.50 s are allowed")));
  Receive(102.0, -0.51);
  EXPECT_THAT(ProblemAt(102.0), Optional(HasSubstr("its stamp lies 0.51 s in the future")));
}

TEST_F(InputWatchTest, AStampThatStandsStillIsNoNewMessage) {
  watch_.Receive(ros::Time(100.0), ros::Time(100.0));
  watch_.Receive(ros::Time(100.0), ros::Time(100.3));
  EXPECT_THAT(ProblemAt(100.3), Optional(HasSubstr("its stamp stands still")));
}

TEST_F(InputWatchTest, ARejectedMessageDoesNotCountAndSaysWhy) {
  Receive(100.0);
  watch_.Reject("its position is not a number");
  EXPECT_EQ(ProblemAt(100.1), std::nullopt);
  EXPECT_THAT(ProblemAt(100.3), Optional(HasSubstr("its position is not a number")));
  Receive(100.4);
  EXPECT_EQ(ProblemAt(100.4), std::nullopt);
  EXPECT_EQ(ProblemAt(100.7), "scan: none for 0.30 s, since 100.400");
}

TEST_F(InputWatchTest, AClockThatWasSetBackBeginsAnew) {
  Receive(100.0);
  EXPECT_NE(ProblemAt(50.0), std::nullopt);
  Receive(50.1);
  EXPECT_EQ(ProblemAt(50.2), std::nullopt);
}

TEST(ClockWatch, AStandingClockIsToldAfterTheTimeout) {
  ClockWatch watch(0.2);
  EXPECT_EQ(watch.Problem(ros::Time(5.0), ros::SteadyTime(1.0)), std::nullopt);
  EXPECT_EQ(watch.Problem(ros::Time(5.0), ros::SteadyTime(1.19)), std::nullopt);
  EXPECT_EQ(watch.Problem(ros::Time(5.0), ros::SteadyTime(1.25)), "clock: stands still for 0.25 s, at 5.000");
  EXPECT_EQ(watch.Problem(ros::Time(5.01), ros::SteadyTime(1.3)), std::nullopt);
  EXPECT_EQ(watch.Problem(ros::Time(4.0), ros::SteadyTime(1.6)), std::nullopt);
}

TEST(ClockWatch, ThereMayBeNoClockYet) {
  ClockWatch watch(0.2);
  EXPECT_EQ(watch.Problem(ros::Time(), ros::SteadyTime(1.0)), "clock: none yet");
}

}  // namespace
}  // namespace controller_base_test
