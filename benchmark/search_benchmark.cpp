#include "benchmark/search_benchmark.h"

#include <astar/astar.h>
#include <astar/block_allocator.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "benchmark/boost_search.h"
#include "benchmark/measure.h"

namespace controller_base_benchmark {
namespace {

constexpr std::uint32_t kStraight = 70;
constexpr std::uint32_t kDiagonal = 99;
constexpr std::uint32_t kExtraUnit = 7;
constexpr double kLengthTolerance = 1e-4;    // of the optimum: what a diagonal of 99 / 70 may cost
constexpr double kPublishedRounding = 1e-5;  // of the optimum, and in cells: published lengths have five digits

// As the planner searches: with an allocator of its own for each query.
std::vector<AStar::Vec2> Search(const AStar::Params& request) {
  BlockAllocator allocator;
  return AStar(&allocator).Find(request);
}

struct PathCost {
  std::uint64_t scaled = 0;  // on AStar's scale
  double steps = 0.0;        // straight steps, a diagonal being sqrt 2 and an extra cost of 10 one
};

bool IsPassable(const GridMap& map, int x, int y) {
  return x >= 0 && y >= 0 && x < map.width && y < map.height &&
         map.passable[static_cast<std::size_t>(y) * map.width + static_cast<std::size_t>(x)] != 0;
}

// Requires that every move of `cells` is allowed on `map`.
PathCost CostOf(const GridMap& map, const std::vector<AStar::Vec2>& cells) {
  PathCost cost;
  for (std::size_t i = 1; i < cells.size(); ++i) {
    const int x = cells[i].x;
    const int y = cells[i].y;
    const int dx = x - cells[i - 1].x;
    const int dy = y - cells[i - 1].y;
    const bool diagonal = dx != 0 && dy != 0;
    Require(std::abs(dx) <= 1 && std::abs(dy) <= 1 && (dx != 0 || dy != 0) && IsPassable(map, x, y) &&
                (!diagonal || (IsPassable(map, x - dx, y) && IsPassable(map, x, y - dy))),
            map.name + ": a move that is not allowed");
    const std::uint32_t extra = map.extra.empty() ? 0U : map.extra[map.IndexOf(cells[i])];
    cost.scaled += (diagonal ? kDiagonal : kStraight) + std::uint64_t{kExtraUnit} * extra;
    cost.steps += (diagonal ? std::sqrt(2.0) : 1.0) + extra / 10.0;
  }
  return cost;
}

// Remembers which cells a request's callbacks were asked about, and requires that none is asked about twice.
class AskedOnce {
 public:
  explicit AskedOnce(const GridMap& map) : map_(map), passable_(map.passable.size()), extra_(map.passable.size()) {}

  AStar::Params Watch(const AStar::Params& request) {
    AStar::Params watched = request;
    ++query_;
    watched.is_passable = [this, ask = request.is_passable](const AStar::Vec2& cell) {
      Mark(passable_, cell);
      return ask(cell);
    };
    if (request.extra_cost) {
      watched.extra_cost = [this, ask = request.extra_cost](const AStar::Vec2& cell) {
        Mark(extra_, cell);
        Require(map_.passable[map_.IndexOf(cell)] != 0, map_.name + ": the extra cost of an impassable cell was asked");
        return ask(cell);
      };
    }
    return watched;
  }

 private:
  void Mark(std::vector<std::uint32_t>& asked, const AStar::Vec2& cell) {
    Require(cell.x < map_.width && cell.y < map_.height, map_.name + ": a cell off the map was asked about");
    std::uint32_t& last = asked[map_.IndexOf(cell)];
    Require(last != query_, map_.name + ": a callback was asked twice about one cell");
    last = query_;
  }

  const GridMap& map_;
  std::uint32_t query_ = 0;
  std::vector<std::uint32_t> passable_;  // the last query in which the cell was asked about
  std::vector<std::uint32_t> extra_;
};

// What else the checks of a map's queries measure.
struct Answers {
  std::vector<std::size_t> expanded;  // cells that Boost.Graph took from its queue, query by query
  double worst_excess = 0.0;          // largest relative excess over a published optimum
};

void CheckLength(const GridMap& map, const Query& query, double steps, Answers& answers) {
  if (query.optimum <= 0.0) {
    return;  // not published, or no step at all
  }
  const double difference = std::abs(steps - query.optimum);
  Require(difference <= (kLengthTolerance + kPublishedRounding) * query.optimum + kPublishedRounding,
          map.name + ": a path is not as long as the published optimum");
  answers.worst_excess = std::max(answers.worst_excess, steps / query.optimum - 1.0);
}

Answers CheckAnswers(const GridMap& map, BoostSearch& boost) {
  Answers answers;
  AskedOnce asked(map);
  for (const Query& query : map.queries) {
    const std::vector<AStar::Vec2> cells = Search(asked.Watch(RequestOn(map, query)));
    Require(!cells.empty() && cells.front() == query.start && cells.back() == query.goal,
            map.name + ": the path does not lead from start to goal");
    Require(Search(RequestOn(map, query)) == cells, map.name + ": the same request gave another path");
    const PathCost cost = CostOf(map, cells);
    const BoostSearch::Result peer = boost.Find(query);
    Require(cost.scaled == peer.cost && CostOf(map, peer.cells).scaled == peer.cost,
            map.name + ": the path does not cost what Boost.Graph's does");
    CheckLength(map, query, cost.steps, answers);
    answers.expanded.push_back(peer.expanded);
  }
  return answers;
}

// Times each query once and returns the sum.
template <typename FindPath>
double RunQueries(const GridMap& map, std::vector<std::vector<double>>& seconds, FindPath&& find_path) {
  double total = 0.0;
  for (std::size_t i = 0; i < map.queries.size(); ++i) {
    const double once = SecondsOf([&] { find_path(map.queries[i]); });
    seconds[i].push_back(once);
    total += once;
  }
  return total;
}

void RunSearch(benchmark::State& state, const std::string& kind, const GridMap& map, const std::string& queries_file) {
  BoostSearch boost(map);
  const Answers answers = CheckAnswers(map, boost);
  AStar::Params request = RequestOn(map, map.queries.front());
  std::vector<std::vector<double>> subject(map.queries.size());
  std::vector<std::vector<double>> peer(map.queries.size());
  PairedSeconds totals;
  while (state.KeepRunning()) {
    const double subject_total = RunQueries(map, subject, [&](const Query& query) {
      request.start = query.start;
      request.goal = query.goal;
      benchmark::DoNotOptimize(Search(request).size());
    });
    const double peer_total =
        RunQueries(map, peer, [&](const Query& query) { benchmark::DoNotOptimize(boost.Find(query).cost); });
    totals.Add(subject_total, peer_total);
    state.SetIterationTime(subject_total);
  }
  totals.Report(state);
  double expanded = 0.0;
  for (const std::size_t cells : answers.expanded) {
    expanded += static_cast<double>(cells);
  }
  state.counters["queries"] = static_cast<double>(map.queries.size());
  state.counters["expanded"] = expanded;
  state.counters["worst_excess"] = answers.worst_excess;
  if (!queries_file.empty()) {
    std::ofstream out(queries_file, std::ios::app);
    for (std::size_t i = 0; i < map.queries.size(); ++i) {
      out << kind << ',' << map.name << ',' << std::size_t{map.width} * map.height << ',' << answers.expanded[i] << ','
          << Median(subject[i]) * 1e6 << ',' << Median(peer[i]) * 1e6 << '\n';
    }
  }
}

}  // namespace

void WriteQueriesHeader(const std::string& queries_file) {
  std::ofstream(queries_file) << "kind,map,map_cells,expanded,astar_us,boost_us\n";
}

void RegisterSearchBenchmarks(const std::string& kind, std::vector<GridMap> maps, const std::string& queries_file,
                              int repetitions) {
  for (GridMap& read_map : maps) {
    const auto map = std::make_shared<const GridMap>(std::move(read_map));
    const std::string name = "search/" + kind + "/" + map->name;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { RunSearch(state, kind, *map, queries_file); })
        ->Iterations(repetitions)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace controller_base_benchmark
