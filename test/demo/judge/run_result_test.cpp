#include "demo/judge/run_result.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace controller_base::demo {
namespace {

using testing::StrEq;

RunResult With(RunOutcome outcome) {
  RunResult run;
  run.outcome = outcome;
  return run;
}

TEST(RunResult, ALongReasonIsCut) {
  RunResult run;
  run.SetReason(std::string(500, 'x'));
  EXPECT_THAT(run.reason, StrEq(std::string(RunResult::kLongestReason - 1, 'x')));
}

TEST(RunResult, ReachedAndRefusedAreCleanUnlessSomethingElseWentWrong) {
  EXPECT_TRUE(With(RunOutcome::kReached).IsClean());
  EXPECT_TRUE(With(RunOutcome::kRefused).IsClean());
  EXPECT_FALSE(With(RunOutcome::kFellShort).IsClean());
  EXPECT_FALSE(With(RunOutcome::kUnjudged).IsClean());
  RunResult run = With(RunOutcome::kReached);
  run.touches = 1;
  EXPECT_FALSE(run.IsClean());
  run = With(RunOutcome::kReached);
  run.lethal_cells = 1;
  EXPECT_FALSE(run.IsClean());
  run = With(RunOutcome::kRefused);
  run.has_reason = false;
  EXPECT_FALSE(run.IsClean());
}

}  // namespace
}  // namespace controller_base::demo
