#include "demo/programs/options.h"

#include <utility>

#include "demo/programs/command_line.h"
#include "demo/runs/many_runs.h"

namespace controller_base::demo {
namespace {

follower::Pose2d ParsePose(const std::string& option, const std::string& text) {
  const std::vector<double> numbers = ParseNumbers(option, text, 3);
  return {numbers[0], numbers[1], numbers[2]};
}

nav_core::math::Vec2d ParsePoint(const std::string& option, const std::string& text) {
  const std::vector<double> numbers = ParseNumbers(option, text, 2);
  return {numbers[0], numbers[1]};
}

std::vector<Option> OptionsInto(Options* options) {
  using Text = const std::string&;
  constexpr bool kNoValue = false;
  return {
      {"--scenario", [=](Text value) { options->scenario_file = ParseName("--scenario", value, "a file"); }},
      {"--map", [=](Text value) { options->map_file = ParseName("--map", value, "a file"); }},
      {"--start", [=](Text value) { options->start = ParsePose("--start", value); }},
      {"--goal", [=](Text value) { options->goal = ParsePoint("--goal", value); }},
      {"--seed", [=](Text value) { options->seed = ParseCount("--seed", value, 0, kHighestSeed); }},
      {"--world", [=](Text value) { options->conditions = ParseConditions("--world", value); }},
      {"--runs", [=](Text value) { options->runs = ParseCount("--runs", value, 1, kMostRuns); }},
      {"--jobs", [=](Text value) { options->jobs = ParseCount("--jobs", value, 1, kMostJobs); }},
      {"--out", [=](Text value) { options->out = ParseName("--out", value, "a folder"); }},
      {"--bag", [=](Text value) { options->bag = ParseName("--bag", value, "a file"); }},
      {"--rviz", [=](Text) { options->rviz = options->realtime = true; }, kNoValue},
      {"--realtime", [=](Text) { options->realtime = true; }, kNoValue},
      {"--no-input", [=](Text) { options->no_input = true; }, kNoValue},
      {"--no-replanning", [=](Text) { options->no_replanning = true; }, kNoValue},
  };
}

// Options that contradict or lack each other.
void CheckTogether(const Options& options) {
  const bool has_scenario = !options.scenario_file.empty();
  const bool has_map = !options.map_file.empty();
  const bool has_place = options.start || options.goal;
  const bool is_random = options.seed || options.runs > 0;
  const std::pair<bool, const char*> mistakes[] = {
      {has_scenario && (has_map || has_place), "--scenario says itself what --map, --start and --goal say"},
      {is_random && (has_scenario || has_place),
       "--seed and --runs draw a world with a start and a goal; --scenario, --start and --goal name one"},
      {options.runs > 0 && options.realtime, "--runs cannot be watched; --seed alone drives one of them again"},
      {options.runs > 0 && !options.bag.empty(), "--runs records no bag; --seed alone drives one of them again"},
      {options.no_input && !options.realtime, "--no-input wants --rviz or --realtime; other drives take no input"},
      {options.conditions && !is_random, "--world wants --seed or --runs; a scenario says itself how its world is"},
      {options.jobs > 0 && options.runs == 0, "--jobs wants --runs"},
      {options.start.has_value() != options.goal.has_value(), "--start and --goal want each other"},
      {has_map && !options.start && !is_random, "--map wants --start and --goal, or --seed or --runs"},
  };
  for (const auto& [is_made, why] : mistakes) {
    if (is_made) {
      throw OptionError(why);
    }
  }
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
  Options options;
  options.help = !ReadOptions(arguments, OptionsInto(&options));
  if (!options.help) {
    CheckTogether(options);
  }
  return options;
}

}  // namespace controller_base::demo
