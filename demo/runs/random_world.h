#ifndef CONTROLLER_BASE_DEMO_RUNS_RANDOM_WORLD_H_
#define CONTROLLER_BASE_DEMO_RUNS_RANDOM_WORLD_H_

#include <nav_msgs/Path.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "simulation/drive_setup.h"
#include "simulation/harsh_world.h"
#include "simulation/progress.h"

namespace controller_base::demo {

class RandomSource;

// A drive on a map, with things that somebody left on and beside its path.
struct RandomWorld {
  simulation::DriveSetup setup;
  nav_msgs::Path path;  // as PlanDrive finds it for the setup
};

// Of random worlds, when nobody says others.
constexpr simulation::Conditions kUsualConditions = simulation::Conditions::kHarsh;

constexpr double kShortestRandomDrive = 4.0;  // m, straight from start to goal
constexpr double kClearedRadius = 1.0;        // m around start and goal, where nothing is dropped

// All the random worlds on one map.
class RandomWorlds {
 public:
  // `map`, which comes from `map_file`, must outlive this object. Where `progress` ends this, a thread may go on: the
  // process should not return from main() then, but end at once.
  RandomWorlds(const std::string& map_file, const costmap_2d::Costmap2D& map, simulation::Conditions conditions,
               const simulation::Progress& progress = {});

  // Start, goal, obstacles and all noise are drawn from `seed`: the same map and seed give the same world, and the same
  // obstacles in the same places whatever the conditions. A path that stays blocked is not planned again. The robot can drive
  // from start to goal over cells that the map knows to be free. Boxes and discs, a quarter of them too low for the
  // laser, are dropped up to 0.6 m beside the path, one for every 2.5 m to 6 m of it. Throws DriveError when the map
  // has too little room.
  RandomWorld Draw(std::uint32_t seed, const simulation::Progress& progress = {}) const;

 private:
  void DrawStartAndGoal(RandomSource* random, simulation::DriveSetup* setup) const;
  nav_core::math::Vec2d CenterOf(const cv::Point& cell) const;

  std::string map_file_;
  simulation::Conditions conditions_;
  const costmap_2d::Costmap2D& map_;
  cv::Mat rooms_;                 // CV_32SC1; a number for each part of the free cells that belongs together
  std::vector<cv::Point> cells_;  // in which the robot's centre has some room
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_RANDOM_WORLD_H_
