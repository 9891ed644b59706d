#ifndef CONTROLLER_BASE_DEMO_JUDGE_EXPECTATION_H_
#define CONTROLLER_BASE_DEMO_JUDGE_EXPECTATION_H_

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "demo/judge/verdict.h"

namespace controller_base::demo {

struct ExpectedEvent {
  std::string kind;
  std::string text;  // part of the event's text; empty: any
};

// What is to come of a drive.
struct Expectation {
  std::optional<DriveOutcome> outcome;                          // none: anything
  std::vector<std::string> reasons;                             // parts of the verdict
  double latest_end = std::numeric_limits<double>::infinity();  // s since the drive began
  int fewest_contacts = 0;                                      // times that something was really touched anew
  int most_contacts = std::numeric_limits<int>::max();
  std::vector<ExpectedEvent> events;  // in this order; others may lie between them
  std::vector<ExpectedEvent> never;
};

// What of it did not come true, a line for each; empty when all did.
std::vector<std::string> Unmet(const Expectation& expectation, const simulation::DriveRecord& drive);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_EXPECTATION_H_
