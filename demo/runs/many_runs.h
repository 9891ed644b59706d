#ifndef CONTROLLER_BASE_DEMO_RUNS_MANY_RUNS_H_
#define CONTROLLER_BASE_DEMO_RUNS_MANY_RUNS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

#include "demo/judge/run_result.h"

namespace controller_base::demo {

// Runs one seed. Called in a process of its own, one seed after another.
using RunFunction = std::function<RunResult(std::uint32_t seed)>;

constexpr std::uint32_t kFirstSeed = 1;  // when nobody says another one
constexpr std::uint32_t kHighestSeed = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kMostRuns = 1'000'000;
constexpr std::uint32_t kMostJobs = 256;

struct ManyRuns {
  std::uint32_t first_seed = kFirstSeed;  // the others count up from it
  std::size_t jobs = 1;                   // processes at the same time
  std::size_t most_runs = 1;
  std::chrono::milliseconds timeout{120'000};  // for one run
};

// Runs seeds, each in one of `jobs` child processes, and hands the results to `take` in the order of the seeds until
// that returns false, until there are `most_runs`, or until `stop` says so, asked ten times a second; then, results
// that are there already are still handed over. A run that crashes, ends its process, throws or takes longer than
// `timeout` becomes a result that says so, and the rest go on. The children end with this function, or with the thread
// that called it. Call it before this process has other threads: a child has only the calling one, and what that holds
// in memory.
void RunAll(const ManyRuns& runs, const RunFunction& run, const std::function<bool(const RunResult&)>& take,
            const std::function<bool()>& stop);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_MANY_RUNS_H_
