// Work that is the same on every machine, one piece for each hot path, for counting instructions:
//
//   valgrind --tool=callgrind --collect-atstart=no controller_base_fixed_work NAME
//
// counts the piece NAME without what goes before it; `--list` prints the names. Every piece is done once before it is
// counted, so that what is only done the first time does not count. The program logs no INFO lines.

#include <astar/astar.h>
#include <astar/block_allocator.h>
#include <benchmark/benchmark.h>
#include <ros/init.h>
#include <ros/node_handle.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "benchmark/boxes.h"
#include "benchmark/comb.h"
#include "benchmark/control_cycle.h"
#include "benchmark/detours.h"
#include "benchmark/follower_cycle.h"
#include "benchmark/log_level.h"
#include "benchmark/random_source.h"
#include "benchmark/seeded_maps.h"
#include "benchmark/winding_path.h"
#include "controller_base/local_path_smoother.h"
#include "controller_base/path_interpolation.h"
#include "controller_base/path_map_filler.h"
#include "controller_base/trajectory_analyzer.h"
#include "ros_master/ros_master_process.h"

namespace controller_base_benchmark {
namespace {

constexpr std::uint32_t kSeed = 7;

using Piece = std::function<void()>;

Piece Search(const std::vector<GridMap>& maps, std::size_t queries) {
  const auto shared = std::make_shared<const std::vector<GridMap>>(maps);
  return [shared, queries] {
    for (const GridMap& map : *shared) {
      for (std::size_t i = 0; i < queries; ++i) {
        BlockAllocator allocator;
        benchmark::DoNotOptimize(AStar(&allocator).Find(RequestOn(map, map.queries[i])).size());
      }
    }
  };
}

Piece SearchLocal() { return Search(SeededLocalMaps(kSeed), 20); }
Piece SearchOctile() { return Search(SeededOctileMaps(kSeed), 5); }

Piece Plan(int boxes) {
  const auto map = std::make_shared<const GridMap>(SeededLocalMaps(kSeed).back());
  const auto detours = std::make_shared<Detours>(*map, 1, boxes);
  detours->Arrange(0);
  return [map, detours] {
    for (int i = 0; i < 20; ++i) {
      benchmark::DoNotOptimize(detours->Plan()->poses.size());
    }
  };
}

Piece Smooth() {
  const auto comb = std::make_shared<const Comb>(500, 20);
  const auto boxes = std::make_shared<Boxes>();
  RandomSource random(kSeed);
  boxes->Scatter(100, comb->costmap, random);
  return [comb, boxes] {
    benchmark::DoNotOptimize(
        nav_controller::LocalPathSmoother::Process(comb->path, &comb->costmap, boxes->Store()).poses.size());
  };
}

Piece PrepareCorridor() {
  const auto map = std::make_shared<const costmap_2d::Costmap2D>(400U, 400U, kMapCell, 0.0, 0.0);
  const auto corridor = std::make_shared<nav_controller::PathMapFiller>(20);
  return [map, corridor, path = StraightPath(100, 5.0, 10.0)] {
    for (int i = 0; i < 10; ++i) {
      corridor->prepare(20, map.get(), path);
    }
  };
}

Piece UpdateIndex() {
  const auto drive = std::make_shared<Drive>(1000);
  return [drive] {
    for (int i = 0; i < 5000; ++i) {
      drive->Step();
    }
  };
}

Piece WholeCycle(bool blocked) {
  const auto scene = std::make_shared<Scene>();
  if (blocked) {
    scene->BlockFarEnd();
  }
  return [scene, robot = scene->path.poses.front()] {
    for (int i = 0; i < 100; ++i) {
      benchmark::DoNotOptimize(RunOnce(*scene, robot).poses_ahead);
    }
  };
}

Piece FollowerCycle() {
  const auto scene = std::make_shared<FollowerScene>(1.6);
  return [scene] {
    for (int i = 0; i < 20; ++i) {
      scene->Cycle();
    }
    scene->RequireAtSpeed();
  };
}

Piece Resample() {
  return [path = WindingPath(1000, 10000)] {
    benchmark::DoNotOptimize(nav_core::math::LinearInterpolation(path, kResampleSpacing).poses.size());
  };
}

Piece InitializePath() {
  const nav_msgs::Path path = WindingPath(1000, 10000);
  const auto analyzer = std::make_shared<nav_controller::TrajectoryAnalyzer>(path);
  return [path, analyzer] { analyzer->InitializePath(path); };
}

const std::map<std::string, Piece (*)()>& Pieces() {
  static const std::map<std::string, Piece (*)()> pieces = {
      {"corridor", PrepareCorridor},
      {"cycle_blocked", [] { return WholeCycle(true); }},
      {"cycle_free", [] { return WholeCycle(false); }},
      {"follower_cycle", FollowerCycle},
      {"initialize_path", InitializePath},
      {"plan_10_boxes", [] { return Plan(10); }},
      {"plan_100_boxes", [] { return Plan(100); }},
      {"resample", Resample},
      {"search_local", SearchLocal},
      {"search_octile", SearchOctile},
      {"smooth", Smooth},
      {"update_index", UpdateIndex},
  };
  return pieces;
}

void Count(const Piece& piece) {
  piece();
  CALLGRIND_TOGGLE_COLLECT;
  piece();
  CALLGRIND_TOGGLE_COLLECT;
}

int Main(int argc, char** argv) {
  const std::string name = argc == 2 ? argv[1] : "";
  if (name == "--list") {
    for (const auto& piece : Pieces()) {
      std::puts(piece.first.c_str());
    }
    return 0;
  }
  const auto make_piece = Pieces().find(name);
  if (make_piece == Pieces().end()) {
    std::fputs("usage: controller_base_fixed_work NAME | --list\n", stderr);
    return 2;
  }
  const auto master = controller_base::ros_master::RosMasterProcess::StartOnFreePort();
  master->ServeThisProcess();
  ros::init(argc, argv, "controller_base_fixed_work", ros::init_options::NoSigintHandler);
  const ros::NodeHandle node;  // ROS would end with the last one
  cv::setNumThreads(1);
  SetLibraryLogLevel(ros::console::levels::Warn);
  Count(make_piece->second());
  return 0;
}

}  // namespace
}  // namespace controller_base_benchmark

int main(int argc, char** argv) {
  try {
    return controller_base_benchmark::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "controller_base_fixed_work: %s\n", error.what());
    return 1;
  }
}
