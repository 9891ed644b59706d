#ifndef CONTROLLER_BASE_DEMO_RUNS_MARATHON_REPORT_H_
#define CONTROLLER_BASE_DEMO_RUNS_MARATHON_REPORT_H_

#include <string>
#include <vector>

#include "demo/judge/run_result.h"
#include "demo/runs/run_table.h"

namespace controller_base::demo {

// What came of the runs on one map.
struct MapReport {
  std::string map;  // its file's name, without the ending
  RunTotals totals;
  std::vector<RunResult> unclean;  // in the order of their seeds
  double processor_seconds = 0.0;
  double wall_seconds = 0.0;

  void Add(const RunResult& run);
};

// A sentence on what kind of runs they are, and tables in Markdown: a row for each map, one for all of them, and one for each run that was not clean.
std::string MarathonPage(simulation::Conditions conditions, const std::vector<MapReport>& reports);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_MARATHON_REPORT_H_
