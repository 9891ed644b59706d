#include "demo/runs/run_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace controller_base::demo {
namespace {

using testing::HasSubstr;

RunResult ARun(RunOutcome outcome) {
  RunResult run;
  run.seed = 42;
  run.outcome = outcome;
  run.contacts = 1;
  run.detours = 3;
  run.path = 8.0;
  run.driven = 9.25;
  run.detour = 6.0;
  run.time = 31.25;
  return run;
}

TEST(RunTable, TheCsvHasAColumnForEachFigure) {
  std::ostringstream header;
  WriteRunsHeader(header);
  EXPECT_EQ(header.str(),
            "seed,outcome,reason,has_reason,contacts,touches,lethal_cells,hidden_touched,hidden_contacts,"
            "half_metre_way,narrowest_gap_m,detours,detour_m,path_m,detour_over_path,driven_m,time_s\n");
  RunResult run = ARun(RunOutcome::kFellShort);
  run.SetReason("no \"way\", none");
  run.has_reason = false;
  run.touches = 2;
  run.lethal_cells = 4;
  run.hidden_touched = 1;
  run.hidden_contacts = 3;
  run.has_wide_path = true;
  run.narrowest_gap = 0.5123;
  std::ostringstream row;
  WriteRun(run, row);
  EXPECT_EQ(row.str(), "42,fell short,\"no \"\"way\"\", none\",0,1,2,4,1,3,1,0.512,3,6.000,8.000,0.7500,9.250,31.25\n");
}

TEST(RunTable, ATableRowStandsUnderItsHeadings) {
  RunResult run = ARun(RunOutcome::kRefused);
  run.SetReason("no way");
  const std::string header = TableHeader();
  const std::string row = TableRow(run);
  EXPECT_EQ(header, "      seed  outcome     path_m  driven_m  time_s  contacts  detours  detour/path  reason");
  EXPECT_EQ(row, "        42  refused        8.0       9.2    31.2         1        3         0.75  no way");
  EXPECT_EQ(row.find("no way"), header.find("reason"));
  EXPECT_THAT(TableRow(ARun(RunOutcome::kReached)), testing::EndsWith("0.75"));  // and no blanks
}

TEST(RunTable, OneThatDidNotDriveDividesByNothing) {
  RunResult run;
  std::ostringstream row;
  WriteRun(run, row);
  EXPECT_THAT(row.str(), HasSubstr(",0.0000,"));
  EXPECT_THAT(row.str(), HasSubstr(",0,0,0,,0,0.000,"));  // no gap
}

// One with a figure of each kind that counts against it.
RunResult ABadRun() {
  RunResult bad = ARun(RunOutcome::kFellShort);
  bad.touches = 2;
  bad.lethal_cells = 3;
  bad.has_wide_path = true;
  bad.hidden_touched = 2;
  bad.hidden_contacts = 5;
  bad.narrowest_gap = 0.5;
  bad.has_reason = false;
  return bad;
}

TEST(RunTotals, AddUpRunsAndOtherTotals) {
  RunTotals part;
  part.Add(ARun(RunOutcome::kReached));
  part.Add(ARun(RunOutcome::kRefused));
  part.Add(ABadRun());
  part.Add(RunResult());
  RunTotals all;
  all.Add(part);
  all.Add(part);
  EXPECT_EQ(all.runs, 8);
  EXPECT_EQ(all.reached, 2);
  EXPECT_EQ(all.refused, 2);
  EXPECT_EQ(all.fell_short, 2);
  EXPECT_EQ(all.unjudged, 2);
  EXPECT_EQ(all.contacts, 6);
  EXPECT_EQ(all.touches, 4);
  EXPECT_EQ(all.lethal_cells, 6);
  EXPECT_EQ(all.without_reason, 2);
  EXPECT_EQ(all.wide_paths, 2);
  EXPECT_EQ(all.hidden_touched, 4);
  EXPECT_EQ(all.hidden_contacts, 10);
  EXPECT_EQ(all.narrowest_gap, 0.5);
  EXPECT_EQ(all.unclean, 4);
  EXPECT_EQ(all.detours, 18);
  EXPECT_EQ(all.path, 48.0);
  EXPECT_EQ(all.driven, 55.5);
  EXPECT_EQ(all.detour, 36.0);
  EXPECT_EQ(all.time, 187.5);
  EXPECT_EQ(TotalsLine(all),
            "8 runs, 0.06 km: 2 reached, 2 refused, 2 fell short, 2 failed; 6 contacts, 4 avoidable touches, 6 lethal "
            "cells entered, 2 stops without a reason, 2 stops with a way of 0.50 m; 2.50 contacts per hidden obstacle "
            "touched; "
            "narrowest gap 0.500 m; 18 detours, detour/path 0.75");
}

}  // namespace
}  // namespace controller_base::demo
