#ifndef CONTROLLER_BASE_DEMO_JUDGE_RUN_RESULT_H_
#define CONTROLLER_BASE_DEMO_JUDGE_RUN_RESULT_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace controller_base::demo {

// What became of one run, judged by the true world.
enum class RunOutcome {
  kReached,    // the goal
  kRefused,    // stopped where no way was left within the corridor; docs/marathon.md says how that is judged
  kFellShort,  // stopped although there was one
  kUnjudged,   // no world could be drawn from the seed, or the run's process crashed or hung
};

// One run in figures: plain bytes, which cross from one process to another.
struct RunResult {
  static constexpr std::size_t kLongestReason = 120;

  std::uint32_t seed = 0;
  RunOutcome outcome = RunOutcome::kUnjudged;
  char reason[kLongestReason] = "";                                // why the goal was not reached; empty where it was
  bool has_reason = true;                                          // as IsExplained says of a robot that stopped
  int contacts = 0;                                                // times that the bumper was pressed anew
  int touches = 0;                                                 // as RunJudge counts them
  int lethal_cells = 0;                                            // likewise
  bool has_wide_path = false;                                      // stopped short of the goal although WidePathExists
  int hidden_touched = 0;                                          // as HiddenContacts counts them
  int hidden_contacts = 0;                                         // likewise
  double narrowest_gap = std::numeric_limits<double>::infinity();  // m, as GapMeter measures it
  int detours = 0;
  double path = 0.0;    // m
  double driven = 0.0;  // m
  double detour = 0.0;  // m, all detours as they were planned
  double time = 0.0;    // s, simulated

  // The first line of the text, printable (printable.h), cut off at kLongestReason - 1.
  void SetReason(const std::string& text);
  // Nothing that a marathon forbids: refusals for a reason and contacts with what no laser sees are allowed.
  bool IsClean() const;
};

// "reached", "refused", "fell short", or for a run that nobody could judge "failed".
const char* Name(RunOutcome outcome);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_RUN_RESULT_H_
