#include "robot/laser_marks.h"

#include <gtest/gtest.h>
#include <sensor_msgs/LaserScan.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "test/support/paths.h"

namespace controller_base_test {
namespace {

using controller_base::robot::Grid;
using controller_base::robot::GridBytes;
using controller_base::robot::LaserMarks;

constexpr double kPi = 3.14159265358979323846;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kRangeMin = 0.1F;
constexpr float kRangeMax = 0.9F;

// One ray after the other, from straight ahead on, a quarter turn to the left each.
sensor_msgs::LaserScan Scan(std::initializer_list<float> ranges) {
  sensor_msgs::LaserScan scan;
  scan.angle_increment = static_cast<float>(0.5 * kPi);
  scan.range_min = kRangeMin;
  scan.range_max = kRangeMax;
  scan.ranges = ranges;
  return scan;
}

// 10 x 3 cells of 0.1 m. The laser stands in the middle of the second cell of the middle row and looks along the row.
class LaserMarksTest : public testing::Test {
 protected:
  LaserMarksTest() : marks_(Grid{10, 3, 0.1, 0.0, 0.0}) {}

  void Add(float range) { marks_.Add(Scan({range}), laser_); }

  // # where marked; the top line is the highest y.
  std::string Picture() const {
    const GridBytes& marks = marks_.marks();
    std::string picture;
    for (int my = marks.grid.size_y - 1; my >= 0; --my) {
      for (int mx = 0; mx < marks.grid.size_x; ++mx) {
        picture += marks.bytes[marks.grid.Index(mx, my)] != 0 ? '#' : '.';
      }
      picture += '\n';
    }
    return picture;
  }

  std::string MiddleRow() const { return Picture().substr(11, 10); }

  LaserMarks marks_;
  geometry_msgs::Pose laser_ = PoseAt(0.15, 0.15).pose;
};

TEST_F(LaserMarksTest, ARayMarksTheCellInWhichItEnds) {
  Add(0.4F);
  EXPECT_EQ(Picture(),
            "..........\n"
            ".....#....\n"
            "..........\n");
}

TEST_F(LaserMarksTest, RangesAreHitsFromRangeMinOnAndBelowRangeMax) {
  Add(kRangeMin);
  EXPECT_EQ(MiddleRow(), "..#.......");
  marks_.Clear();
  Add(std::nextafter(kRangeMin, 0.0F));
  EXPECT_EQ(MiddleRow(), "..........");
  Add(0.8F);
  EXPECT_EQ(MiddleRow(), ".........#");
  marks_.Clear();
  Add(std::nextafter(kRangeMax, 0.0F));  // off the grid
  Add(kRangeMax);
  EXPECT_EQ(MiddleRow(), "..........");
}

TEST_F(LaserMarksTest, WhatIsNoRangeMarksNothingAndClearsNothing) {
  Add(0.4F);
  for (int scan = 0; scan < 2 * LaserMarks::kScansToFade; ++scan) {
    for (const float range : {kNan, -kInfinity, 0.0F, 0.05F, -1.0F, 1e30F, std::nextafter(kRangeMax, kInfinity)}) {
      Add(range);
    }
  }
  EXPECT_EQ(MiddleRow(), ".....#....");
}

TEST_F(LaserMarksTest, AMarkThatRaysPassLivesForAsManyScansAsItIsSaidTo) {
  for (const float beyond : {0.6F, kRangeMax, kInfinity}) {
    marks_.Clear();
    Add(0.4F);
    for (int scan = 1; scan < LaserMarks::kScansToFade; ++scan) {
      Add(beyond);
      EXPECT_EQ(MiddleRow()[5], '#') << beyond << " after " << scan;
    }
    Add(beyond);
    EXPECT_EQ(MiddleRow()[5], '.') << beyond;
  }
}

TEST_F(LaserMarksTest, AHitInBetweenMakesTheMarkNewAgain) {
  Add(0.4F);
  for (int scan = 0; scan < 10 * LaserMarks::kScansToFade; ++scan) {
    Add(scan % LaserMarks::kScansToFade == 0 ? 0.4F : 0.6F);
    EXPECT_EQ(MiddleRow(), scan == 0 ? ".....#...." : ".....#.#..");
  }
}

TEST_F(LaserMarksTest, ManyRaysOfOneScanThroughACellCountOnce) {
  Add(0.4F);
  sensor_msgs::LaserScan scan = Scan({0.6F, 0.6F, 0.6F, 0.6F, 0.6F, 0.6F});
  scan.angle_increment = 0.001F;
  marks_.Add(scan, laser_);
  EXPECT_EQ(MiddleRow(), ".....#.#..");
}

TEST_F(LaserMarksTest, AScanThatPassesACellAndHitsItLeavesItMarked) {
  Add(0.4F);
  sensor_msgs::LaserScan scan = Scan({0.4F, 0.6F});
  scan.angle_increment = 0.001F;
  for (int i = 0; i < 2 * LaserMarks::kScansToFade; ++i) {
    marks_.Add(scan, laser_);
  }
  EXPECT_EQ(MiddleRow(), ".....#.#..");
}

TEST_F(LaserMarksTest, WhatIsBehindAHitAndBesideTheRayStays) {
  Add(0.6F);
  marks_.Add(Scan({kNan, 0.1F}), laser_);
  for (int scan = 0; scan < 2 * LaserMarks::kScansToFade; ++scan) {
    Add(0.3F);
  }
  EXPECT_EQ(Picture(),
            ".#........\n"
            "....#..#..\n"
            "..........\n");
}

TEST_F(LaserMarksTest, TheLasersOwnHeadingTurnsItsRays) {
  laser_.orientation = Heading(0.5 * kPi);
  Add(0.1F);
  EXPECT_EQ(Picture(),
            ".#........\n"
            "..........\n"
            "..........\n");
}

TEST_F(LaserMarksTest, AnUpsideDownLasersSecondRayPointsToTheRight) {
  laser_.orientation = QuaternionOf(1.0, 0.0, 0.0, 0.0);
  marks_.Add(Scan({0.3F, 0.1F}), laser_);
  EXPECT_EQ(Picture(),
            "..........\n"
            "....#.....\n"
            ".#........\n");
}

TEST_F(LaserMarksTest, ATiltedRayReachesLessFarOverTheGround) {
  laser_.orientation = QuaternionOf(0.0, std::sin(kPi / 6.0), 0.0, std::cos(kPi / 6.0));  // 60 degrees down
  Add(0.6F);
  EXPECT_EQ(MiddleRow(), "....#.....");
}

TEST_F(LaserMarksTest, HitsOffTheGridAreDroppedAndClearUpToItsEdge) {
  Add(0.4F);
  for (int scan = 0; scan < LaserMarks::kScansToFade; ++scan) {
    Add(0.89F);
  }
  EXPECT_EQ(MiddleRow(), "..........");
}

TEST_F(LaserMarksTest, ScansThatAreNoScansAreLeftOut) {
  Add(0.4F);
  const std::string before = Picture();
  const auto is_left_out = [&](const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
    for (int i = 0; i < 2 * LaserMarks::kScansToFade; ++i) {
      marks_.Add(scan, laser);
    }
    EXPECT_EQ(Picture(), before);
  };
  const sensor_msgs::LaserScan scan = Scan({0.6F});
  is_left_out(Scan({}), laser_);
  is_left_out(scan, PoseAt(0.15, 0.35).pose);
  is_left_out(scan, PoseAt(1e300, 0.15).pose);
  is_left_out(scan, PoseAt(std::nan(""), 0.15).pose);
  is_left_out(scan, geometry_msgs::Pose());  // a quaternion of zeros
  geometry_msgs::Pose turned = laser_;
  turned.orientation.z = std::nan("");
  is_left_out(scan, turned);
  sensor_msgs::LaserScan nowhere = scan;
  nowhere.angle_min = kNan;
  is_left_out(nowhere, laser_);
  sensor_msgs::LaserScan endless = Scan({kInfinity});
  endless.range_max = kInfinity;
  is_left_out(endless, laser_);
}

TEST_F(LaserMarksTest, AHitFarBeyondTheGridIsNoTrouble) {
  sensor_msgs::LaserScan scan = Scan({1e30F});
  scan.range_max = kInfinity;
  marks_.Add(scan, laser_);
  EXPECT_EQ(MiddleRow(), "..........");
}

}  // namespace
}  // namespace controller_base_test
