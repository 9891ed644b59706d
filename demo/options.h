#ifndef CONTROLLER_BASE_DEMO_OPTIONS_H_
#define CONTROLLER_BASE_DEMO_OPTIONS_H_

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "geometry.h"
#include "nav_core/math/vec2d.h"

namespace controller_base_demo {

// What the command line asks for; usage.txt explains it.
struct Options {
  std::string scenario_file;  // empty: the drive through the bundled map, or what follows
  std::string map_file;       // empty: the bundled map
  std::optional<Pose2d> start;
  std::optional<nav_core::math::Vec2d> goal;
  std::string out = "demo-out";
  std::string bag;        // empty: none
  bool realtime = false;  // at the pace of the wall's clock, shared on /clock, with people's goals and boxes
  bool rviz = false;      // RViz shows it; implies realtime
  bool help = false;
};

// A command line that makes no sense; what() is one line that says which argument is wrong.
class OptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `arguments` without the program's name. Throws OptionError.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_OPTIONS_H_
