#ifndef CONTROLLER_BASE_SIMULATION_DRIVE_SETUP_H_
#define CONTROLLER_BASE_SIMULATION_DRIVE_SETUP_H_

#include <cstdint>
#include <string>
#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/faults.h"
#include "simulation/world.h"

namespace controller_base::simulation {

// How a drive comes to its path.
enum class PathKind {
  kPlanned,  // searched from the start over `points` to the goal
  kDrawn,    // straight from point to point, whatever stands there
};

// What a drive starts from.
struct DriveSetup {
  std::string map_file;  // the YAML file of a map in the map_server format
  follower::Pose2d start;
  nav_core::math::Vec2d goal;  // where the path ends
  std::vector<Obstacle> obstacles;
  PathKind path_kind = PathKind::kPlanned;
  // On the way to the goal, without it; a drawn path begins at the first.
  std::vector<nav_core::math::Vec2d> points = {};
  // A path that stays blocked is planned again, over what the laser has marked and around virtual boxes.
  bool replanning = false;
  Faults faults = {};
  Shapes shapes = Shapes::kCells;
  std::uint32_t seed = 1;  // of all that is random
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_DRIVE_SETUP_H_
