#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"

namespace controller_base::demo {

constexpr std::uint32_t kMostRuns = 1'000'000;
constexpr std::uint32_t kMostJobs = 256;
constexpr std::uint32_t kHighestSeed = std::numeric_limits<std::uint32_t>::max();

// What the command line asks for; demo_usage.txt explains it.
struct Options {
  std::string scenario_file;  // empty: the drive through the bundled map, or what follows
  std::string map_file;       // empty: the bundled map
  std::optional<follower::Pose2d> start;
  std::optional<nav_core::math::Vec2d> goal;
  std::optional<std::uint32_t> seed;  // of a random world on the map, or of the first of many
  std::size_t runs = 0;               // so many random worlds; 0: one drive
  std::size_t jobs = 0;               // at the same time; 0: as many as there are processors
  std::string out;                    // empty: demo-out, or runs-out for many runs
  std::string bag;                    // empty: none
  bool realtime = false;  // at the pace of the wall's clock, shared on /clock, with people's goals and boxes
  bool rviz = false;      // RViz shows it; implies realtime
  bool no_input = false;  // nobody's goals and boxes
  bool help = false;
};

// A command line that makes no sense; what() is one line that says which argument is wrong.
class OptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The whole number that `text` is, digits alone; `option` is whose value it is. Throws OptionError.
std::uint32_t ParseCount(const std::string& option, const std::string& text, std::uint32_t lowest,
                         std::uint32_t highest);

// `arguments` without the program's name. Throws OptionError.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_OPTIONS_H_
