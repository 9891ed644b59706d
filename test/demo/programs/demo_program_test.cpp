// The demo as a user runs it: a process, its exit status, its last line and its files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>
#include <vector>

#include "ros_master/ros_master_process.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using controller_base::ros_master::RosMasterProcess;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

struct Finished {
  int status;          // of the exit, or minus the signal
  std::string output;  // of both streams, as on a terminal
  std::string last_line;
};

// A run of the demo in a folder of its own, with no ROS master unless a test brings one.
class DemoProgram : public testing::Test {
 protected:
  DemoProgram() : master_uri_("http://127.0.0.1:9") {}

  // Starts the program; its output goes to a file.
  pid_t Start(const std::vector<std::string>& arguments) {
    fs::remove(Output());  // of the program before
    const pid_t child = fork();
    if (child == 0) {
      Become(arguments);
    }
    return child;
  }

  Finished Wait(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    Finished finished{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), ReadFile(Output()), ""};
    std::string text = finished.output;
    while (!text.empty() && text.back() == '\n') {
      text.pop_back();
    }
    finished.last_line = text.substr(text.rfind('\n') + 1);
    return finished;
  }

  Finished Run(const std::vector<std::string>& arguments) { return Wait(Start(arguments)); }

  fs::path Output() const { return folder_.path() / "output.txt"; }
  fs::path Out() const { return folder_.path() / "out"; }

  // Waits until the program has printed this.
  bool Prints(const std::string& text) const {
    for (int tries = 0; tries < 2000; ++tries) {
      if (ReadFile(Output()).find(text) != std::string::npos) {
        return true;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  // The file names in a folder, sorted; empty when there is none.
  static std::vector<std::string> Names(const fs::path& folder) {
    std::vector<std::string> names;
    if (fs::exists(folder)) {
      for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
      }
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TemporaryFolder folder_;
  std::string master_uri_;

 private:
  [[noreturn]] void Become(const std::vector<std::string>& arguments) const {
    setenv("ROS_MASTER_URI", master_uri_.c_str(), 1);
    unsetenv("ROSCONSOLE_FORMAT");
    if (std::freopen(Output().c_str(), "w", stdout) == nullptr || dup2(STDOUT_FILENO, STDERR_FILENO) < 0 ||
        chdir(folder_.path().c_str()) != 0) {
      _exit(126);
    }
    std::vector<char*> argv{const_cast<char*>(CONTROLLER_BASE_DEMO_PROGRAM)};
    for (const std::string& argument : arguments) {
      argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
};

// Process ids of all masters that the demo has started in its output.
std::string StartedMasterUri(const std::string& output) {
  const std::string mark = "started one at ";
  const std::size_t begin = output.find(mark);
  return begin == std::string::npos
             ? ""
             : output.substr(begin + mark.size(), output.find('\n', begin) - begin - mark.size());
}

TEST_F(DemoProgram, TheDefaultDriveSucceedsAndLeavesItsFiles) {
  const Finished demo = Run({"--out", Out().string()});
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(demo.last_line, StartsWith("Reached: goal reached"));
  EXPECT_THAT(demo.output, HasSubstr(Out().string()));
  EXPECT_THAT(Names(Out()), IsSupersetOf({"drive.png", "event-01-path.png", "events.csv", "plots.png", "result.json",
                                          "trajectory.csv"}));
  for (const char* kind : {"-detour.png", "-contact.png", "-box.png", "-arrival.png"}) {
    EXPECT_THAT(Names(Out()), Contains(EndsWith(kind)));
  }
  EXPECT_THAT(demo.output, Not(HasSubstr("\033"))) << "colour codes, and no terminal";
  EXPECT_THAT(ReadFile(Out() / "result.json"), HasSubstr("\"reached\": true"));
  EXPECT_THAT(ReadFile(Out() / "events.csv"), StartsWith("time_s,kind,x_m,y_m,text\n0.00,path,"));
  const std::string master = StartedMasterUri(demo.output);
  EXPECT_THAT(master, StartsWith("http://127.0.0.1:"));
  EXPECT_FALSE(controller_base::ros_master::MasterAnswers(master));
}

TEST_F(DemoProgram, TheSameArgumentsGiveTheSameBytes) {
  ASSERT_EQ(Run({"--out", (folder_.path() / "a").string()}).status, 0);
  ASSERT_EQ(Run({"--out", (folder_.path() / "b").string()}).status, 0);
  for (const char* name :
       {"trajectory.csv", "events.csv", "result.json", "drive.png", "plots.png", "event-01-path.png"}) {
    EXPECT_TRUE(ReadFile(folder_.path() / "a" / name) == ReadFile(folder_.path() / "b" / name)) << name;
  }
}

TEST_F(DemoProgram, ABlockedPathIsPlannedAgainUnlessThatIsTurnedOff) {
  const std::string file = std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/planned-again.yaml";
  EXPECT_EQ(Run({"--scenario", file, "--out", Out().string()}).status, 0);
  const Finished alone = Run({"--scenario", file, "--no-replanning", "--out", Out().string()});
  EXPECT_EQ(alone.status, 13);
  EXPECT_THAT(alone.output, HasSubstr("no way around within 1.50 m of the path"));
}

TEST_F(DemoProgram, AMasterThatAnswersIsUsedAndLeftRunning) {
  const auto master = RosMasterProcess::StartOnFreePort();
  master_uri_ = master->Uri();
  const Finished demo = Run({"--start", "1.2,6.9,0", "--goal", "3.0,6.9", "--out", Out().string()});
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("ROS master: " + master->Uri() + "\n"));
  EXPECT_THAT(StartedMasterUri(demo.output), IsEmpty());
  EXPECT_TRUE(controller_base::ros_master::MasterAnswers(master->Uri()));
}

TEST_F(DemoProgram, AnEarlierDrivesFilesAreReplacedAndOthersKept) {
  ASSERT_EQ(Run({"--start", "1.2,6.9,0", "--goal", "3.0,6.9", "--out", Out().string()}).status, 0);
  fs::rename(Out() / "event-01-path.png", Out() / "event-09-detour.png");
  std::ofstream(Out() / "notes.txt") << "mine";
  ASSERT_EQ(Run({"--start", "1.2,6.9,0", "--goal", "3.0,6.9", "--out", Out().string()}).status, 0);
  EXPECT_THAT(Names(Out()), ElementsAre("drive.png", "event-01-path.png", "event-02-arrival.png", "events.csv",
                                        "notes.txt", "plots.png", "result.json", "trajectory.csv"));
}

TEST_F(DemoProgram, TheTablesAreThereWhateverBecomesOfThePictures) {
  fs::create_directories(Out() / "drive.png");  // a folder, which no picture can replace
  EXPECT_EQ(Run({"--start", "1.2,6.9,0", "--goal", "3.0,6.9", "--out", Out().string()}).status, 7);
  EXPECT_THAT(Names(Out()), IsSupersetOf({"events.csv", "result.json", "trajectory.csv"}));
}

// The map has 100 million cells; its file has some 100 KB.
TEST_F(DemoProgram, ALargeMapIsToldAndMayBeInterruptedWithinASecond) {
  constexpr int kSide = 10000;
  cv::imwrite((folder_.path() / "large.png").string(), cv::Mat(kSide, kSide, CV_8UC1, cv::Scalar(254)),
              {cv::IMWRITE_PNG_COMPRESSION, 1});
  folder_.Write("large.yaml",
                "image: large.png\nresolution: 0.05\norigin: [0, 0, 0]\noccupied_thresh: 0.65\nfree_thresh: 0.2\n");
  for (const char* step : {"the map", "inflating the map"}) {
    const pid_t demo = Start({"--map", "large.yaml", "--start", "9,9,0", "--goal", "400,300", "--out", Out().string()});
    ASSERT_TRUE(Prints(step));
    const auto asked = std::chrono::steady_clock::now();
    kill(demo, SIGINT);
    const Finished finished = Wait(demo);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(1500)) << step;
    EXPECT_EQ(finished.status, 130) << finished.output;
    EXPECT_THAT(finished.last_line, HasSubstr("interrupted"));
    EXPECT_FALSE(fs::exists(Out()));
  }
}

TEST_F(DemoProgram, TheFilesGoToDemoOutByDefault) {
  ASSERT_EQ(Run({"--start=1.2,6.9,0", "--goal=3.0,6.9"}).status, 0);
  EXPECT_TRUE(fs::exists(folder_.path() / "demo-out" / "drive.png"));
}

TEST_F(DemoProgram, HelpIsTheManual) {
  const Finished demo = Run({"--help"});
  EXPECT_EQ(demo.status, 0);
  EXPECT_THAT(demo.output, StartsWith("Usage: scripts/demo"));
  EXPECT_THAT(Names(folder_.path()), ElementsAre("output.txt"));
}

struct BadInput {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  const char* complaint;
};

class BadInputs : public DemoProgram, public testing::WithParamInterface<BadInput> {};

// A scenario on the hall's map, which has walls at its edges; `lines` begin with the second.
std::string InHall(const std::string& lines) {
  return "map: " CONTROLLER_BASE_DEMO_MAPS "/hall.yaml\n" + lines + "\nexpect: {outcome: reached}\n";
}

// One line, a status of its own, and no file left.
TEST_P(BadInputs, AreNamedInOneLine) {
  folder_.Write("broken.yaml", "image: map.pgm\nresolution: soon\n");
  folder_.Write("truncated.yaml",
                "image: truncated.pgm\nresolution: 0.05\norigin: [0, 0, 0]\noccupied_thresh: 0.65\nfree_thresh: 0.2\n");
  folder_.Write("truncated.pgm", "P5\n100 100\n255\nabc");
  folder_.Write("no-map.yaml",
                "# Why.\nmap: absent.yaml\nstart: {x_m: 1, y_m: 1}\ngoal: {x_m: 2, y_m: 1}\n"
                "expect: {outcome: reached}\n");
  folder_.Write("crate.yaml", InHall("start: {x_m: 1, y_m: 3}\ngoal: {x_m: 9, y_m: 3}\n"
                                     "obstacles: {name: crate, box: {x_m: 1.2, y_m: 3, length_m: 0.2, width_m: 0.2}}"));
  folder_.Write("off.yaml", InHall("start: {x_m: 1, y_m: 3}\ngoal: {x_m: 90, y_m: 3}"));
  folder_.Write("way-point.yaml",
                InHall("start: {x_m: 1, y_m: 3}\npath:\n  way_points_m:\n    - [2, 3]\n    - [2, 0.05]\n    - [3, 3]"));
  folder_.Write("last-point.yaml",
                InHall("start: {x_m: 1, y_m: 3}\npath:\n  way_points_m:\n    - [2, 3]\n    - [2, -0.1]"));
  folder_.Write("list-key.yaml", "map: absent.yaml\nstart: {[x_m]: 1, y_m: 1}\n");
  const std::vector<std::string> before = Names(folder_.path());

  const Finished demo = Run(GetParam().arguments);
  EXPECT_EQ(demo.status, GetParam().status) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr(GetParam().complaint));
  EXPECT_EQ(std::count(demo.output.begin(), demo.output.end(), '\n'), 1) << demo.output;
  std::vector<std::string> after = Names(folder_.path());
  after.erase(std::remove(after.begin(), after.end(), "output.txt"), after.end());
  EXPECT_EQ(after, before);
}

const std::vector<std::string> kPlaces = {"--start", "1.2,6.9,0", "--goal", "3.0,6.9"};

std::vector<std::string> OnMap(const std::string& map) {
  std::vector<std::string> arguments = kPlaces;
  arguments.insert(arguments.end(), {"--map", map});
  return arguments;
}

std::vector<std::string> Between(const std::string& start, const std::string& goal) {
  return {"--start", start, "--goal", goal};
}

INSTANTIATE_TEST_SUITE_P(
    Demo, BadInputs,
    testing::Values(
        BadInput{"UnknownOption", {"--fast", "yes"}, 2, "unknown option '--fast'"},
        BadInput{"MissingValue", {"--out"}, 2, "'--out'"},
        BadInput{"TwoNumbersForThree", Between("1,2", "3,4"), 2, "--start wants 3 numbers"},
        BadInput{"NotANumber", Between("1,2,north", "3,4"), 2, "--start wants 3 numbers"},
        BadInput{"NanGoal", Between("1,2,0", "nan,4"), 2, "--goal wants 2 numbers"},
        BadInput{"StartAlone", {"--start", "1,2,0"}, 2, "--start and --goal want each other"},
        BadInput{"NoInputWithoutRealTime", {"--no-input"}, 2, "--no-input wants --rviz or --realtime"},
        BadInput{"MapAlone", {"--map", "map.yaml"}, 2, "--map wants --start and --goal"},
        BadInput{"MissingMap", OnMap("absent.yaml"), 3, "absent.yaml: no such file"},
        BadInput{"ScenarioWithoutItsMap",
                 {"--scenario", "no-map.yaml"},
                 3,
                 "no-map.yaml:2: 'map': absent.yaml: no such file"},
        BadInput{"ScenarioWithAListForAKey",
                 {"--scenario", "list-key.yaml"},
                 2,
                 "list-key.yaml:2: a key must be a word, not a list"},
        BadInput{"BrokenMap", OnMap("broken.yaml"), 3, "broken.yaml:2: 'resolution'"},
        BadInput{"BrokenImage", OnMap("truncated.yaml"), 3, "truncated.pgm: not an image"},
        BadInput{"StartOnACrate",
                 {"--scenario", "crate.yaml"},
                 4,
                 "crate.yaml:2: 'start': the start (1.00, 3.00) is 0.10 m from the obstacle 'crate': no room for a "
                 "robot of radius 0.17 m"},
        BadInput{"GoalOfAScenarioOffTheMap",
                 {"--scenario", "off.yaml"},
                 5,
                 "off.yaml:3: 'goal': the goal (90.00, 3.00) is off the map"},
        BadInput{"WayPointInAWall",
                 {"--scenario", "way-point.yaml"},
                 6,
                 "way-point.yaml:6: 'path.way_points_m[1]': the way point (2.00, 0.05) cannot be reached: it is in a "
                 "wall"},
        BadInput{"LastWayPointOffTheMap",
                 {"--scenario", "last-point.yaml"},
                 5,
                 "last-point.yaml:6: 'path.way_points_m[1]': the goal (2.00, -0.10) is off the map"},
        BadInput{"StartNearAWall", Between("0.32,5.0,0", "3.0,6.9"), 4,
                 "controller_base_demo: the start (0.32, 5.00) is 0.12 m from a wall: no room for a robot of radius "
                 "0.17 m"},
        BadInput{
            "GoalNearAWall", Between("1.2,6.9,0", "0.23,6.9"), 6,
            "the goal (0.23, 6.90) cannot be reached: it is 0.03 m from a wall, and the robot's centre keeps 0.19 m"},
        BadInput{"StartInAWall", Between("0.1,5.0,0", "3.0,6.9"), 4, "in a wall"},
        BadInput{"StartOffTheMap", Between("-50,5.0,0", "3.0,6.9"), 4, "the start (-50.00, 5.00) is off the map"},
        BadInput{"GoalOffTheMap", Between("1.2,6.9,0", "30.0,6.9"), 5, "the goal (30.00, 6.90) is off the map"},
        BadInput{"GoalInAWall", Between("1.2,6.9,0", "1.0,9.0"), 6,
                 "the goal (1.00, 9.00) cannot be reached: it is in a wall"},
        BadInput{"GoalOutside", Between("1.2,6.9,0", "-0.3,-0.3"), 6, "cannot be reached"},
        BadInput{"UnwritableFolder", {"--out", "/proc/demo"}, 7, "cannot write into the folder /proc/demo"},
        BadInput{"FolderThatIsAFile", {"--out", "broken.yaml"}, 7, "broken.yaml"}),
    [](const testing::TestParamInfo<BadInput>& input) { return input.param.name; });

class Signals : public DemoProgram, public testing::WithParamInterface<int> {};

TEST_P(Signals, EndTheDriveWithoutFilesAndWithoutAMaster) {
  const pid_t demo = Start({"--out", Out().string()});
  ASSERT_TRUE(Prints("new path"));
  kill(demo, GetParam());
  const Finished finished = Wait(demo);
  EXPECT_FALSE(controller_base::ros_master::MasterAnswers(StartedMasterUri(finished.output)));
  if (GetParam() == SIGKILL) {
    EXPECT_EQ(finished.status, -SIGKILL);
    EXPECT_THAT(Names(Out()), IsEmpty());
  } else {
    EXPECT_EQ(finished.status, 130) << finished.output;
    EXPECT_THAT(finished.last_line, HasSubstr("interrupted"));
    EXPECT_FALSE(fs::exists(Out()));
  }
}

INSTANTIATE_TEST_SUITE_P(Demo, Signals, testing::Values(SIGINT, SIGTERM, SIGKILL),
                         [](const testing::TestParamInfo<int>& signal) {
                           return std::string(sigabbrev_np(signal.param));
                           ;
                         });

TEST_F(DemoProgram, WithoutRosmasterItSaysSo) {
  const std::string path = std::getenv("PATH");
  setenv("PATH", "/nowhere", 1);
  const Finished demo = Run({"--out", Out().string()});
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(demo.status, 8);
  EXPECT_THAT(demo.last_line, HasSubstr("cannot run rosmaster"));
  EXPECT_FALSE(fs::exists(Out()));
}

}  // namespace
}  // namespace controller_base_test
