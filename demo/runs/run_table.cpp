#include "demo/runs/run_table.h"

#include <algorithm>
#include <cmath>

#include "demo/output/drive_files.h"
#include "follower/format.h"

namespace controller_base::demo {

double Share(double part, double whole) { return whole > 0.0 ? part / whole : 0.0; }

std::string GapText(double gap) { return std::isfinite(gap) ? follower::Format("%.3f", gap) : ""; }

std::string ConditionsLine(simulation::Conditions conditions) {
  const std::string world = conditions == simulation::Conditions::kHarsh ? "Harsh" : "Kind";
  return world + " world; no path is planned again: the follower in its corridor alone.";
}

void WriteRunsHeader(std::ostream& out) {
  out << "seed,outcome,reason,has_reason,contacts,touches,lethal_cells,hidden_touched,hidden_contacts,half_metre_way,"
         "narrowest_gap_m,detours,detour_m,path_m,detour_over_path,driven_m,time_s\n";
}

void WriteRun(const RunResult& run, std::ostream& out) {
  out << run.seed << ',' << Name(run.outcome) << ',' << CsvText(run.reason) << ',' << (run.has_reason ? 1 : 0)
      << follower::Format(",%d,%d,%d,%d,%d,%d,%s,%d,%.3f,%.3f,%.4f,%.3f,%.2f\n", run.contacts, run.touches,
                          run.lethal_cells, run.hidden_touched, run.hidden_contacts, run.has_wide_path ? 1 : 0,
                          GapText(run.narrowest_gap).c_str(), run.detours, run.detour, run.path,
                          Share(run.detour, run.path), run.driven, run.time);
}

std::string TableHeader() {
  return "      seed  outcome     path_m  driven_m  time_s  contacts  detours  detour/path  reason";
}

std::string TableRow(const RunResult& run) {
  return follower::Format("%10u  %-10s  %6.1f  %8.1f  %6.1f  %8d  %7d  %11.2f%s%s", run.seed, Name(run.outcome),
                          run.path, run.driven, run.time, run.contacts, run.detours, Share(run.detour, run.path),
                          run.reason[0] == '\0' ? "" : "  ", run.reason);
}

void RunTotals::Add(const RunResult& run) {
  ++runs;
  reached += run.outcome == RunOutcome::kReached ? 1 : 0;
  refused += run.outcome == RunOutcome::kRefused ? 1 : 0;
  fell_short += run.outcome == RunOutcome::kFellShort ? 1 : 0;
  unjudged += run.outcome == RunOutcome::kUnjudged ? 1 : 0;
  contacts += run.contacts;
  touches += run.touches;
  lethal_cells += run.lethal_cells;
  without_reason += run.has_reason ? 0 : 1;
  wide_paths += run.has_wide_path ? 1 : 0;
  hidden_touched += run.hidden_touched;
  hidden_contacts += run.hidden_contacts;
  narrowest_gap = std::min(narrowest_gap, run.narrowest_gap);
  unclean += run.IsClean() ? 0 : 1;
  detours += run.detours;
  path += run.path;
  driven += run.driven;
  detour += run.detour;
  time += run.time;
}

void RunTotals::Add(const RunTotals& others) {
  runs += others.runs;
  reached += others.reached;
  refused += others.refused;
  fell_short += others.fell_short;
  unjudged += others.unjudged;
  contacts += others.contacts;
  touches += others.touches;
  lethal_cells += others.lethal_cells;
  without_reason += others.without_reason;
  wide_paths += others.wide_paths;
  hidden_touched += others.hidden_touched;
  hidden_contacts += others.hidden_contacts;
  narrowest_gap = std::min(narrowest_gap, others.narrowest_gap);
  unclean += others.unclean;
  detours += others.detours;
  path += others.path;
  driven += others.driven;
  detour += others.detour;
  time += others.time;
}

std::string TotalsLine(const RunTotals& totals) {
  return follower::Format(
      "%d runs, %.2f km: %d reached, %d refused, %d fell short, %d failed; %d contacts, %d avoidable touches, %d "
      "lethal "
      "cells entered, %d stops without a reason, %d stops with a way of 0.50 m; %.2f contacts per hidden obstacle "
      "touched; "
      "narrowest gap %s; %d detours, detour/path %.2f",
      totals.runs, totals.driven / 1000.0, totals.reached, totals.refused, totals.fell_short, totals.unjudged,
      totals.contacts, totals.touches, totals.lethal_cells, totals.without_reason, totals.wide_paths,
      Share(totals.hidden_contacts, totals.hidden_touched),
      std::isfinite(totals.narrowest_gap) ? (GapText(totals.narrowest_gap) + " m").c_str() : "none", totals.detours,
      Share(totals.detour, totals.path));
}

}  // namespace controller_base::demo
