#include "robot/bumper.h"

#include <gtest/gtest.h>

#include <cmath>

namespace controller_base_test {
namespace {

using controller_base::robot::BumperPresses;
using controller_base::robot::kBack;
using controller_base::robot::kFront;
using controller_base::robot::kLeft;
using controller_base::robot::kRight;
using controller_base::robot::SectorOfPoint;
using controller_base::robot::Sectors;

Sectors SectorAt(double degrees) {
  const double bearing = degrees * 3.14159265358979323846 / 180.0;
  return SectorOfPoint(0.17 * std::cos(bearing), 0.17 * std::sin(bearing));
}

TEST(SectorOfPoint, FrontIsWithin30DegreesOfStraightAhead) {
  EXPECT_EQ(SectorAt(0.0), kFront);
  EXPECT_EQ(SectorAt(29.9), kFront);
  EXPECT_EQ(SectorAt(-29.9), kFront);
  EXPECT_EQ(SectorAt(30.1), kLeft);
  EXPECT_EQ(SectorAt(-30.1), kRight);
}

TEST(SectorOfPoint, TheSidesEndSquareToTheRobot) {
  EXPECT_EQ(SectorAt(89.9), kLeft);
  EXPECT_EQ(SectorAt(-89.9), kRight);
  EXPECT_EQ(SectorAt(90.1), kBack);
  EXPECT_EQ(SectorAt(-90.1), kBack);
  EXPECT_EQ(SectorAt(180.0), kBack);
}

TEST(SectorOfPoint, WhatHasNoBearingHasNoSector) {
  EXPECT_EQ(SectorOfPoint(0.0, 0.0), 0);
  EXPECT_EQ(SectorOfPoint(std::nan(""), 0.1), 0);
  EXPECT_EQ(SectorOfPoint(0.1, HUGE_VAL), 0);
}

class BumperPressesTest : public testing::Test {
 protected:
  // A message, `seconds` after the one before.
  Sectors After(double seconds, Sectors pressed) {
    time_ += ros::Duration(seconds);
    return presses_.Update(pressed, time_);
  }

  BumperPresses presses_;
  ros::Time time_{100.0};
};

TEST_F(BumperPressesTest, APressIsToldOnceHoweverLongItLasts) {
  EXPECT_EQ(After(0.05, kLeft), kLeft);
  for (int message = 0; message < 100; ++message) {
    EXPECT_EQ(After(0.05, kLeft), 0);
  }
  EXPECT_EQ(After(0.05, 0), 0);
  EXPECT_EQ(After(0.05, kLeft), kLeft);
}

TEST_F(BumperPressesTest, WhatIsPressedInAdditionIsToldAlone) {
  EXPECT_EQ(After(0.05, kLeft), kLeft);
  EXPECT_EQ(After(0.05, kLeft | kBack), kBack);
}

TEST_F(BumperPressesTest, APressThatRollsToAndFroIsToldOnceForEachSector) {
  EXPECT_EQ(After(0.05, kLeft), kLeft);
  EXPECT_EQ(After(0.05, kFront), kFront);
  for (int message = 0; message < 10; ++message) {
    EXPECT_EQ(After(0.05, kLeft), 0);
    EXPECT_EQ(After(0.05, kFront), 0);
  }
}

TEST_F(BumperPressesTest, SilenceEndsAPress) {
  EXPECT_EQ(After(0.0, kRight), kRight);
  EXPECT_EQ(After(0.5, kRight), 0);
  EXPECT_EQ(After(0.51, kRight), kRight);
}

TEST_F(BumperPressesTest, AClockThatWasSetBackEndsAPress) {
  EXPECT_EQ(After(0.0, kRight), kRight);
  EXPECT_EQ(After(-50.0, kRight), kRight);
}

TEST_F(BumperPressesTest, AFirstPressAtTimeZeroIsTold) { EXPECT_EQ(presses_.Update(kLeft, ros::Time(0.0)), kLeft); }

}  // namespace
}  // namespace controller_base_test
