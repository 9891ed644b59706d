#include "benchmark/scale_benchmark.h"

#include <astar/astar.h>
#include <astar/block_allocator.h>
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "benchmark/allocation_meter.h"

namespace controller_base_benchmark {
namespace {

// The search starts 150 cells from the small map's left border, half way up, and at the same place within its tile on
// the huge map: the offset between the two is a power of two.
constexpr std::uint16_t kSmallSide = 600;
constexpr std::uint16_t kHugeSide = 65535;
constexpr int kOffset = 32768;  // from the small map's cells to the huge map's
constexpr AStar::Vec2 kSmallStart{150, 300};
constexpr int kTileSide = 32;  // cells
constexpr int kSearchesPerSample = 20;

// A world without borders, in the small map's coordinates.
struct World {
  const char* name;
  bool (*is_passable)(int x, int y);
  std::uint16_t (*extra_cost)(int x, int y);  // null: none
};

bool Open(int, int) { return true; }

// The upper bits are pseudo-random.
std::uint32_t Hash(int x, int y) {
  const auto mixed = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
  return (mixed ^ mixed >> 15) * 0x2C1B3C6DU;
}

// A cell in four is an obstacle, except around the start and the goals.
bool Strewn(int x, int y) {
  const bool near_row = std::abs(y - kSmallStart.y) <= 1 && (x - kSmallStart.x) % 50 <= 2;
  return near_row || Hash(x, y) >> 30 != 0;
}

// A dead end 150 cells deep, open towards the start.
bool Pocket(int x, int y) {
  const int from_row = std::abs(y - kSmallStart.y);
  const bool back = x == 400 && from_row <= 60;
  const bool side = from_row == 60 && x >= 250 && x <= 400;
  return !back && !side;
}

// Every cell costs something, up to 0.3 of a step.
std::uint16_t LittleCost(int x, int y) { return static_cast<std::uint16_t>(Hash(x, y) >> 30); }

constexpr World kWorlds[] = {{"open", Open, nullptr},
                             {"strewn", Strewn, nullptr},
                             {"pocket", Pocket, nullptr},
                             {"extra_cost", Open, LittleCost}};

struct Shift {
  int x = 0;
  int y = 0;
};

AStar::Vec2 Shifted(const AStar::Vec2& cell, const Shift& shift) {
  return {static_cast<std::uint16_t>(cell.x + shift.x), static_cast<std::uint16_t>(cell.y + shift.y)};
}

// The search from the start to the cell `away` from it, on a square map that holds the world shifted by `shift`.
AStar::Params RequestIn(World world, std::uint16_t side, const Shift& shift, const Shift& away) {
  AStar::Params request;
  request.allow_diagonal = true;
  request.width = request.height = side;
  request.start = Shifted(kSmallStart, shift);
  request.goal = Shifted(request.start, away);
  request.is_passable = [world, shift](const AStar::Vec2& cell) {
    return world.is_passable(cell.x - shift.x, cell.y - shift.y);
  };
  if (world.extra_cost != nullptr) {
    request.extra_cost = [world, shift](const AStar::Vec2& cell) {
      return world.extra_cost(cell.x - shift.x, cell.y - shift.y);
    };
  }
  return request;
}

std::vector<AStar::Vec2> Search(const AStar::Params& request) {
  BlockAllocator allocator;
  return AStar(&allocator).Find(request);
}

// The most memory that a search holds at once, in a thread that has searched nothing before.
std::size_t PeakBytesOf(const AStar::Params& request) {
  std::size_t bytes = 0;
  std::thread([&] {
    const AllocationMeter meter;
    Require(!Search(request).empty(), "a search on a large map found no way");
    bytes = meter.PeakBytes();
  }).join();
  return bytes;
}

// Cells of all tiles of which at least one cell is asked about.
std::size_t TouchedCells(const AStar::Params& request) {
  std::set<std::pair<int, int>> tiles;
  AStar::Params watched = request;
  watched.is_passable = [&tiles, ask = request.is_passable](const AStar::Vec2& cell) {
    tiles.emplace(cell.x / kTileSide, cell.y / kTileSide);
    return ask(cell);
  };
  Search(watched);
  return tiles.size() * kTileSide * kTileSide;
}

void RequireSamePath(const AStar::Params& huge, const AStar::Params& small) {
  const std::vector<AStar::Vec2> there = Search(huge);
  std::vector<AStar::Vec2> here = Search(small);
  Require(!here.empty(), "no way on a map of 600 x 600 cells");
  for (AStar::Vec2& cell : here) {
    cell = Shifted(cell, {kOffset, kOffset});
  }
  Require(there == here, "another way on a map of 65535 x 65535 cells");
}

void RunScale(benchmark::State& state, World world) {
  const Shift away{300, 0};
  const AStar::Params small = RequestIn(world, kSmallSide, {0, 0}, away);
  const AStar::Params huge = RequestIn(world, kHugeSide, {kOffset, kOffset}, away);
  RequireSamePath(huge, small);
  const auto search_often = [](const AStar::Params& request) {
    for (int i = 0; i < kSearchesPerSample; ++i) {
      benchmark::DoNotOptimize(Search(request).size());
    }
  };
  RunInTurn(
      state, [&] { search_often(huge); }, [&] { search_often(small); });
  state.counters["bytes"] = static_cast<double>(PeakBytesOf(huge));
}

// The straight line through the memory of searches of several lengths over the cells of the tiles that they touch, by
// least squares: bytes for each cell, and a constant.
void RunMemory(benchmark::State& state, World world) {
  std::vector<double> cells;
  std::vector<double> bytes;
  while (state.KeepRunning()) {
    state.SetIterationTime(SecondsOf([&] {
      for (const int away : {50, 100, 200, 400, 800, 1600}) {
        const AStar::Params request = RequestIn(world, kHugeSide, {kOffset, kOffset}, {away, 0});
        cells.push_back(static_cast<double>(TouchedCells(request)));
        bytes.push_back(static_cast<double>(PeakBytesOf(request)));
      }
    }));
  }
  const double mean_cells = std::accumulate(cells.begin(), cells.end(), 0.0) / static_cast<double>(cells.size());
  const double mean_bytes = std::accumulate(bytes.begin(), bytes.end(), 0.0) / static_cast<double>(bytes.size());
  double variance = 0.0;
  double covariance = 0.0;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    variance += (cells[i] - mean_cells) * (cells[i] - mean_cells);
    covariance += (cells[i] - mean_cells) * (bytes[i] - mean_bytes);
  }
  state.counters["bytes_per_cell"] = covariance / variance;
  state.counters["constant_bytes"] = mean_bytes - covariance / variance * mean_cells;
  state.counters["largest_bytes"] = bytes.back();
}

}  // namespace

void RegisterScaleBenchmarks(const Effort& effort) {
  constexpr int kRepetitions = 31;
  for (const World& world : kWorlds) {
    benchmark::RegisterBenchmark((std::string("scale/") + world.name).c_str(), RunScale, world)
        ->Iterations(effort.Repetitions(kRepetitions))
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark((std::string("memory/") + world.name).c_str(), RunMemory, world)
        ->Iterations(1)
        ->UseManualTime();
  }
}

}  // namespace controller_base_benchmark
