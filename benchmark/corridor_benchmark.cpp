#include "benchmark/corridor_benchmark.h"

#include <benchmark/benchmark.h>
#include <costmap_2d/costmap_2d.h>
#include <nav_msgs/Path.h>

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "benchmark/left_out_message.h"
#include "benchmark/plain_corridor.h"
#include "controller_base/path_map_filler.h"

namespace controller_base_benchmark {
namespace {

using costmap_2d::Costmap2D;
using nav_controller::PathMapFiller;

constexpr double kResolution = 0.05;  // metres
constexpr int kPathPoses = 100;       // a cell apart: 5 m
constexpr unsigned int kSmallSide = 200;
constexpr unsigned int kLargeSide = 4000;
constexpr int kWidth = 20;  // cells

Costmap2D SquareMap(unsigned int side) { return {side, side, kResolution, 0.0, 0.0}; }

// A bent path of 5 m, a pose every cell, in the middle of `costmap`.
nav_msgs::Path BentPath(const Costmap2D& costmap) {
  const double middle = costmap.getSizeInCellsX() * kResolution / 2;
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (int i = 0; i < kPathPoses; ++i) {
    const double along = i * kResolution;
    geometry_msgs::PoseStamped& pose = path.poses.emplace_back();
    pose.pose.position.x = middle + along - kPathPoses * kResolution / 2;
    pose.pose.position.y = middle + std::sin(along);
  }
  return path;
}

std::vector<cv::Point> CellsOf(const nav_msgs::Path& path, const Costmap2D& costmap) {
  std::vector<cv::Point> cells;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    unsigned int mx = 0;
    unsigned int my = 0;
    Require(costmap.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my), "a pose is off the map");
    cells.emplace_back(static_cast<int>(mx), static_cast<int>(my));
  }
  return cells;
}

// A map with a path on it and its corridor, which is checked cell for cell.
class Corridor {
 public:
  Corridor(unsigned int side, int width)
      : costmap_(SquareMap(side)), path_(BentPath(costmap_)), width_(width), filler_(width) {
    const int messages_before = LeftOutMessages();
    Prepare();
    Require(LeftOutMessages() == messages_before + 1, "the corridor's message could not be left out");
    Prepare();  // as in every cycle but the first: over an earlier corridor
    const int cells = static_cast<int>(side);
    const cv::Mat expected = DrawCorridorPlainly(cv::Size(cells, cells), CellsOf(path_, costmap_), width);
    for (unsigned int my = 0; my < side; ++my) {
      for (unsigned int mx = 0; mx < side; ++mx) {
        const bool inside = expected.at<std::uint8_t>(static_cast<int>(my), static_cast<int>(mx)) != 0;
        Require(filler_.IsLethalObstacle(mx, my) != inside, "a corridor is not what OpenCV draws on the whole map");
      }
    }
  }

  void Prepare() { filler_.prepare(width_, &costmap_, path_); }
  std::size_t MessageSize() const { return filler_.getOccupancyGrid(&costmap_).data.size(); }

 private:
  Costmap2D costmap_;
  nav_msgs::Path path_;
  int width_;
  PathMapFiller filler_;
};

void RunMap(benchmark::State& state) {
  const auto width = static_cast<int>(state.range(0));
  Corridor large(kLargeSide, width);
  Corridor small(kSmallSide, width);
  RunInTurn(
      state, [&] { large.Prepare(); }, [&] { small.Prepare(); });
}

void RunPrepare(benchmark::State& state) {
  Corridor corridor(static_cast<unsigned int>(state.range(0)), kWidth);
  while (state.KeepRunning()) {
    corridor.Prepare();
  }
}

void RunMessage(benchmark::State& state) {
  const Corridor corridor(static_cast<unsigned int>(state.range(0)), kWidth);
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(corridor.MessageSize());
  }
}

}  // namespace

void RegisterCorridorBenchmarks(const Effort& effort) {
  constexpr int kRepetitions = 101;
  benchmark::RegisterBenchmark("corridor/map", RunMap)
      ->Arg(3)
      ->Arg(kWidth)
      ->Iterations(effort.Repetitions(kRepetitions))
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
  for (const auto side : {200, 500, 1000, 2000, 4000}) {
    benchmark::RegisterBenchmark("corridor/prepare", RunPrepare)->Arg(side)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("corridor/message", RunMessage)->Arg(side)->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace controller_base_benchmark
