#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/harsh_world.h"

namespace controller_base::demo {

// What the command line asks for; demo_usage.txt explains it.
struct Options {
  std::string scenario_file;  // empty: the drive through the bundled map, or what follows
  std::string map_file;       // empty: the bundled map
  std::optional<follower::Pose2d> start;
  std::optional<nav_core::math::Vec2d> goal;
  std::optional<std::uint32_t> seed;                 // of a random world on the map, or of the first of many
  std::optional<simulation::Conditions> conditions;  // of random worlds; nothing: harsh
  std::size_t runs = 0;                              // so many random worlds; 0: one drive
  std::size_t jobs = 0;                              // at the same time; 0: as many as there are processors
  std::string out;                                   // empty: demo-out, or runs-out for many runs
  std::string bag;                                   // empty: none
  bool realtime = false;  // at the pace of the wall's clock, shared on /clock, with people's goals and boxes
  bool rviz = false;      // RViz shows it; implies realtime
  bool no_input = false;  // nobody's goals and boxes
  bool no_replanning = false;
  bool help = false;
};

// `arguments` without the program's name. Throws OptionError; see command_line.h.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_
