#include "demo/runs/marathon_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace controller_base::demo {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

RunResult ARun(std::uint32_t seed, RunOutcome outcome) {
  RunResult run;
  run.seed = seed;
  run.outcome = outcome;
  run.driven = 1000.0;
  run.path = 900.0;
  run.time = 3600.0;
  return run;
}

TEST(MarathonPage, HasARowForEachMapAndOneForAll) {
  MapReport hall;
  hall.map = "hall";
  hall.Add(ARun(1, RunOutcome::kReached));
  RunResult refused = ARun(2, RunOutcome::kRefused);
  refused.has_wide_path = true;
  refused.contacts = 2;
  refused.hidden_touched = 2;
  refused.hidden_contacts = 3;
  refused.narrowest_gap = 0.412;
  hall.Add(refused);
  hall.processor_seconds = 3.0;
  hall.wall_seconds = 2.0;
  MapReport barn = hall;
  barn.map = "barn";
  const std::string page = MarathonPage(simulation::Conditions::kHarsh, {hall, barn});
  EXPECT_THAT(page, HasSubstr("\n| hall | 2 | 2.00 | 2.0 | 1 | 1 | 0 | 0 | 0 | 0 | 0 | 1 | 2 | 1.50 | 0.412 | 0 | 0.00 "
                              "| 3 | 2 |\n| barn |"));
  EXPECT_THAT(
      page,
      HasSubstr("\n| all | 4 | 4.00 | 4.0 | 2 | 2 | 0 | 0 | 0 | 0 | 0 | 2 | 4 | 1.50 | 0.412 | 0 | 0.00 | 6 | 4 |\n"));
  EXPECT_THAT(page, StartsWith("Harsh world; no path is planned again"));
  EXPECT_THAT(page, EndsWith("Nothing fell short.\n"));
}

TEST(MarathonPage, ListsBySeedWhatWasNotClean) {
  MapReport hall;
  hall.map = "hall";
  hall.Add(ARun(1, RunOutcome::kReached));
  RunResult bad = ARun(7, RunOutcome::kFellShort);
  bad.touches = 1;
  bad.lethal_cells = 2;
  bad.contacts = 3;
  bad.SetReason("no way");
  hall.Add(bad);
  EXPECT_THAT(MarathonPage(simulation::Conditions::kHarsh, {hall}),
              EndsWith("|---|\n| hall | 7 | fell short | 1 | 2 | 3 | no way |\n"));
}

}  // namespace
}  // namespace controller_base::demo
