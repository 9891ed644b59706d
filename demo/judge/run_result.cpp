#include "demo/judge/run_result.h"

#include <cstdio>

#include "follower/printable.h"

namespace controller_base::demo {

void RunResult::SetReason(const std::string& text) {
  std::snprintf(reason, sizeof(reason), "%s", follower::Printable(text.substr(0, text.find('\n'))).c_str());
}

bool RunResult::IsClean() const {
  return (outcome == RunOutcome::kReached || outcome == RunOutcome::kRefused) && has_reason && touches == 0 &&
         lethal_cells == 0;
}

const char* Name(RunOutcome outcome) {
  switch (outcome) {
    case RunOutcome::kReached:
      return "reached";
    case RunOutcome::kRefused:
      return "refused";
    case RunOutcome::kFellShort:
      return "fell short";
    case RunOutcome::kUnjudged:
      break;
  }
  return "failed";
}

}  // namespace controller_base::demo
