#include "demo/programs/options.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace controller_base::demo {
namespace {

// `count` finite numbers with commas between them.
std::vector<double> ParseNumbers(const std::string& option, const std::string& text, std::size_t count) {
  std::vector<double> numbers;
  const char* rest = text.c_str();
  while (true) {
    char* end = nullptr;
    numbers.push_back(std::strtod(rest, &end));
    const bool is_number = end != rest && std::isfinite(numbers.back());
    if (is_number && *end == ',' && numbers.size() < count) {
      rest = end + 1;
    } else if (is_number && *end == '\0' && numbers.size() == count) {
      return numbers;
    } else {
      throw OptionError(option + " wants " + std::to_string(count) + " numbers with commas between them, not '" + text +
                        "'");
    }
  }
}

// An option without a value; false: it is none.
bool SetFlag(const std::string& option, Options* options) {
  if (option == "--rviz") {
    options->rviz = options->realtime = true;
  } else if (option == "--realtime") {
    options->realtime = true;
  } else if (option == "--no-input") {
    options->no_input = true;
  } else {
    return false;
  }
  return true;
}

void Set(const std::string& option, const std::string& value, Options* options) {
  if (option == "--scenario") {
    options->scenario_file = value;
  } else if (option == "--map") {
    options->map_file = value;
  } else if (option == "--start") {
    const std::vector<double> numbers = ParseNumbers(option, value, 3);
    options->start = follower::Pose2d{numbers[0], numbers[1], numbers[2]};
  } else if (option == "--goal") {
    const std::vector<double> numbers = ParseNumbers(option, value, 2);
    options->goal = nav_core::math::Vec2d(numbers[0], numbers[1]);
  } else if (option == "--seed") {
    options->seed = ParseCount(option, value, 0, kHighestSeed);
  } else if (option == "--runs") {
    options->runs = ParseCount(option, value, 1, kMostRuns);
  } else if (option == "--jobs") {
    options->jobs = ParseCount(option, value, 1, kMostJobs);
  } else if (option == "--out") {
    options->out = value;
  } else if (option == "--bag") {
    if (value.empty()) {
      throw OptionError("--bag wants the name of a file");
    }
    options->bag = value;
  } else {
    throw OptionError("unknown option '" + option + "'; --help shows the known ones");
  }
}

}  // namespace

std::uint32_t ParseCount(const std::string& option, const std::string& text, std::uint32_t lowest,
                         std::uint32_t highest) {
  const bool is_number = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  const double value = is_number ? std::strtod(text.c_str(), nullptr) : -1.0;
  if (value < lowest || value > highest) {
    throw OptionError(option + " wants a whole number from " + std::to_string(lowest) + " to " +
                      std::to_string(highest) + ", not '" + text + "'");
  }
  return static_cast<std::uint32_t>(value);
}

Options ParseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--help" || arguments[i] == "-h") {
      options.help = true;
      return options;
    }
    if (SetFlag(arguments[i], &options)) {
      continue;
    }
    const std::size_t equals = arguments[i].find('=');
    if (equals != std::string::npos) {
      Set(arguments[i].substr(0, equals), arguments[i].substr(equals + 1), &options);
    } else if (i + 1 < arguments.size()) {
      Set(arguments[i], arguments[i + 1], &options);
      ++i;
    } else {
      throw OptionError("'" + arguments[i] +
                        "' is not a known option, or lacks its value; --help shows the known ones");
    }
  }
  if (!options.scenario_file.empty() && (!options.map_file.empty() || options.start || options.goal)) {
    throw OptionError("--scenario says itself what --map, --start and --goal say");
  }
  if ((options.seed || options.runs > 0) && (!options.scenario_file.empty() || options.start || options.goal)) {
    throw OptionError(
        "--seed and --runs draw a world with a start and a goal; --scenario, --start and --goal name one");
  }
  if (options.runs > 0 && options.realtime) {
    throw OptionError("--runs cannot be watched; --seed alone drives one of them again");
  }
  if (options.runs > 0 && !options.bag.empty()) {
    throw OptionError("--runs records no bag; --seed alone drives one of them again");
  }
  if (options.no_input && !options.realtime) {
    throw OptionError("--no-input wants --rviz or --realtime; other drives take no input");
  }
  if (options.jobs > 0 && options.runs == 0) {
    throw OptionError("--jobs wants --runs");
  }
  if (options.start.has_value() != options.goal.has_value()) {
    throw OptionError("--start and --goal want each other");
  }
  if (!options.map_file.empty() && !options.start && !options.seed && options.runs == 0) {
    throw OptionError("--map wants --start and --goal, or --seed or --runs");
  }
  return options;
}

}  // namespace controller_base::demo
