#ifndef BENCHMARK_CONTROL_CYCLE_H_
#define BENCHMARK_CONTROL_CYCLE_H_

#include <costmap_2d/costmap_2d.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "benchmark/measure.h"
#include "controller_base/controller_progress_checker.h"
#include "controller_base/obstacle_blocking_analyzer.h"
#include "controller_base/trajectory_analyzer.h"

// What a controller does in each cycle.
namespace controller_base_benchmark {

constexpr double kMapCell = 0.05;  // metres
constexpr double kSpacing = 0.04;  // metres between poses: too little for the analyzer to insert any
constexpr unsigned int kMapSide = 120;
constexpr double kRobotStep = 0.01;  // metres from one cycle to the next: 0.2 m/s at 20 Hz

inline geometry_msgs::PoseStamped PoseAt(double x, double y) {
  geometry_msgs::PoseStamped pose;
  pose.header.frame_id = "map";
  pose.pose.position.x = x;
  pose.pose.position.y = y;
  pose.pose.orientation.w = 1.0;
  return pose;
}

// A straight path along x at height `y`, from `x` on.
inline nav_msgs::Path StraightPath(std::int64_t poses, double x, double y) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.poses.reserve(static_cast<std::size_t>(poses));
  for (std::int64_t i = 0; i < poses; ++i) {
    path.poses.push_back(PoseAt(x + static_cast<double>(i) * kSpacing, y));
  }
  return path;
}

// A robot that drives along a straight path from its first pose, and back again from its 900th.
class Drive {
 public:
  explicit Drive(std::int64_t poses) : analyzer_(StraightPath(poses, 0.0, 0.0)) {
    Require(analyzer_.GetPathSize() == static_cast<std::uint64_t>(poses), "the path was resampled");
  }

  void Step() {
    const double turn = 900 * kSpacing;
    robot_.pose.position.x += forth_ ? kRobotStep : -kRobotStep;
    forth_ = forth_ ? robot_.pose.position.x < turn : robot_.pose.position.x < kSpacing;
    analyzer_.UpdateIndex(robot_);
  }

  void RequireOnTrack() const {
    const auto index = static_cast<double>(analyzer_.GetCurrentIndex());
    Require(std::abs(index * kSpacing - robot_.pose.position.x) <= 2 * kSpacing, "the index does not follow the robot");
  }

 private:
  nav_controller::TrajectoryAnalyzer analyzer_;
  geometry_msgs::PoseStamped robot_ = PoseAt(0.0, 0.1);
  bool forth_ = true;
};

// A map with the robot near its left border and a straight path through it.
struct Scene {
  costmap_2d::Costmap2D map{kMapSide, kMapSide, kMapCell, 0.0, 0.0};
  nav_msgs::Path path = StraightPath(1000, 1.0, kMapSide* kMapCell / 2);
  nav_controller::TrajectoryAnalyzer analyzer{path};
  nav_controller::ControllerProgressChecker checker;

  Scene() {
    nav_controller::ControlProgress progress;
    analyzer.GenerateControllProgress(&progress);
    checker.Reset(progress);
  }

  // Obstacles over the last poses that the local map holds, in a block as wide as the side points of the bilateral test
  // are apart, and the laser's mark on all of it: every question has to look as far as it ever does.
  void BlockFarEnd() {
    const unsigned int middle = kMapSide / 2;
    for (unsigned int mx = 70; mx < 80; ++mx) {
      for (unsigned int my = middle - 6; my <= middle + 6; ++my) {
        map.setCost(mx, my, costmap_2d::LETHAL_OBSTACLE);
        map.SetLaserObstacle(mx, my, true);
      }
    }
  }
};

// The answers of one cycle.
struct Cycle {
  bool progress = false;
  std::size_t poses_ahead = 0;
  bool inflated = false;
  bool laser = false;
  bool bilateral = false;
  bool between = false;
};

inline Cycle RunOnce(Scene& scene, const geometry_msgs::PoseStamped& robot) {
  Cycle cycle;
  std::string reason;
  scene.analyzer.UpdateIndex(robot);
  cycle.progress = scene.checker.Check(robot, reason);
  const nav_msgs::Path ahead = scene.analyzer.PathTransformToLocalMap(&scene.map);
  cycle.poses_ahead = ahead.poses.size();
  cycle.inflated = nav_controller::IsBlockingPathInflateObstacle(&scene.map, ahead);
  cycle.laser = nav_controller::IsBlockingPathLaserObstacle(&scene.map, ahead);
  cycle.bilateral = nav_controller::IsBilateralObstacle(&scene.map, ahead);
  cycle.between = nav_controller::IsBlockingBetweenPoints(&scene.map, ahead.poses.front().pose.position,
                                                          ahead.poses.back().pose.position);
  return cycle;
}

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_CONTROL_CYCLE_H_
