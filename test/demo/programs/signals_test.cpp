// Signals, and the descriptors that the programs are started with.

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <system_error>

#include "ros_master/ros_master_process.h"
#include "test/demo/programs/program_run.h"
#include "test/ros_master/fake_master.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using controller_base::demo::ChildProcess;
using controller_base::ros_master::MasterHasClock;
using controller_base::ros_master::RosMasterProcess;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ClosedDescriptors : public ProgramRun, public testing::WithParamInterface<const char*> {};

TEST_P(ClosedDescriptors, CostNoFile) {
  const std::string closed = GetParam();
  EXPECT_EQ(Run("$DEMO $WAY --bag a.bag " + closed).status, 0);
  EXPECT_THAT(Run("$REPLAY a.bag").output, StartsWith("identical:"));
  EXPECT_EQ(Run("$REPLAY a.bag " + closed).status, 0);
  EXPECT_EQ(Run("$MARATHON --km 0.001 --worlds 1 " + closed).status, 0);
  EXPECT_THAT(Read("marathon-out/1-apartment.csv"), StartsWith("seed,outcome,"));
  EXPECT_EQ(Run("$DEMO --runs 1 --out runs " + closed).status, 0);
  EXPECT_EQ(Read("runs/runs.csv"), Read("marathon-out/1-apartment.csv"));
  EXPECT_EQ(Run("$DRAW a.png " + closed).status, 0);
  EXPECT_THAT(Read("a.png"), StartsWith("\x89PNG"));
}

INSTANTIATE_TEST_SUITE_P(Programs, ClosedDescriptors, testing::Values(">&-", "<&- >&- 2>&-"),
                         [](const auto& redirection) { return std::to_string(redirection.index); });

using Descriptors = ProgramRun;

// Descriptors 0 to 2 must stay taken, so that no file opened later gets one of them.
TEST_F(Descriptors, AreTheNullDeviceWhereTheyWereClosed) {
  ChildProcess demo = Start("exec $DEMO --realtime $WAY <&- >&- 2>&-");
  const fs::path process = "/proc/" + std::to_string(demo.pid());
  const auto target = [&](const fs::path& link) {
    std::error_code gone;
    return fs::read_symlink(process / link, gone);
  };
  // Until the program's first line, the shell and the loader have other files there.
  EXPECT_TRUE(Until([&] {
    return target("exe") == fs::canonical(CONTROLLER_BASE_DEMO_PROGRAM) && target("fd/0") == "/dev/null" &&
           target("fd/1") == "/dev/null" && target("fd/2") == "/dev/null";
  }));
}

class StopSignals : public ProgramRun, public testing::WithParamInterface<int> {};

TEST_P(StopSignals, LeaveTheMasterAsItWasAndABagThatIsComplete) {
  const auto master = RosMasterProcess::StartOnFreePort();
  ChildProcess demo = Start("exec $DEMO --realtime --bag a.bag", {"ROS_MASTER_URI=" + master->Uri()});
  ASSERT_TRUE(Prints("new path"));
  ASSERT_TRUE(MasterHasClock(master->Uri()));
  kill(demo.pid(), GetParam());
  const Finished finished = Wait(&demo);
  EXPECT_EQ(finished.status, 130) << finished.output;
  EXPECT_THAT(finished.last_line, HasSubstr("interrupted"));
  EXPECT_FALSE(MasterHasClock(master->Uri()));
  EXPECT_THAT(Names(""), ElementsAre("a.bag"));
  EXPECT_EQ(Run("$REPLAY a.bag").status, 0);
}

TEST_P(StopSignals, LeaveTheTableOfTheRunsThatAreDone) {
  ChildProcess runs = Start("exec $DEMO --runs 100000 --jobs 1");
  ASSERT_TRUE(Prints("reached"));
  kill(runs.pid(), GetParam());
  EXPECT_EQ(Wait(&runs).status, 130);
  EXPECT_THAT(Names("runs-out"), ElementsAre("runs.csv"));

  ChildProcess marathon = Start("exec $MARATHON --jobs 1 --out marathon");
  ASSERT_TRUE(Prints("apartment\n"));
  kill(marathon.pid(), GetParam());
  EXPECT_EQ(Wait(&marathon).status, 130);
  EXPECT_THAT(Names("marathon"), ElementsAre("1-apartment.csv", "marathon.md"));
}

INSTANTIATE_TEST_SUITE_P(Programs, StopSignals, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const testing::TestParamInfo<int>& signal) {
                           return std::string(sigabbrev_np(signal.param));
                         });

// Under a second on a quiet machine; the waits that a signal must interrupt take twenty.
constexpr std::chrono::seconds kSoon{10};

class Signals : public ProgramRun {
 protected:
  void ExpectInterruptSoonEnds(ChildProcess* program, const char* line) {
    const auto asked = std::chrono::steady_clock::now();
    kill(program->pid(), SIGINT);
    const Finished finished = Wait(program);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, kSoon) << line;
    EXPECT_EQ(finished.status, 130) << finished.output;
    EXPECT_THAT(finished.last_line, HasSubstr("interrupted")) << line;
  }
};

TEST_F(Signals, AHangUpIsIgnoredWhereTheProgramWasStartedSo) {
  ChildProcess demo = Start("exec nohup $DEMO --realtime $WAY");
  ASSERT_TRUE(Prints("new path"));
  kill(demo.pid(), SIGHUP);
  EXPECT_EQ(Wait(&demo).status, 0);
}

// timeout(1) sends its signal to the program and to the program's group.
TEST_F(Signals, TwoAtOnceAreOneRequest) {
  EXPECT_EQ(Run("timeout -s INT 2 $DEMO --realtime --bag a.bag").status, 124);
  EXPECT_THAT(Names(""), ElementsAre("a.bag"));
}

TEST_F(Signals, AFurtherInterruptEndsAtOnce) {
  const FakeMaster master({{"getPid", 1}});
  ChildProcess demo = Start("exec $DEMO $WAY", {"ROS_MASTER_URI=" + master.Uri()});
  ASSERT_TRUE(Until([&] { return master.Questions() > 1; }));
  kill(demo.pid(), SIGINT);
  const auto first = std::chrono::steady_clock::now();
  EXPECT_TRUE(Until([&] {
    kill(demo.pid(), SIGINT);
    return demo.Ended().has_value();
  }));
  EXPECT_EQ(demo.Ended(), 130);
  EXPECT_LT(std::chrono::steady_clock::now() - first, std::chrono::seconds(2));
}

TEST_F(Signals, ALargeMapIsLeftBeforeItIsLoaded) {
  constexpr int kSide = 10000;
  fs::create_directory(Path("maps"));
  cv::imwrite(Path("maps/large.png").string(), cv::Mat(kSide, kSide, CV_8UC1, cv::Scalar(254)),
              {cv::IMWRITE_PNG_COMPRESSION, 1});
  Write("maps/large.yaml",
        "image: large.png\nresolution: 0.05\norigin: [0, 0, 0]\noccupied_thresh: 0.65\nfree_thresh: 0.2\n");
  for (const char* line : {"exec $DEMO --map maps/large.yaml --seed 1", "exec $DEMO --map maps/large.yaml --runs 2",
                           "exec $MARATHON --km 0.001 --worlds 1 --maps maps"}) {
    ChildProcess program = Start(line);
    ASSERT_TRUE(Prints("inflating the map")) << line;
    ExpectInterruptSoonEnds(&program, line);
    EXPECT_THAT(Names(""), ElementsAre("maps")) << line;
  }
}

// A rosmaster that starts and never answers is waited for twenty seconds.
TEST_F(Signals, AnInterruptDoesNotWaitForTheMasterToStart) {
  ASSERT_EQ(Run("$DEMO $WAY --bag a.bag").status, 0);
  Write("rosmaster", "#!/bin/sh\ntouch started\nexec sleep 100\n");
  fs::permissions(Path("rosmaster"), fs::perms::owner_all);
  for (const char* line :
       {"exec $DEMO $WAY", "exec $DEMO --runs 1", "exec $MARATHON --km 0.001 --worlds 1", "exec $REPLAY a.bag"}) {
    fs::remove(Path("started"));
    ChildProcess program = Start(std::string("PATH=.:$PATH; ") + line);
    ASSERT_TRUE(Until([&] { return fs::exists(Path("started")); })) << line;
    ExpectInterruptSoonEnds(&program, line);
  }
}

TEST_F(Signals, AReaderWhoGoesAwayCostsNoFile) {
  EXPECT_EQ(Run("set -o pipefail; $DEMO $WAY | true").status, 0);
  EXPECT_THAT(Names("demo-out"), Contains("result.json"));
  EXPECT_EQ(Run("set -o pipefail; $DEMO --runs 3 --seed 20 | head -n 1").status, 0);
  const std::string table = Read("runs-out/runs.csv");
  EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 4);
}

}  // namespace
}  // namespace controller_base_test
