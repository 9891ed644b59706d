// Many runs and the marathon as a user starts them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

struct Finished {
  int status;  // of the exit, or minus the signal
  std::string output;
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Each test has a folder of its own, which the programs run in.
class RunsProgram : public testing::Test {
 protected:
  // Both output streams, of a line for the shell.
  Finished Shell(const std::string& line) const {
    std::FILE* output = popen(("cd " + folder_.path().string() + " && { " + line + "; } 2>&1").c_str(), "r");
    std::string text;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) {
      text += static_cast<char>(c);
    }
    const int status = pclose(output);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), text};
  }
  Finished Demo(const std::string& arguments) const { return Shell(CONTROLLER_BASE_DEMO_PROGRAM " " + arguments); }
  Finished Marathon(const std::string& arguments) const {
    return Shell(CONTROLLER_BASE_MARATHON_PROGRAM " " + arguments);
  }

  std::string Read(const std::string& file) const { return ReadFile(folder_.path() / file); }

  TemporaryFolder folder_;
};

TEST_F(RunsProgram, TheTableAndTheCsvHaveARowForEachSeed) {
  const Finished demo = Demo("--runs 3 --seed 20 --jobs 2");
  EXPECT_EQ(demo.status, 0) << demo.output;
  const std::vector<std::string> lines = Lines(demo.output);
  ASSERT_THAT(lines, SizeIs(7)) << demo.output;
  EXPECT_THAT(lines[0], StartsWith("Harsh world; "));
  EXPECT_THAT(lines[1], HasSubstr("seed  outcome"));
  EXPECT_THAT(lines[2], StartsWith("        20  reached  "));
  EXPECT_THAT(lines[3], StartsWith("        21  "));
  EXPECT_THAT(lines[4], StartsWith("        22  "));
  EXPECT_THAT(lines[5], StartsWith("3 runs, 0.0"));
  EXPECT_THAT(lines[6], EndsWith("runs-out/runs.csv"));
  const std::vector<std::string> rows = Lines(Read("runs-out/runs.csv"));
  ASSERT_THAT(rows, SizeIs(4));
  EXPECT_THAT(rows[0], StartsWith("seed,outcome,reason,"));
  EXPECT_THAT(rows[1], StartsWith("20,reached,\"\","));
  EXPECT_THAT(rows[3], StartsWith("22,"));
}

TEST_F(RunsProgram, ARunIsTheSameInWhateverCompany) {
  ASSERT_EQ(Demo("--runs 4 --seed 20 --jobs 1 --out a").status, 0);
  ASSERT_EQ(Demo("--runs 4 --seed 20 --jobs 3 --out b").status, 0);
  ASSERT_EQ(Demo("--runs 1 --seed 22 --out c").status, 0);
  EXPECT_EQ(Read("a/runs.csv"), Read("b/runs.csv"));
  EXPECT_EQ(Lines(Read("a/runs.csv"))[3], Lines(Read("c/runs.csv"))[1]);
}

// The single drive's files agree with the row in time and distance.
TEST_F(RunsProgram, ASeedAloneDrivesThatWorldWithEverythingThatADriveLeaves) {
  std::vector<std::string> times;
  for (const std::string world : {"", " --world harsh", " --world kind"}) {
    ASSERT_EQ(Demo("--runs 1 --seed 22" + world).status, 0);
    ASSERT_EQ(Demo("--seed 22" + world).status, 0);
    EXPECT_TRUE(fs::exists(folder_.path() / "demo-out" / "drive.png"));
    const std::string row = Lines(Read("runs-out/runs.csv"))[1];
    times.push_back(row.substr(row.rfind(',') + 1));
    EXPECT_THAT(Read("demo-out/result.json"), HasSubstr("\"duration_s\": " + times.back() + ","));
  }
  EXPECT_EQ(times[0], times[1]);
  EXPECT_NE(times[0], times[2]);
}

TEST_F(RunsProgram, AnyMapWillDo) {
  const Finished demo = Demo("--runs 2 --map " CONTROLLER_BASE_DEMO_MAPS "/hall.yaml");
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(Lines(Read("runs-out/runs.csv")), SizeIs(3));
}

TEST_F(RunsProgram, InATerminalABarIsKeptBelowTheTable) {
  const Finished demo = Shell("script -qec '" CONTROLLER_BASE_DEMO_PROGRAM " --runs 3 --seed 20' /dev/null");
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("\x1b[K[########................] 1 of 3 runs, 0.0 km, 1 reached"));
  EXPECT_THAT(demo.output, HasSubstr("[########################] 3 of 3 runs"));
  EXPECT_THAT(Demo("--runs 1 --seed 20").output, Not(HasSubstr("[####")));
}

TEST_F(RunsProgram, WrongWordsAreNamedInOneLine) {
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {"--runs 0", "--runs wants a whole number from 1 to 1000000, not '0'"},
      {"--runs -2", "--runs wants a whole number from 1 to 1000000, not '-2'"},
      {"--runs 1.5", "--runs wants a whole number from 1 to 1000000, not '1.5'"},
      {"--runs 1000001", "--runs wants a whole number from 1 to 1000000, not '1000001'"},
      {"--runs=", "--runs wants a whole number from 1 to 1000000, not ''"},
      {"--runs 1 --seed -1", "--seed wants a whole number from 0 to 4294967295, not '-1'"},
      {"--seed 4294967296", "--seed wants a whole number from 0 to 4294967295, not '4294967296'"},
      {"--runs 1 --jobs 0", "--jobs wants a whole number from 1 to 256, not '0'"},
      {"--runs 1 --jobs two", "--jobs wants a whole number from 1 to 256, not 'two'"},
      {"--jobs 2", "--jobs wants --runs"},
      {"--runs 1 --world cruel", "--world is kind or harsh, not 'cruel'"},
      {"--world kind", "--world wants --seed or --runs; a scenario says itself how its world is"},
      {"--runs 1 --rviz", "--runs cannot be watched; --seed alone drives one of them again"},
      {"--runs 1 --bag b.bag", "--runs records no bag; --seed alone drives one of them again"},
      {"--seed 1 --start 1,2,0 --goal 3,4",
       "--seed and --runs draw a world with a start and a goal; --scenario, --start and --goal name one"},
      {"--runs 1 --scenario x.yaml",
       "--seed and --runs draw a world with a start and a goal; --scenario, --start and --goal name one"},
  };
  for (const auto& [arguments, complaint] : wrong) {
    const Finished demo = Demo(arguments);
    EXPECT_EQ(demo.status, 2) << arguments;
    EXPECT_EQ(demo.output, "controller_base_demo: " + complaint + "\n");
  }
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(RunsProgram, AMapWithoutRoomIsNamedBeforeAnythingRuns) {
  folder_.Write(
      "full.pgm", "P2\n40 40\n255\n" + [] {
        std::string pixels;
        for (int i = 0; i < 1600; ++i) {
          pixels += "0 ";
        }
        return pixels;
      }());
  folder_.Write("full.yaml",
                "image: full.pgm\nresolution: 0.05\norigin: [0, 0, 0]\noccupied_thresh: 0.65\nfree_thresh: 0.2\n");
  for (const char* arguments : {"--map full.yaml --runs 2", "--map full.yaml --seed 2"}) {
    const Finished demo = Demo(arguments);
    EXPECT_EQ(demo.status, 3) << demo.output;
    EXPECT_EQ(demo.output,
              "controller_base_demo: full.yaml: no room for a random drive; it needs 4 m from start to goal\n");
  }
  EXPECT_FALSE(fs::exists(folder_.path() / "runs-out"));
}

std::vector<pid_t> ChildrenOf(pid_t process) {
  const std::string number = std::to_string(process);
  std::istringstream numbers(ReadFile("/proc/" + number + "/task/" + number + "/children"));
  std::vector<pid_t> children;
  for (pid_t child = 0; numbers >> child;) {
    children.push_back(child);
  }
  return children;
}

// The process of a run that `demo` has started, which carries its program's name.
pid_t RunOf(pid_t demo) {
  for (int tries = 0; tries < 1000; ++tries) {
    for (const pid_t child : ChildrenOf(demo)) {
      if (ReadFile("/proc/" + std::to_string(child) + "/comm").rfind("controller_base", 0) == 0) {
        return child;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return -1;
}

// The demo in `folder`, with its output in output.txt there; returns once it has told of a first run.
pid_t StartRuns(const fs::path& folder, const std::string& runs) {
  const std::string output = (folder / "output.txt").string();
  const pid_t demo = fork();
  if (demo == 0) {
    if (chdir(folder.c_str()) != 0 || std::freopen(output.c_str(), "w", stdout) == nullptr) {
      _exit(126);
    }
    execl(CONTROLLER_BASE_DEMO_PROGRAM, CONTROLLER_BASE_DEMO_PROGRAM, "--runs", runs.c_str(), "--seed", "20", "--jobs",
          "1", nullptr);
    _exit(127);
  }
  for (int tries = 0; tries < 10000 && ReadFile(output).find("reached") == std::string::npos; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return demo;
}

// Far more runs than the test waits for.
TEST_F(RunsProgram, CtrlCLeavesTheTableOfWhatWasDone) {
  const pid_t demo = StartRuns(folder_.path(), "100000");
  kill(demo, SIGINT);
  int status = 0;
  waitpid(demo, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 130);
  const std::vector<std::string> rows = Lines(Read("runs-out/runs.csv"));
  EXPECT_GT(rows.size(), 1u);
  EXPECT_LT(rows.size(), 100000u);
  EXPECT_THAT(Read("output.txt"), HasSubstr("\n" + std::to_string(rows.size() - 1) + " runs, "));
}

TEST_F(RunsProgram, ACrashIsARowAndAnExitStatus) {
  const pid_t demo = StartRuns(folder_.path(), "20");
  const pid_t run = RunOf(demo);
  ASSERT_GT(run, 0);
  kill(run, SIGKILL);
  int status = 0;
  waitpid(demo, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 14);
  const std::vector<std::string> rows = Lines(Read("runs-out/runs.csv"));
  ASSERT_THAT(rows, SizeIs(21));
  EXPECT_EQ(std::count_if(
                rows.begin(), rows.end(),
                [](const std::string& row) { return row.find(",failed,\"crashed: Killed\",") != std::string::npos; }),
            1);
}

TEST_F(RunsProgram, AMarathonOfSomeMetresIsTheSameAgain) {
  const std::string arguments = "--km 0.02 --worlds 3 --jobs 2 --maps " CONTROLLER_BASE_DEMO_MAPS " --out ";
  const Finished marathon = Marathon(arguments + "a");
  EXPECT_EQ(marathon.status, 0) << marathon.output;
  EXPECT_THAT(marathon.output, HasSubstr("| map | worlds | km |"));
  EXPECT_THAT(marathon.output, HasSubstr("\n| apartment | 3 | 0.0"));
  EXPECT_THAT(marathon.output, HasSubstr("\n| hall | 1 | 0.0"));
  EXPECT_THAT(marathon.output, HasSubstr("\nNothing fell short.\n"));
  EXPECT_THAT(marathon.output, HasSubstr(Read("a/marathon.md")));
  EXPECT_THAT(Lines(Read("a/1-apartment.csv")), SizeIs(4));
  EXPECT_EQ(Marathon(arguments + "b").status, 0);
  EXPECT_EQ(Read("a/1-apartment.csv"), Read("b/1-apartment.csv"));
  EXPECT_EQ(Read("a/3-hall.csv"), Read("b/3-hall.csv"));
}

TEST_F(RunsProgram, AMarathonWithoutFurtherMapsSaysSo) {
  const Finished marathon = Marathon("--km 0.001 --worlds 1 --maps nowhere");
  EXPECT_EQ(marathon.status, 0) << marathon.output;
  EXPECT_THAT(marathon.output, HasSubstr("No further maps: nowhere is absent\n"));
  EXPECT_TRUE(fs::exists(folder_.path() / "marathon-out" / "marathon.md"));
}

TEST_F(RunsProgram, TheMarathonNamesWrongWordsInOneLine) {
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {"--km 0", "--km wants a number above 0, at most 10000, not '0'"},
      {"--km far", "--km wants a number above 0, at most 10000, not 'far'"},
      {"--km nan", "--km wants a number above 0, at most 10000, not 'nan'"},
      {"--worlds 0", "--worlds wants a whole number from 1 to 1000000, not '0'"},
      {"--jobs many", "--jobs wants a whole number from 1 to 256, not 'many'"},
      {"--seed", "'--seed' is not a known option, or lacks its value; --help shows the known ones"},
      {"--speed 9", "unknown option '--speed'; --help shows the known ones"},
  };
  for (const auto& [arguments, complaint] : wrong) {
    const Finished marathon = Marathon(arguments);
    EXPECT_EQ(marathon.status, 2) << arguments;
    EXPECT_EQ(marathon.output, "controller_base_marathon: " + complaint + "\n");
  }
  EXPECT_THAT(Marathon("--help").output, StartsWith("Usage: scripts/marathon"));
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

}  // namespace
}  // namespace controller_base_test
