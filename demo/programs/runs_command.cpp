#include "demo/programs/runs_command.h"

#include <cstdio>
#include <memory>
#include <opencv2/core/utility.hpp>

#include "demo/output/long_file.h"
#include "demo/output/output_folder.h"
#include "demo/programs/log_folder.h"
#include "demo/programs/process.h"
#include "demo/runs/many_runs.h"
#include "demo/runs/random_runs.h"
#include "demo/runs/random_world.h"
#include "demo/runs/run_table.h"
#include "demo/terminal/live_line.h"
#include "demo/terminal/progress_line.h"
#include "ros_master/ros_master_process.h"

namespace controller_base::demo {
namespace {

std::string ProgressText(const RunTotals& totals, std::size_t runs) {
  constexpr std::size_t kBarWidth = 24;
  char text[160];
  std::snprintf(text, sizeof(text), "[%s] %d of %zu runs, %.1f km, %d reached",
                ProgressBar(static_cast<std::size_t>(totals.runs), runs, kBarWidth).c_str(), totals.runs, runs,
                totals.driven / 1000.0, totals.reached);
  return text;
}

}  // namespace

ExitStatus DriveManyRuns(const Options& options, const std::string& map_file, const std::function<bool()>& stop) {
  const LogFolder logs;
  OutputFolder folder(options.out.empty() ? "runs-out" : options.out);
  cv::setNumThreads(0);  // a process with threads cannot be copied
  const std::unique_ptr<ros_master::RosMasterProcess> master = MasterForRuns(EndIfAsked);
  ManyRuns runs;
  runs.first_seed = options.seed.value_or(kFirstSeed);
  runs.most_runs = options.runs;
  runs.jobs = JobsFor(options.jobs);
  RunTotals totals;
  const simulation::Conditions conditions = options.conditions.value_or(kUsualConditions);
  LiveLine line(stdout);
  const auto take = [&](const RunResult& run) {
    if (totals.runs == 0) {
      line.Print(ConditionsLine(conditions));
      line.Print(TableHeader());
    }
    totals.Add(run);
    line.Print(TableRow(run));
    line.Show(ProgressText(totals, options.runs));
    return true;
  };
  folder.Begin();
  LongFile table(&folder, "runs.csv");
  ProgressLine loading(stdout, stop);
  DriveRandomWorlds(map_file, conditions, runs, &table.stream(), take, stop,
                    [&](const std::string& step) { loading.Tell(step); });
  if (table.Close()) {
    line.Print(folder.path().string() + " was removed meanwhile, and is made again");
  }
  folder.Publish();
  line.Print(TotalsLine(totals));
  line.Print("Table: " + (folder.path() / "runs.csv").string());
  if (stop()) {
    return ExitStatus::kInterrupted;
  }
  return totals.unclean == 0 ? ExitStatus::kReached : ExitStatus::kFellShort;
}

}  // namespace controller_base::demo
