#ifndef CONTROLLER_BASE_DEMO_RUNS_RUN_TABLE_H_
#define CONTROLLER_BASE_DEMO_RUNS_RUN_TABLE_H_

#include <limits>
#include <ostream>
#include <string>

#include "demo/judge/run_result.h"
#include "simulation/harsh_world.h"

namespace controller_base::demo {

// part / whole; 0 of nothing.
double Share(double part, double whole);

// Metres; empty for infinity: there was no gap.
std::string GapText(double gap);

// What kind of runs a table shows, in one sentence.
std::string ConditionsLine(simulation::Conditions conditions);

// The CSV's header line and one line for a run: the same run gives the same bytes.
void WriteRunsHeader(std::ostream& out);
void WriteRun(const RunResult& run, std::ostream& out);

// The table in the terminal: headings, and a line for a run.
std::string TableHeader();
std::string TableRow(const RunResult& run);

// Sums over many runs.
struct RunTotals {
  int runs = 0;
  int reached = 0;
  int refused = 0;
  int fell_short = 0;
  int unjudged = 0;
  int contacts = 0;
  int touches = 0;
  int lethal_cells = 0;
  int without_reason = 0;
  int wide_paths = 0;
  int hidden_touched = 0;
  int hidden_contacts = 0;
  double narrowest_gap = std::numeric_limits<double>::infinity();  // m
  int unclean = 0;
  int detours = 0;
  double path = 0.0;    // m
  double driven = 0.0;  // m
  double detour = 0.0;  // m
  double time = 0.0;    // s

  void Add(const RunResult& run);
  void Add(const RunTotals& others);
};

// One line for all of them.
std::string TotalsLine(const RunTotals& totals);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_RUN_TABLE_H_
