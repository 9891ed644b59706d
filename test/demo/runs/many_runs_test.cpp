#include "demo/runs/many_runs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::StrEq;

constexpr auto kNever = [] { return false; };

ManyRuns Runs(std::size_t count, std::size_t jobs) {
  ManyRuns runs;
  runs.first_seed = 10;
  runs.most_runs = count;
  runs.jobs = jobs;
  return runs;
}

RunResult Reached(std::uint32_t seed) {
  RunResult result;
  result.seed = seed;
  result.outcome = RunOutcome::kReached;
  return result;
}

std::vector<RunResult> Collect(const ManyRuns& runs, const RunFunction& run) {
  std::vector<RunResult> results;
  const auto take = [&](const RunResult& result) {
    results.push_back(result);
    return true;
  };
  RunAll(runs, run, take, kNever);
  return results;
}

std::vector<std::uint32_t> Seeds(const std::vector<RunResult>& results) {
  std::vector<std::uint32_t> seeds;
  for (const RunResult& result : results) {
    seeds.push_back(result.seed);
  }
  return seeds;
}

void Sleep(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

TEST(ManyRuns, ResultsComeInTheOrderOfTheirSeedsWhoeverIsFirst) {
  const auto slow_ones = [](std::uint32_t seed) {
    Sleep(seed % 3 == 1 ? 60 : 1);  // 10 and 13
    return Reached(seed);
  };
  EXPECT_THAT(Seeds(Collect(Runs(6, 3), slow_ones)), ElementsAre(10, 11, 12, 13, 14, 15));
}

TEST(ManyRuns, EveryNumberTravelsAsItIs) {
  const auto run = [](std::uint32_t seed) {
    RunResult result = Reached(seed);
    result.SetReason("a reason");
    result.driven = 0.1 + seed;
    result.contacts = 7;
    return result;
  };
  const std::vector<RunResult> results = Collect(Runs(1, 1), run);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].outcome, RunOutcome::kReached);
  EXPECT_THAT(results[0].reason, StrEq("a reason"));
  EXPECT_EQ(results[0].driven, 10.1);
  EXPECT_EQ(results[0].contacts, 7);
}

TEST(ManyRuns, SoManyRunAtTheSameTimeAndInOtherProcesses) {
  const auto process = [](std::uint32_t seed) {
    RunResult result = Reached(seed);
    result.contacts = getpid();
    Sleep(20);
    return result;
  };
  std::vector<int> processes;
  for (const RunResult& result : Collect(Runs(12, 3), process)) {
    processes.push_back(result.contacts);
  }
  std::sort(processes.begin(), processes.end());
  EXPECT_EQ(std::unique(processes.begin(), processes.end()) - processes.begin(), 3);
  EXPECT_THAT(processes, testing::Not(testing::Contains(getpid())));
}

// How a run fails to return, and what is reported of it.
struct BadRun {
  const char* name;
  RunFunction run;
  const char* reason;
};

class BadRuns : public testing::TestWithParam<BadRun> {};

TEST_P(BadRuns, BecomeARowAndTheRestGoOn) {
  const auto one_bad = [](std::uint32_t seed) { return seed == 12 ? GetParam().run(seed) : Reached(seed); };
  ManyRuns runs = Runs(5, 2);
  runs.timeout = std::chrono::milliseconds(1000);
  const std::vector<RunResult> results = Collect(runs, one_bad);
  ASSERT_THAT(Seeds(results), ElementsAre(10, 11, 12, 13, 14));
  for (const RunResult& result : results) {
    EXPECT_EQ(result.outcome, result.seed == 12 ? RunOutcome::kUnjudged : RunOutcome::kReached);
  }
  EXPECT_THAT(results[2].reason, HasSubstr(GetParam().reason));
  EXPECT_FALSE(results[2].IsClean());
}

RunResult Crash(std::uint32_t seed) {
  std::signal(SIGSEGV, SIG_DFL);  // a sanitizer would make an exit of it
  raise(SIGSEGV);
  return Reached(seed);
}

RunResult Hang(std::uint32_t seed) {
  Sleep(60'000);
  return Reached(seed);
}

INSTANTIATE_TEST_SUITE_P(
    ManyRuns, BadRuns,
    testing::Values(BadRun{"Crash", Crash, "crashed: Segmentation fault"},
                    BadRun{"Abort", [](std::uint32_t) -> RunResult { std::abort(); }, "crashed: Aborted"},
                    BadRun{"Killed",
                           [](std::uint32_t seed) {
                             kill(getpid(), SIGKILL);
                             return Reached(seed);
                           },
                           "crashed: Killed"},
                    BadRun{"Exit", [](std::uint32_t) -> RunResult { _exit(3); }, "ended early, exit status 3"},
                    BadRun{"Hang", Hang, "hung: no result within 1 s"},
                    BadRun{"Exception", [](std::uint32_t) -> RunResult { throw std::runtime_error("no room\nfor it"); },
                           "no room"}),
    [](const testing::TestParamInfo<BadRun>& bad) { return bad.param.name; });

TEST(ManyRuns, AllOfThemMayCrash) { EXPECT_THAT(Seeds(Collect(Runs(4, 2), Crash)), ElementsAre(10, 11, 12, 13)); }

TEST(ManyRuns, TheTakerEndsThemAfterAGivenRunWhateverElseIsDone) {
  for (const std::size_t jobs : {std::size_t{1}, std::size_t{3}}) {
    std::vector<std::uint32_t> seeds;
    const auto take = [&](const RunResult& result) {
      seeds.push_back(result.seed);
      return result.seed < 12;
    };
    RunAll(Runs(100, jobs), Reached, take, kNever);
    EXPECT_THAT(seeds, ElementsAre(10, 11, 12)) << jobs;
  }
}

// Seed 10 takes long: the runs after it are done meanwhile, and are handed over in order.
TEST(ManyRuns, StoppingHandsOverWhatIsDone) {
  const auto run = [](std::uint32_t seed) { return seed == 10 ? Hang(seed) : Reached(seed); };
  std::vector<std::uint32_t> seeds;
  const auto take = [&](const RunResult& result) {
    seeds.push_back(result.seed);
    return true;
  };
  int asked = 0;
  RunAll(Runs(4, 2), run, take, [&] { return ++asked > 6; });
  EXPECT_THAT(seeds, ElementsAre(11, 12, 13));
}

TEST(ManyRuns, NoProcessIsLeft) {
  const auto run = [](std::uint32_t seed) { return seed == 11 ? Hang(seed) : Reached(seed); };
  RunAll(
      Runs(4, 2), run, [](const RunResult&) { return false; }, kNever);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no children
}

TEST(ManyRuns, TheChildrenEndWithTheirParentHoweverThatEnds) {
  const controller_base_test::TemporaryFolder folder;
  const std::string pid_file = (folder.path() / "pid").string();
  const pid_t parent = fork();
  if (parent == 0) {
    const auto run = [&](std::uint32_t seed) {
      std::ofstream(pid_file) << getpid() << std::endl;
      return Hang(seed);
    };
    RunAll(
        Runs(1, 1), run, [](const RunResult&) { return true; }, kNever);
    _exit(0);
  }
  std::string pid;
  while (pid.find('\n') == std::string::npos) {
    Sleep(5);
    pid = controller_base_test::ReadFile(pid_file);
  }
  kill(parent, SIGKILL);
  waitpid(parent, nullptr, 0);
  for (int tries = 0; tries < 200 && kill(std::stoi(pid), 0) == 0; ++tries) {
    Sleep(10);
    if (controller_base_test::ReadFile("/proc/" + std::to_string(std::stoi(pid)) + "/stat").find(") Z") !=
        std::string::npos) {
      break;  // dead, and not yet reaped by whoever adopted it
    }
  }
  const std::string stat = controller_base_test::ReadFile("/proc/" + std::to_string(std::stoi(pid)) + "/stat");
  EXPECT_TRUE(stat.empty() || stat.find(") Z") != std::string::npos) << stat;
}

// Ctrl-Z stops all processes of the group; the pipe shows that the run has begun.
TEST(ManyRuns, ARunDoesNotHangWhileEverybodyIsStopped) {
  int begun[2];
  ASSERT_EQ(pipe(begun), 0);
  const pid_t parent = fork();
  ASSERT_GE(parent, 0);
  if (parent == 0) {
    setpgid(0, 0);
    ManyRuns runs = Runs(1, 1);
    runs.timeout = std::chrono::milliseconds(3000);
    const std::vector<RunResult> results = Collect(runs, [&](std::uint32_t seed) {
      const char byte = 1;
      const bool is_told = write(begun[1], &byte, 1) == 1;
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
      const auto end = std::clock() + CLOCKS_PER_SEC / 20;  // processor time, which does not pass meanwhile
      while (std::clock() < end) {
      }
      return is_told ? Reached(seed) : RunResult();
    });
    _exit(results.size() == 1 && results[0].outcome == RunOutcome::kReached ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  char byte = 0;
  ASSERT_EQ(read(begun[0], &byte, 1), 1);
  kill(-parent, SIGSTOP);
  std::this_thread::sleep_for(std::chrono::milliseconds(3500));  // longer than the timeout for a run
  kill(-parent, SIGCONT);
  int status = 0;
  waitpid(parent, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS);
  close(begun[0]);
  close(begun[1]);
}

TEST(ManyRuns, CtrlCOfTheTerminalIsTheParentsAlone) {
  const auto run = [](std::uint32_t seed) {
    raise(SIGINT);
    return Reached(seed);
  };
  EXPECT_EQ(Collect(Runs(1, 1), run).front().outcome, RunOutcome::kReached);
}

}  // namespace
}  // namespace controller_base::demo
