#include "demo/runs/marathon_report.h"

#include "follower/format.h"
#include "follower/printable.h"

namespace controller_base::demo {
namespace {

std::string MapRow(const MapReport& report) {
  const RunTotals& all = report.totals;
  return follower::Format(
      "| %s | %d | %.2f | %.1f | %d | %d | %d | %d | %d | %d | %d | %d | %d | %.2f | %s | %d | %.2f | %.0f | %.0f |\n",
      follower::Printable(report.map).c_str(), all.runs, all.driven / 1000.0, all.time / 3600.0, all.reached,
      all.refused, all.fell_short, all.unjudged, all.touches, all.lethal_cells, all.without_reason, all.wide_paths,
      all.contacts, Share(all.hidden_contacts, all.hidden_touched), GapText(all.narrowest_gap).c_str(), all.detours,
      Share(all.detour, all.path), report.processor_seconds, report.wall_seconds);
}

MapReport Sum(const std::vector<MapReport>& reports) {
  MapReport sum;
  sum.map = "all";
  for (const MapReport& report : reports) {
    sum.totals.Add(report.totals);
    sum.processor_seconds += report.processor_seconds;
    sum.wall_seconds += report.wall_seconds;
  }
  return sum;
}

}  // namespace

void MapReport::Add(const RunResult& run) {
  totals.Add(run);
  if (!run.IsClean()) {
    unclean.push_back(run);
  }
}

std::string MarathonPage(simulation::Conditions conditions, const std::vector<MapReport>& reports) {
  std::string page =
      ConditionsLine(conditions) +
      "\n\n"
      "| map | worlds | km | simulated h | reached | refused | fell short | crashed | avoidable touches | lethal cells "
      "| no reason | 0.50 m way | contacts | contacts per hidden obstacle | narrowest gap m | detours | detour/path | "
      "processor s | wall s |\n"
      "|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n";
  for (const MapReport& report : reports) {
    page += MapRow(report);
  }
  page += MapRow(Sum(reports));
  page += "\n";
  if (Sum(reports).totals.unclean == 0) {
    return page + "Nothing fell short.\n";
  }
  page +=
      "| map | seed | outcome | avoidable touches | lethal cells | contacts | reason "
      "|\n|---|---|---|---|---|---|---|\n";
  for (const MapReport& report : reports) {
    for (const RunResult& run : report.unclean) {
      page += follower::Format("| %s | %u | %s | %d | %d | %d | %s |\n", follower::Printable(report.map).c_str(),
                               run.seed, Name(run.outcome), run.touches, run.lethal_cells, run.contacts, run.reason);
    }
  }
  return page;
}

}  // namespace controller_base::demo
