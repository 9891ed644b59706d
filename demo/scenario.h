#ifndef CONTROLLER_BASE_DEMO_SCENARIO_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_H_

#include <string>
#include <vector>

#include "geometry.h"
#include "nav_core/math/vec2d.h"
#include "world.h"

namespace controller_base_demo {

// What a drive starts from.
struct Scenario {
  std::string map_file;  // the YAML file of a map in the map_server format
  Pose2d start;
  nav_core::math::Vec2d goal;
  std::vector<Obstacle> obstacles;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_H_
