// scripts/demo --bag and scripts/replay as a user runs them: processes, their exit statuses and their last lines.

#include <geometry_msgs/PoseStamped.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rosbag/bag.h>
#include <std_msgs/Float64.h>
#include <std_msgs/String.h>
#include <std_msgs/Time.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "demo/watch/child_process.h"
#include "test/demo/replay/bag_edit.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using controller_base::demo::ChildProcess;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

struct Finished {
  int status;
  std::string output;  // of both streams
};

class BagProgram : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (folder_.path() / name).string(); }

  ChildProcess Start(const std::string& program, const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return ChildProcess(command, {"ROS_MASTER_URI=http://127.0.0.1:9"}, Path("log"));
  }

  Finished Run(const std::string& program, const std::vector<std::string>& arguments) const {
    ChildProcess child = Start(program, arguments);
    const int status = child.WaitForEnd();
    return {status, ReadFile(Path("log"))};
  }

  Finished Demo(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--out", Path("out")});
    return Run(CONTROLLER_BASE_DEMO_PROGRAM, arguments);
  }

  // A drive of 1.8 m.
  Finished ShortDrive(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--start", "1.2,6.9,0", "--goal", "3.0,6.9"});
    return Demo(arguments);
  }

  Finished Replay(const std::vector<std::string>& arguments) const {
    return Run(CONTROLLER_BASE_REPLAY_PROGRAM, arguments);
  }

  TemporaryFolder folder_;
};

std::string ScenarioFile(const std::string& name) {
  return std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/" + name + ".yaml";
}

TEST_F(BagProgram, AScenarioIsRecordedAndReplayed) {
  const Finished demo = Demo({"--scenario", ScenarioFile("late-contacts"), "--bag", Path("a.bag")});
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("Bag: " + Path("a.bag") + "\n"));
  const Finished replay = Replay({Path("a.bag")});
  EXPECT_EQ(replay.status, 0);
  EXPECT_THAT(replay.output, MatchesRegex("identical: [0-9]+ cycles, [0-9.]+ s, [0-9]+ outputs\n"));
}

TEST_F(BagProgram, ABagChangesNothingAboutTheDrive) {
  ASSERT_EQ(ShortDrive({"--bag", Path("a.bag")}).status, 0);
  fs::rename(Path("out"), Path("recorded"));
  ASSERT_EQ(ShortDrive({}).status, 0);
  for (const char* name : {"trajectory.csv", "events.csv", "result.json"}) {
    EXPECT_TRUE(ReadFile(folder_.path() / "recorded" / name) == ReadFile(folder_.path() / "out" / name)) << name;
  }
}

TEST_F(BagProgram, TheSameScenarioAndSeedGiveTheSameBytes) {
  const std::vector<std::string> names{"trajectory.csv", "events.csv", "result.json"};
  std::vector<std::string> first;
  for (int run = 0; run < 3; ++run) {
    ASSERT_EQ(Demo({"--scenario", ScenarioFile("noisy-pose")}).status, 0);
    std::vector<std::string> files;
    for (const std::string& name : names) {
      files.push_back(ReadFile(folder_.path() / "out" / name));
      EXPECT_FALSE(files.back().empty());
    }
    first = run == 0 ? files : first;
    EXPECT_TRUE(files == first) << run;
  }
}

TEST_F(BagProgram, AnInterruptedRecordingIsWellFormed) {
  ChildProcess demo = Start(CONTROLLER_BASE_DEMO_PROGRAM, {"--realtime", "--bag", Path("a.bag"), "--out", Path("out")});
  for (int tries = 0; tries < 2000 && ReadFile(Path("log")).find("new path") == std::string::npos; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  kill(demo.pid(), SIGINT);
  EXPECT_EQ(demo.WaitForEnd(), 130);
  EXPECT_FALSE(fs::exists(Path("a.bag.active")));
  const Finished replay = Replay({Path("a.bag")});
  EXPECT_EQ(replay.status, 0) << replay.output;
  EXPECT_THAT(replay.output, StartsWith("identical: "));
}

struct Expected {
  int status;
  std::string line;  // a part of the only one
};

void ExpectOneLine(const Finished& finished, const Expected& expected) {
  EXPECT_EQ(finished.status, expected.status) << finished.output;
  EXPECT_THAT(finished.output, HasSubstr(expected.line));
  EXPECT_EQ(std::count(finished.output.begin(), finished.output.end(), '\n'), 1) << finished.output;
}

TEST_F(BagProgram, AFileThatCannotBeWrittenIsOneLineBeforeTheDrive) {
  ExpectOneLine(ShortDrive({"--bag", Path("absent/a.bag")}), {7, "cannot write the bag " + Path("absent/a.bag")});
  ExpectOneLine(ShortDrive({"--bag", folder_.path().string()}), {7, "a file's name is wanted"});
  ExpectOneLine(ShortDrive({"--bag", ""}), {2, "--bag wants the name of a file"});
  EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(BagProgram, AScenarioThatCannotBeDrivenLeavesNoBag) {
  EXPECT_EQ(Demo({"--start", "1.2,6.9,0", "--goal", "1.0,9.0", "--bag", Path("a.bag")}).status, 6);
  EXPECT_FALSE(fs::exists(Path("a.bag")));
  EXPECT_FALSE(fs::exists(Path("a.bag.active")));
}

// GiB; the largest of all programs run so far.
double MemoryPeakOfChildren() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_maxrss) / (1024.0 * 1024.0);
}

// A limit on the size of files, which acts like a full disk.
class SmallFiles {
 public:
  explicit SmallFiles(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    std::signal(SIGXFSZ, SIG_IGN);  // programs that are started inherit that
  }
  ~SmallFiles() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, SIG_DFL);
  }
  SmallFiles(const SmallFiles&) = delete;
  SmallFiles& operator=(const SmallFiles&) = delete;

 private:
  rlimit before_{};
};

TEST_F(BagProgram, ADiskThatIsFullEndsTheDriveWithALine) {
  Finished demo;
  {
    const SmallFiles small(200'000);
    demo = ShortDrive({"--bag", Path("a.bag")});
  }
  EXPECT_EQ(demo.status, 7) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("controller_base_demo: cannot write the bag " + Path("a.bag") + ": "));
  EXPECT_FALSE(fs::exists(Path("a.bag")));
  EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(BagProgram, ReplayTellsItsManual) {
  const Finished replay = Replay({"--help"});
  EXPECT_EQ(replay.status, 0);
  EXPECT_THAT(replay.output, StartsWith("Usage: scripts/replay FILE.bag\n"));
}

TEST_F(BagProgram, BadArgumentsOfReplayAreOneLine) {
  ExpectOneLine(Replay({}), {2, "one bag is wanted"});
  ExpectOneLine(Replay({"a.bag", "b.bag"}), {2, "one bag is wanted"});
  ExpectOneLine(Replay({"--fast"}), {2, "unknown option '--fast'"});
}

TEST_F(BagProgram, BadBagsAreOneLine) {
  {
    rosbag::Bag bag(Path("foreign.bag"), rosbag::bagmode::Write);
    bag.write("/chatter", ros::Time(1), std_msgs::String());
  }
  ASSERT_EQ(ShortDrive({"--bag", Path("a.bag")}).status, 0);
  const std::string whole = ReadFile(Path("a.bag"));
  folder_.Write("cut.bag", whole.substr(0, whole.size() / 2));
  folder_.Write("empty.bag", "");
  ExpectOneLine(Replay({Path("absent.bag")}), {3, "absent.bag: no such file"});
  ExpectOneLine(Replay({Path("empty.bag")}), {3, "empty.bag: an empty file"});
  ExpectOneLine(Replay({Path("log")}), {3, "log: "});  // the one that this very program writes
  ExpectOneLine(Replay({Path("cut.bag")}), {3, "cut.bag: cut off or damaged: "});
  ExpectOneLine(Replay({Path("foreign.bag")}), {3, "foreign.bag: not the bag of a drive"});
  // Faults that ROS itself reports in lines of its own.
  std::string broken = whole;
  broken.replace(broken.find("chunk_count="), 12, "chunk_count_");
  ExpectOneLine(Replay({folder_.Write("broken.bag", broken)}), {3, "broken.bag: cut off or damaged: "});
}

// Hostile bags: each is refused in one line, in bounded time and memory.
TEST_F(BagProgram, HostileBagsAreOneLine) {
  ASSERT_EQ(ShortDrive({"--bag", Path("a.bag")}).status, 0);
  const auto replay = [&](const MessageFilter& filter) {
    return Replay({CopyBag(Path("a.bag"), Path("hostile.bag"), filter)});
  };
  const std::string input = "/controller_base_demo/input/";
  const auto many_poses = [](std::vector<std::uint8_t>* bytes) {
    constexpr std::uint32_t kPoses = 100'000'000;
    std::memcpy(bytes->data() + 4 + 8 + 4 + 3, &kPoses, sizeof(kPoses));  // behind the header of frame "map"
  };
  ExpectOneLine(replay(AlteringBytes(input + "path", 0.0, many_poses)),
                {3, "hostile.bag: at 0.00 s: " + input + "path claims 100000000 elements in "});
  const auto no_heading = [](auto* robot) { robot->pose.orientation.z = std::nan(""); };
  ExpectOneLine(replay(Altering<geometry_msgs::PoseStamped>(input + "robot", 1.0, no_heading)),
                {3, "hostile.bag: at 1.00 s: " + input + "robot has no heading"});
  const auto far_jump = [](auto* clock) { clock->data.sec = 4'000'000'000; };
  ExpectOneLine(replay(Altering<std_msgs::Time>(input + "clock", 1.0, far_jump)),
                {3, input + "clock says 4000000000 s: a jump that ROS cannot tell"});
  const auto wide_cells = [](auto* resolution) { resolution->data = 1e300; };
  ExpectOneLine(replay(Altering<std_msgs::Float64>(input + "local_map/resolution", 1.0, wide_cells)),
                {3, input + "local_map is no map: its cells are 1e+300 m wide; 0.005 m to 0.5 m are possible"});
  EXPECT_LT(MemoryPeakOfChildren(), 1.0);
}

TEST_F(BagProgram, TextsInABagDoNothingToTheTerminal) {
  ASSERT_EQ(ShortDrive({"--bag", Path("a.bag")}).status, 0);
  const auto escape = [](std_msgs::String* state) { state->data = "\x1b[31m"; };
  const std::string topic = "/controller_base_demo/output/state";
  ExpectOneLine(Replay({CopyBag(Path("a.bag"), Path("b.bag"), Altering<std_msgs::String>(topic, 1.0, escape))}),
                {1, topic + ": recorded 'data: \\x1b[31m', replayed 'data: path'"});
}

TEST_F(BagProgram, ReplayNeedsARosmaster) {
  ASSERT_EQ(ShortDrive({"--bag", Path("a.bag")}).status, 0);
  ChildProcess replay({CONTROLLER_BASE_REPLAY_PROGRAM, Path("a.bag")}, {"PATH=/nowhere"}, Path("log"));
  const int status = replay.WaitForEnd();
  ExpectOneLine({status, ReadFile(Path("log"))}, {8, "cannot run rosmaster"});
}

}  // namespace
}  // namespace controller_base_test
