// The benchmark program: google-benchmark's options, and
//   --data=DIR       a folder with local/*.pgm and movingai/*.map; maps made by a seed where it holds none
//   --queries=FILE   writes the times of the single searches there
//   --quick          fewer repetitions and only a few of the octile maps
// Every answer is checked before it is timed; a wrong one ends the program with status 1.

#include <benchmark/benchmark.h>
#include <ros/init.h>
#include <ros/node_handle.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <utility>
#include <vector>

#include "benchmark/corridor_benchmark.h"
#include "benchmark/cycle_benchmark.h"
#include "benchmark/follower_benchmark.h"
#include "benchmark/grid_queries.h"
#include "benchmark/log_level.h"
#include "benchmark/plan_benchmark.h"
#include "benchmark/resampling_benchmark.h"
#include "benchmark/scale_benchmark.h"
#include "benchmark/search_benchmark.h"
#include "benchmark/seeded_maps.h"
#include "benchmark/smoother_benchmark.h"
#include "ros_master/ros_master_process.h"

namespace {

using controller_base_benchmark::Effort;
using controller_base_benchmark::GridMap;

constexpr std::uint32_t kSeed = 1;
constexpr int kLocalRepetitions = 15;
constexpr int kOctileRepetitions = 5;

struct Arguments {
  std::string data;
  std::string queries_file;
  Effort effort;
};

// The value of `argument` when it begins with `name`, else null.
const char* ValueOf(const std::string& name, const char* argument) {
  return std::string(argument).rfind(name, 0) == 0 ? argument + name.size() : nullptr;
}

// Takes this program's own arguments; google-benchmark must have taken its own before. Exits on any other.
Arguments Parse(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    if (const char* const data = ValueOf("--data=", argv[i])) {
      arguments.data = data;
    } else if (const char* const file = ValueOf("--queries=", argv[i])) {
      arguments.queries_file = file;
    } else if (std::string(argv[i]) == "--quick") {
      arguments.effort.quick = true;
    } else {
      std::fprintf(stderr, "controller_base_benchmark: unknown argument %s\n", argv[i]);
      std::exit(2);
    }
  }
  return arguments;
}

// `maps`, or the ones that `make_seeded` makes when there are none.
template <typename MakeSeeded>
std::vector<GridMap> OrSeeded(std::vector<GridMap> maps, const char* kind, MakeSeeded&& make_seeded) {
  if (maps.empty()) {
    std::fprintf(stderr, "no %s maps found: using maps made by seed %u\n", kind, kSeed);
    return make_seeded(kSeed);
  }
  return maps;
}

// One map in four when quick, the smallest of each four by number of cells.
std::vector<GridMap> SomeOf(std::vector<GridMap> maps, const Effort& effort) {
  constexpr std::size_t kStride = 4;
  if (!effort.quick || maps.size() <= kStride) {
    return maps;
  }
  std::stable_sort(maps.begin(), maps.end(),
                   [](const GridMap& a, const GridMap& b) { return a.passable.size() < b.passable.size(); });
  std::vector<GridMap> some;
  for (std::size_t i = 0; i < maps.size(); i += kStride) {
    some.push_back(std::move(maps[i]));
  }
  return some;
}

void RegisterAll(const Arguments& arguments) {
  using namespace controller_base_benchmark;  // NOLINT(google-build-using-namespace): this is its main program
  const Effort& effort = arguments.effort;
  const std::vector<GridMap> local = OrSeeded(ReadLocalMaps(arguments.data), "local", SeededLocalMaps);
  const std::vector<GridMap> octile = OrSeeded(ReadOctileMaps(arguments.data), "octile", SeededOctileMaps);
  if (!arguments.queries_file.empty()) {
    WriteQueriesHeader(arguments.queries_file);
  }
  RegisterSearchBenchmarks("local", local, arguments.queries_file, effort.Repetitions(kLocalRepetitions));
  RegisterSearchBenchmarks("octile", SomeOf(octile, effort), arguments.queries_file,
                           effort.Repetitions(kOctileRepetitions));
  RegisterScaleBenchmarks(effort);
  RegisterPlanBenchmarks(local, effort);
  RegisterSmootherBenchmarks(effort);
  RegisterCorridorBenchmarks(effort);
  RegisterCycleBenchmarks(effort);
  RegisterFollowerBenchmarks(effort);
  RegisterResamplingBenchmarks(effort);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const Arguments arguments = Parse(argc, argv);
  try {
    const auto master = controller_base::ros_master::RosMasterProcess::StartOnFreePort();
    master->ServeThisProcess();
    ros::init(argc, argv, "controller_base_benchmark", ros::init_options::NoSigintHandler);
    const ros::NodeHandle node;  // ROS would end with the last one
    cv::setNumThreads(1);        // times are those of one thread
    controller_base_benchmark::SetLibraryLogLevel(ros::console::levels::Warn);
    RegisterAll(arguments);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "controller_base_benchmark: %s\n", error.what());
    return 1;
  }
  return 0;
}
