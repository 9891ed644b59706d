#ifndef CONTROLLER_BASE_DEMO_RUNS_RUN_RESULT_H_
#define CONTROLLER_BASE_DEMO_RUNS_RUN_RESULT_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace controller_base::demo {

// part / whole; 0 of nothing.
double Share(double part, double whole);

enum class RunOutcome {
  kReached,    // the goal
  kRefused,    // stopped where no way was left within the corridor
  kFellShort,  // stopped although there was one
  kUnjudged,   // no world could be drawn from the seed, or the run's process crashed or hung
};

// What became of one run.
struct RunResult {
  static constexpr std::size_t kLongestReason = 120;

  std::uint32_t seed = 0;
  RunOutcome outcome = RunOutcome::kUnjudged;
  char reason[kLongestReason] = "";  // why the goal was not reached; empty where it was
  bool has_reason = true;            // the robot stopped, and could tell what hindered it
  int contacts = 0;                  // times that the bumper was pressed anew
  int touches = 0;                   // as RunJudge counts them
  int lethal_cells = 0;              // likewise
  int detours = 0;
  double path = 0.0;    // m
  double driven = 0.0;  // m
  double detour = 0.0;  // m, all detours as they were planned
  double time = 0.0;    // s, simulated

  // The first line of the text, cut off at kLongestReason - 1.
  void SetReason(const std::string& text);
  // Nothing that a marathon forbids: refusals for a reason and contacts with what no laser sees are allowed.
  bool IsClean() const;
};

// "reached", "refused", "fell short", or for a run that nobody could judge "failed".
const char* Name(RunOutcome outcome);

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

#endif  // CONTROLLER_BASE_DEMO_RUNS_RUN_RESULT_H_
