#ifndef BENCHMARK_FOLLOWER_CYCLE_H_
#define BENCHMARK_FOLLOWER_CYCLE_H_

#include <ros/time.h>

#include <cstddef>
#include <cstdint>

#include "benchmark/control_cycle.h"
#include "benchmark/measure.h"
#include "controller_base/follower/inflate.h"
#include "controller_base/follower/path_follower.h"

namespace controller_base_benchmark {

// A follower that drives straight ahead between two walls, on a local map of kMapSide x kMapSide cells that goes with
// it. It has a clock of its own, which stays behind when it is gone: ros::Time::init() gives back the system's.
class FollowerScene {
 public:
  // The walls are `width` metres apart.
  explicit FollowerScene(double width) : walls_(Walls(width)), map_(walls_) {
    controller_base::follower::Inflate(&map_, controller_base::follower::Parameters().robot_radius);
    ros::Time::setNow(ros::Time(100.0));
    follower_.SetPath(StraightPath(kPoses, x_, 0.0));
    for (int cycle = 0; cycle < 40; ++cycle) {
      Cycle();  // until it is at speed
    }
  }

  // The walls alone: 254 where one stands, else 0.
  const controller_base::follower::LocalMapData& walls() const { return walls_; }

  // One cycle of 50 ms: from cost bytes and marks to the command.
  void Cycle() {
    ros::Time::setNow(ros::Time::now() + ros::Duration(kSeconds));
    x_ += kSeconds * command_.speed;
    map_.origin_x = x_ - 0.5 * kMapSide * kMapCell;
    command_ = follower_.Cycle(PoseAt(x_, 0.0), map_.View());
  }

  void RequireAtSpeed() const {
    Require(command_.speed > 0.15 && follower_.detour() == nullptr, "the follower does not drive along its path");
  }

 private:
  static constexpr double kSeconds = 0.05;
  static constexpr std::int64_t kPoses = 100000;

  static controller_base::follower::LocalMapData Walls(double width) {
    controller_base::follower::LocalMapData map;
    map.size_x = map.size_y = kMapSide;
    map.resolution = kMapCell;
    map.origin_y = -0.5 * kMapSide * kMapCell;
    map.costs.assign(std::size_t{kMapSide} * kMapSide, 0);
    for (std::size_t cell = 0; cell < map.costs.size(); ++cell) {
      const double y = map.origin_y + (static_cast<double>(cell / kMapSide) + 0.5) * kMapCell;
      map.costs[cell] = std::abs(y) > 0.5 * width ? 254 : 0;
    }
    map.laser_marks = map.costs;
    return map;
  }

  controller_base::follower::LocalMapData walls_;
  controller_base::follower::LocalMapData map_;
  controller_base::follower::PathFollower follower_{nullptr};
  controller_base::follower::Command command_;
  double x_ = 1.0;  // m
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_FOLLOWER_CYCLE_H_
