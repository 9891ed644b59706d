// The memory that a cycle of the follower takes does not grow with the length of the drive.
#include <gtest/gtest.h>
#include <ros/time.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "benchmark/allocation_meter.h"
#include "controller_base/follower/inflate.h"
#include "test/follower/follower_alone.h"

namespace controller_base::follower {
namespace {

using controller_base_benchmark::AllocationMeter;
using controller_base_test::Stamped;

// A robot that drives along an endless aisle of 1.6 m, on a local map of 6 m x 6 m that moves with it.
class Aisle {
 public:
  // The map has `side` x `side` cells.
  explicit Aisle(unsigned int side) {
    map_.size_x = map_.size_y = side;
    map_.resolution = 6.0 / side;
    map_.origin_y = -3.0;
    for (unsigned int cell = 0; cell < side * side; ++cell) {
      const double y = map_.origin_y + (cell / side + 0.5) * map_.resolution;
      map_.costs.push_back(std::abs(y) > 0.8 ? 254 : 0);
    }
    map_.laser_marks = map_.costs;
    Inflate(&map_, Parameters().robot_radius);
    ros::Time::setNow(ros::Time(100.0));
    nav_msgs::Path path;
    path.header.frame_id = "map";
    path.poses = {Stamped({0.0, 0.0, 0.0}), Stamped({1000.0, 0.0, 0.0})};
    follower_.SetPath(path);
    Drive(100);
  }

  void Drive(int cycles) {
    for (int cycle = 0; cycle < cycles; ++cycle) {
      ros::Time::setNow(ros::Time::now() + ros::Duration(0.05));
      map_.origin_x = x_ - 3.0;
      x_ += 0.05 * follower_.Cycle(Stamped({x_, 0.0, 0.0}), map_.View()).speed;
    }
  }

  // The largest amount of memory held at once in any of so many cycles.
  std::size_t PeakOfSingle(int cycles) {
    std::size_t peak = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
      const AllocationMeter meter;
      Drive(1);
      peak = std::max(peak, meter.PeakBytes());
    }
    return peak;
  }

  double x() const { return x_; }

 private:
  LocalMapData map_;
  PathFollower follower_{nullptr};
  double x_ = 0.0;  // m
};

TEST(CycleMemory, LateCyclesTakeNoMoreThanEarlyOnes) {
  Aisle aisle(120);
  const std::size_t early = aisle.PeakOfSingle(200);
  aisle.Drive(600);
  EXPECT_LE(aisle.PeakOfSingle(200), early);
  EXPECT_GT(aisle.x(), 15.0);
}

TEST(CycleMemory, NothingAddsUpOverManyCycles) {
  Aisle aisle(120);
  const std::size_t single = aisle.PeakOfSingle(200);
  const AllocationMeter meter;
  aisle.Drive(800);
  EXPECT_LE(meter.PeakBytes(), 2 * single);
}

// Costs and marks of the library's own map; all else does not depend on the number of cells.
TEST(CycleMemory, TheLocalMapIsCopiedOnce) {
  constexpr double kMoreBytes = 2.0 * (240 * 240 - 120 * 120);
  Aisle coarse(120);
  const std::size_t coarse_peak = coarse.PeakOfSingle(200);
  Aisle fine(240);
  EXPECT_NEAR(static_cast<double>(fine.PeakOfSingle(200) - coarse_peak), kMoreBytes, 0.2 * kMoreBytes);
}

}  // namespace
}  // namespace controller_base::follower
