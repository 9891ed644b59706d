#ifndef CONTROLLER_BASE_DEMO_COMPARE_COMPARISON_PAGE_H_
#define CONTROLLER_BASE_DEMO_COMPARE_COMPARISON_PAGE_H_

#include <limits>
#include <string>
#include <vector>

#include "demo/compare/compared_drive.h"

namespace controller_base::demo {

// Sums over the scenes of one planner.
struct PlannerTotals {
  int scenes = 0;
  int reached = 0;
  int touched_seen = 0;
  int touched_hidden = 0;
  int late_cycles = 0;
  double driven = 0.0;                                       // m
  double closest = std::numeric_limits<double>::infinity();  // m
  double time = 0.0;                                         // s
  double processor_seconds = 0.0;
  double time_of_both = 0.0;       // s, over the scenes that both planners reached
  double processor_of_both = 0.0;  // s, likewise
};

struct Comparison {
  PlannerTotals plugin;
  PlannerTotals dwa;
  int scenes = 0;                   // that were driven with both planners; only these count
  int both_reached = 0;             // of these
  std::vector<ComparedDrive> lost;  // scenes that the plugin did not reach, though the other did
};

Comparison Compare(const std::vector<ComparedDrive>& drives);

// Tables in Markdown: a row for each planner and map, the ratios that matter, and a row for each scene that a planner
// did not reach, with the reason.
std::string ComparisonPage(const std::vector<ComparedDrive>& drives);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_COMPARE_COMPARISON_PAGE_H_
