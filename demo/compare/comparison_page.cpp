#include "demo/compare/comparison_page.h"

#include <algorithm>
#include <map>
#include <utility>

#include "demo/runs/run_table.h"
#include "follower/format.h"
#include "follower/printable.h"

namespace controller_base::demo {
namespace {

// The two drives of a scene.
struct Pair {
  const ComparedDrive* plugin = nullptr;
  const ComparedDrive* dwa = nullptr;
};

std::map<std::pair<std::string, std::uint32_t>, Pair> Pairs(const std::vector<ComparedDrive>& drives) {
  std::map<std::pair<std::string, std::uint32_t>, Pair> pairs;
  for (const ComparedDrive& drive : drives) {
    Pair& pair = pairs[{drive.map, drive.seed}];
    (drive.planner == "plugin" ? pair.plugin : pair.dwa) = &drive;
  }
  return pairs;
}

void Add(const ComparedDrive& drive, bool both_reached, PlannerTotals* totals) {
  ++totals->scenes;
  totals->reached += drive.IsReached() ? 1 : 0;
  totals->touched_seen += drive.touched_seen;
  totals->touched_hidden += drive.touched_hidden;
  totals->late_cycles += drive.late_cycles;
  totals->driven += drive.driven;
  totals->closest = std::min(totals->closest, drive.closest);
  totals->time += drive.time;
  totals->processor_seconds += drive.processor_seconds;
  totals->time_of_both += both_reached ? drive.time : 0.0;
  totals->processor_of_both += both_reached ? drive.processor_seconds : 0.0;
}

std::string Row(const std::string& map, const char* planner, const PlannerTotals& totals) {
  return follower::Format("| %s | %s | %d | %d | %.0f | %.0f | %d | %d | %.3f | %.0f | %.1f | %d |\n", map.c_str(),
                          planner, totals.scenes, totals.reached, totals.driven, totals.time, totals.touched_seen,
                          totals.touched_hidden, totals.closest, totals.processor_seconds,
                          100.0 * Share(totals.processor_seconds, totals.time), totals.late_cycles);
}

std::string Rows(const std::string& map, const Comparison& comparison) {
  return Row(map, "plugin", comparison.plugin) + Row(map, "dwa", comparison.dwa);
}

std::string Ratios(const Comparison& all) {
  return follower::Format(
      "%d scenes, %d of them reached by both. Over those the plugin needs %.2f of the time and %.2f of the processor "
      "time of dwa. The plugin lost %zu scenes that dwa reached.\n",
      all.scenes, all.both_reached, Share(all.plugin.time_of_both, all.dwa.time_of_both),
      Share(all.plugin.processor_of_both, all.dwa.processor_of_both), all.lost.size());
}

std::string Unreached(const std::vector<ComparedDrive>& drives) {
  std::string rows;
  for (const ComparedDrive& drive : drives) {
    if (!drive.IsReached()) {
      rows += follower::Format("| %s | %u | %s | %s | %.1f | %d | %d | %s |\n", follower::Printable(drive.map).c_str(),
                               drive.seed, drive.planner.c_str(), drive.outcome.c_str(), drive.time, drive.touched_seen,
                               drive.touched_hidden, follower::Printable(drive.reason).c_str());
    }
  }
  return rows;
}

}  // namespace

Comparison Compare(const std::vector<ComparedDrive>& drives) {
  Comparison comparison;
  for (const auto& [name, pair] : Pairs(drives)) {
    if (pair.plugin == nullptr || pair.dwa == nullptr) {
      continue;
    }
    const bool both_reached = pair.plugin->IsReached() && pair.dwa->IsReached();
    ++comparison.scenes;
    comparison.both_reached += both_reached ? 1 : 0;
    Add(*pair.plugin, both_reached, &comparison.plugin);
    Add(*pair.dwa, both_reached, &comparison.dwa);
    if (!pair.plugin->IsReached() && pair.dwa->IsReached()) {
      comparison.lost.push_back(*pair.plugin);
    }
  }
  return comparison;
}

std::string ComparisonPage(const std::vector<ComparedDrive>& drives) {
  std::map<std::string, std::vector<ComparedDrive>> of_map;
  for (const ComparedDrive& drive : drives) {
    of_map[drive.map].push_back(drive);
  }
  std::string page =
      "| map | planner | scenes | reached | m | s | touched seen | touched hidden | closest m | processor s | "
      "processor % | late cycles |\n|---|---|---|---|---|---|---|---|---|---|---|---|\n";
  for (const auto& [map, its_drives] : of_map) {
    page += Rows(follower::Printable(map), Compare(its_drives));
  }
  const Comparison all = Compare(drives);
  page += Rows("all", all) + "\n" + Ratios(all);
  const std::string unreached = Unreached(drives);
  return unreached.empty() ? page
                           : page +
                                 "\n| map | seed | planner | outcome | s | touched seen | touched hidden | reason |\n"
                                 "|---|---|---|---|---|---|---|---|\n" +
                                 unreached;
}

}  // namespace controller_base::demo
