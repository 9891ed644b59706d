// Drives recorded into bags and replayed, within this process.

#include "demo/replay/replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rosbag/bag.h>
#include <rosbag/view.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "demo/output/output_folder.h"
#include "demo/replay/bag_recorder.h"
#include "demo/replay/drive_bag.h"
#include "demo/scenario/scenario_file.h"
#include "demo/watch/child_process.h"
#include "recording/bag_format.h"
#include "recording/follower_messages.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "test/demo/replay/bag_edit.h"
#include "test/demo/replay/stopper.h"
#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;
using controller_base_test::Altering;
using controller_base_test::CopyBag;
using controller_base_test::MessageFilter;
using controller_base_test::ReadFile;
using controller_base_test::Stopper;
using controller_base_test::TemporaryFolder;
using controller_base_test::Without;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr int kWholeDrive = 1'000'000;  // cycles

simulation::DriveRecord Record(const std::string& scenario_name, const std::string& file, int cycles = kWholeDrive,
                               simulation::Interaction* interaction = nullptr) {
  const Scenario scenario = LoadScenario(std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/" + scenario_name + ".yaml");
  const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
  BagRecorder recorder(file, map);
  Stopper stopper(cycles);
  return RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {&recorder, &stopper}, stopper.stop,
                  interaction);
}

ReplayReport ReplayFile(const std::string& file) {
  DriveBag bag(file);
  return Replay(&bag, [] { return false; });
}

// The error of reading and replaying a file.
std::string ComplaintAbout(const std::string& file) {
  try {
    ReplayFile(file);
  } catch (const BagError& error) {
    return error.what();
  }
  return "nothing";
}

std::string Input(const std::string& name) { return recording::kInputPrefix + name; }
std::string Output(const std::string& name) { return recording::kOutputPrefix + name; }

class RecordedDrive : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (folder_.path() / name).string(); }

  // A drive with a box and a detour and without faults, made once.
  static const std::string& BoxOnPath() {
    static const TemporaryFolder folder;
    static const std::string file = [] {
      const std::string name = (folder.path() / "box.bag").string();
      Record("box-on-path", name);
      return name;
    }();
    return file;
  }

  std::string Altered(const MessageFilter& filter) const { return CopyBag(BoxOnPath(), Path("altered.bag"), filter); }

  TemporaryFolder folder_;
};

// ---- Whole drives ----

class RecordedScenario : public RecordedDrive, public testing::WithParamInterface<const char*> {};

TEST_P(RecordedScenario, ReplaysIdentically) {
  const simulation::DriveRecord drive = Record(GetParam(), Path("a.bag"));
  const ReplayReport report = ReplayFile(Path("a.bag"));
  EXPECT_FALSE(report.difference) << report.time << ' ' << report.difference->output;
  EXPECT_EQ(report.cycles, drive.trajectory.size());
  EXPECT_NEAR(report.time, drive.trajectory.back().time, 1e-6);
  EXPECT_GT(report.outputs, 10 * report.cycles);
}

INSTANTIATE_TEST_SUITE_P(Files, RecordedScenario,
                         testing::Values("apartment", "bouncing-bumper", "box-on-path", "clock-jump",
                                         "clock-stands-still", "closed-passage", "goal-repaired", "held-bumper",
                                         "late-contacts", "localisation-jump", "noisy-pose", "pushed-off",
                                         "vanishing-obstacle"),
                         [](const testing::TestParamInfo<const char*>& scenario) {
                           std::string name = scenario.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST_F(RecordedDrive, TheSameDriveIsTheSameBytes) {
  Record("noisy-pose", Path("a.bag"), 100);
  Record("noisy-pose", Path("b.bag"), 100);
  EXPECT_TRUE(ReadFile(Path("a.bag")) == ReadFile(Path("b.bag")));
}

TEST_F(RecordedDrive, RecordTimesOnlyGrowWhateverTheRobotsClockSays) {
  Record("clock-jump", Path("a.bag"));
  rosbag::Bag bag(Path("a.bag"));
  ros::Time last_stamp;
  ros::Time last_clock;
  ros::Time last_shared_clock;
  int steps_back = 0;
  rosbag::View view(bag);
  for (const rosbag::MessageInstance& instance : view) {
    ASSERT_GT(instance.getTime(), last_stamp);
    last_stamp = instance.getTime();
    if (instance.getTopic() == recording::kCycleTopic) {
      const ros::Time clock = instance.instantiate<std_msgs::Time>()->data;
      steps_back += clock < last_clock ? 1 : 0;
      last_clock = clock;
    } else if (instance.getTopic() == "/clock") {
      const ros::Time clock = instance.instantiate<rosgraph_msgs::Clock>()->clock;
      ASSERT_GT(clock, last_shared_clock);
      last_shared_clock = clock;
    }
  }
  EXPECT_EQ(steps_back, 1);
}

// The topics with the number of their messages, and those that are latched.
TEST_F(RecordedDrive, ShowsAllThatIsShownLive) {
  rosbag::Bag bag(BoxOnPath());
  std::map<std::string, int> count;
  std::map<std::string, std::string> latching;
  std::map<std::string, std::string> type;
  rosbag::View view(bag);
  for (const rosbag::ConnectionInfo* connection : view.getConnections()) {
    latching[connection->topic] = connection->header->at("latching");
    type[connection->topic] = connection->datatype;
  }
  for (const rosbag::MessageInstance& instance : view) {
    ++count[instance.getTopic()];
  }
  const int cycles = count[recording::kCycleTopic];
  EXPECT_GT(cycles, 100);
  for (const char* topic : {"/clock", "/tf", "/controller_base_demo/local_map", "/controller_base_demo/markers",
                            "/controller_base_demo/ahead", "/controller_base_demo/index"}) {
    EXPECT_EQ(count[topic], cycles) << topic;
  }
  EXPECT_EQ(count[recording::kVersionTopic], 1);
  for (const Topic& topic : DriveTopics()) {
    EXPECT_GT(count[kTopicPrefix + topic.name], 0) << topic.name;
    EXPECT_EQ(latching[kTopicPrefix + topic.name], topic.is_latched ? "1" : "0") << topic.name;
    EXPECT_EQ(type[kTopicPrefix + topic.name],
              std::visit([](const auto& typed) { return std::string(ros::message_traits::datatype(typed)); },
                         topic.prototype));
  }
  EXPECT_EQ(latching["/tf"], "0");
}

TEST_F(RecordedDrive, RosbagItselfAcceptsIt) {
  if (ChildProcess({"sh", "-c", "command -v rosbag"}, {}, "/dev/null").WaitForEnd() != 0) {
    GTEST_SKIP() << "there is no rosbag on this machine; scripts/setup installs it";
  }
  EXPECT_EQ(ChildProcess({"rosbag", "info", BoxOnPath()}, {}, Path("log")).WaitForEnd(), 0);
  const std::string info = ReadFile(Path("log"));
  EXPECT_THAT(info, HasSubstr("compression:  lz4"));
  EXPECT_THAT(info, HasSubstr("start:        Jan 01 1970 00:01:40.00 (100.00)"));
  EXPECT_THAT(info, HasSubstr("/controller_base_demo/input/robot"));
  EXPECT_EQ(ChildProcess({"rosbag", "check", BoxOnPath()}, {}, Path("log")).WaitForEnd(), 0) << ReadFile(Path("log"));
}

// Gives another goal in the 40th cycle.
class NewGoal : public simulation::Interaction {
 public:
  simulation::Interventions Take() override {
    simulation::Interventions interventions;
    if (++cycles_ == 40) {
      interventions.goal = nav_core::math::Vec2d(3.0, 6.9);
    }
    return interventions;
  }

 private:
  int cycles_ = 0;
};

TEST_F(RecordedDrive, AGoalGivenOnTheWayIsAnInputAsWell) {
  NewGoal goal;
  Record("apartment", Path("a.bag"), kWholeDrive, &goal);
  rosbag::Bag bag(Path("a.bag"));
  rosbag::View paths(bag, rosbag::TopicQuery(Input("path")));
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_FALSE(ReplayFile(Path("a.bag")).difference);
}

// ---- What ends early ----

TEST_F(RecordedDrive, AnInterruptedOneIsWellFormed) {
  const simulation::DriveRecord drive = Record("box-on-path", Path("a.bag"), 57);
  EXPECT_EQ(drive.outcome.state, follower::DriveState::kDriving);
  EXPECT_FALSE(fs::exists(Path("a.bag.active")));
  EXPECT_EQ(ReplayFile(Path("a.bag")).cycles, 57u);
}

class Failing : public simulation::DriveObserver {
 public:
  void OnCycle(const simulation::CycleReport& cycle) override {
    if (cycle.time > 1.0) {
      throw std::runtime_error("something else");
    }
  }
};

TEST_F(RecordedDrive, OneThatFailedIsWellFormed) {
  const Scenario scenario = LoadScenario(std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/box-on-path.yaml");
  const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
  const std::atomic<bool> stop{false};
  try {
    BagRecorder recorder(Path("a.bag"), map);
    Failing failing;
    RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {&recorder, &failing}, stop);
    FAIL() << "it did not fail";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "something else");
  }
  EXPECT_FALSE(fs::exists(Path("a.bag.active")));
  EXPECT_EQ(ReplayFile(Path("a.bag")).cycles, 22u);
}

TEST_F(RecordedDrive, WithoutACycleThereIsNoBag) {
  { const BagRecorder recorder(Path("a.bag"), costmap_2d::Costmap2D(1, 1, 1.0, 0.0, 0.0)); }
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(RecordedDrive, OneThatIsGoingOnIsNotThereYetAndAnEarlierOneStays) {
  folder_.Write("a.bag", "earlier");
  {
    const BagRecorder recorder(Path("a.bag"), costmap_2d::Costmap2D(1, 1, 1.0, 0.0, 0.0));
    EXPECT_TRUE(fs::exists(Path("a.bag.active")));
  }
  EXPECT_EQ(ReadFile(Path("a.bag")), "earlier");
  Record("box-on-path", Path("a.bag"), 3);
  EXPECT_EQ(ReplayFile(Path("a.bag")).cycles, 3u);
}

// ---- What is not the same ----

TEST_F(RecordedDrive, AnAlteredOutputIsToldWithItsTimeAndName) {
  const auto faster = [](geometry_msgs::Twist* command) { command->linear.x += 1e-9; };
  const ReplayReport report = ReplayFile(Altered(Altering<geometry_msgs::Twist>(Output("command"), 5.0, faster)));
  ASSERT_TRUE(report.difference);
  EXPECT_NEAR(report.time, 5.0, 1e-6);
  EXPECT_EQ(report.cycles, 100u);
  EXPECT_EQ(report.difference->output, Output("command"));
  EXPECT_THAT(report.difference->recorded, StartsWith("linear.x: 0."));
  EXPECT_THAT(report.difference->replayed, StartsWith("linear.x: 0."));
  EXPECT_NE(report.difference->recorded, report.difference->replayed);
}

TEST_F(RecordedDrive, AnOutputThatIsMissingIsTold) {
  const ReplayReport report = ReplayFile(Altered(Without(Output("detour/way"), 0.0)));
  ASSERT_TRUE(report.difference);
  EXPECT_EQ(report.difference->output, Output("detour/way"));
  EXPECT_EQ(report.difference->recorded, "nothing");
}

TEST_F(RecordedDrive, OfSeveralDifferencesTheFirstIsTold) {
  const auto farther = [](std_msgs::Float64* deviation) { deviation->data += 1.0; };
  const std::string once = Altered(Altering<std_msgs::Float64>(Output("deviation"), 7.0, farther));
  const auto ahead = [](std_msgs::UInt64* index) { ++index->data; };
  const ReplayReport report =
      ReplayFile(CopyBag(once, Path("twice.bag"), Altering<std_msgs::UInt64>(Output("index"), 3.0, ahead)));
  ASSERT_TRUE(report.difference);
  EXPECT_NEAR(report.time, 3.0, 1e-6);
  EXPECT_EQ(report.difference->output, Output("index"));
}

struct AlteredInput {
  const char* name;
  MessageFilter filter;
};

// The follower's output differs from that cycle on.
TEST_F(RecordedDrive, AnAlteredInputShows) {
  const std::vector<AlteredInput> inputs{
      {"robot",
       Altering<geometry_msgs::PoseStamped>(Input("robot"), 5.0, [](auto* robot) { robot->pose.position.y += 0.01; })},
      {"clock",
       Altering<std_msgs::Time>(Input("clock"), 5.0, [](auto* clock) { clock->data += ros::Duration(0.001); })},
      {"path",
       Altering<nav_msgs::Path>(Input("path"), 0.0, [](auto* path) { path->poses.back().pose.position.x += 0.2; })},
      {"local_map", Altering<nav_msgs::OccupancyGrid>(Input("local_map/costs"), 5.0,
                                                      [](auto* costs) {
                                                        for (std::int8_t& cost : costs->data) {
                                                          cost = -2;  // the byte 254
                                                        }
                                                      })},
      {"resolution", Altering<std_msgs::Float64>(Input("local_map/resolution"), 5.0,
                                                 [](auto* resolution) { resolution->data *= 1.01; })},
  };
  for (const AlteredInput& input : inputs) {
    const ReplayReport report = ReplayFile(Altered(input.filter));
    ASSERT_TRUE(report.difference) << input.name;
    EXPECT_LT(report.time, 6.0) << input.name;
    EXPECT_THAT(report.difference->output, StartsWith(recording::kOutputPrefix));
  }
}

TEST_F(RecordedDrive, AContactMoreOrLessShows) {
  Record("sill", Path("a.bag"));
  EXPECT_FALSE(ReplayFile(Path("a.bag")).difference);
  const ReplayReport report = ReplayFile(CopyBag(Path("a.bag"), Path("b.bag"), Without(Input("contacts"), 0.0)));
  ASSERT_TRUE(report.difference);
  EXPECT_EQ(report.difference->output, Output("events"));
  EXPECT_THAT(report.difference->recorded, HasSubstr("contact"));
}

// ---- Files that are no complete bag of a drive ----

TEST_F(RecordedDrive, ABagThatIsCutOffAnywhereIsOneLine) {
  const std::string whole = ReadFile(BoxOnPath());
  for (const double part : {0.00001, 0.0001, 0.001, 0.01, 0.1, 0.5, 0.9, 0.99, 0.999, 0.9999}) {
    const auto size = static_cast<std::size_t>(part * static_cast<double>(whole.size()));
    const std::string complaint = ComplaintAbout(folder_.Write("cut.bag", whole.substr(0, size)));
    EXPECT_THAT(complaint, StartsWith(Path("cut.bag") + (size < 13 ? ": not a bag" : ": cut off or damaged: ")))
        << size;
    EXPECT_THAT(complaint, Not(HasSubstr("\n")));
  }
  EXPECT_THAT(ComplaintAbout(folder_.Write("cut.bag", whole.substr(0, whole.size() - 1))),
              HasSubstr(": cut off or damaged: "));
}

TEST_F(RecordedDrive, ADamagedBagIsOneLine) {
  std::string bytes = ReadFile(BoxOnPath());
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 1000, 'x');
  EXPECT_THAT(ComplaintAbout(folder_.Write("damaged.bag", bytes)), HasSubstr("damaged.bag: cut off or damaged: "));
}

// As a SIGKILL leaves it: the place of the index is not written yet.
TEST_F(RecordedDrive, ABagWithoutAnIndexIsOneLine) {
  std::string bytes = ReadFile(BoxOnPath());
  const std::string field = "index_pos=";
  bytes.replace(bytes.find(field) + field.size(), 8, 8, '\0');
  EXPECT_EQ(ComplaintAbout(folder_.Write("killed.bag", bytes)),
            Path("killed.bag") + ": the recording was cut off: it has no index");
}

TEST_F(RecordedDrive, WhatIsNoBagIsOneLine) {
  EXPECT_EQ(ComplaintAbout(Path("absent.bag")), Path("absent.bag") + ": no such file");
  EXPECT_EQ(ComplaintAbout(folder_.path().string()), folder_.path().string() + ": not a file");
  EXPECT_EQ(ComplaintAbout(folder_.Write("empty.bag", "")), Path("empty.bag") + ": an empty file");
  EXPECT_EQ(ComplaintAbout(folder_.Write("text.bag", "a\nb\n")), Path("text.bag") + ": not a bag");
  EXPECT_EQ(ComplaintAbout(folder_.Write("new.bag", "#ROSBAG V3.0\n")),
            Path("new.bag") + ": a bag file of another version than #ROSBAG V2.0");
}

TEST_F(RecordedDrive, ForeignBagsAreOneLine) {
  const std::string foreign = Path("foreign.bag");
  const std::string no_drive = foreign + ": not the bag of a drive: it does not begin with " + recording::kVersionTopic;
  { rosbag::Bag bag(foreign, rosbag::bagmode::Write); }
  EXPECT_EQ(ComplaintAbout(foreign), no_drive);
  {
    rosbag::Bag bag(foreign, rosbag::bagmode::Write);
    bag.write("/chatter", ros::Time(1), std_msgs::String());
  }
  EXPECT_EQ(ComplaintAbout(foreign), no_drive);
  EXPECT_EQ(ComplaintAbout(Altered(Without(recording::kVersionTopic, 0.0))),
            Path("altered.bag") + ": not the bag of a drive: it does not begin with " + recording::kVersionTopic);
}

TEST_F(RecordedDrive, OtherVersionsOfTheFormatAreOneLine) {
  const std::string rest = " of the format; this program reads versions up to 2";
  const auto newer = [](std_msgs::UInt64* version) { version->data = 3; };
  EXPECT_EQ(ComplaintAbout(Altered(Altering<std_msgs::UInt64>(recording::kVersionTopic, 0.0, newer))),
            Path("altered.bag") + ": recorded in version 3" + rest);
  const auto text = [](const rosbag::MessageInstance& instance, rosbag::Bag* out) {
    if (instance.getTopic() == recording::kVersionTopic) {
      out->write(recording::kVersionTopic, instance.getTime(), std_msgs::String());
    }
    return instance.getTopic() == recording::kVersionTopic;
  };
  EXPECT_EQ(ComplaintAbout(Altered(text)), Path("altered.bag") + ": recorded in version ?" + rest);
}

TEST_F(RecordedDrive, CyclesThatLackSomethingAreOneLineWithTheirTime) {
  EXPECT_EQ(ComplaintAbout(Altered(Without(Input("robot"), 2.0))),
            Path("altered.bag") + ": at 2.00 s: " + Input("robot") + " is missing");
  EXPECT_EQ(ComplaintAbout(Altered(Without(Input("path"), 0.0))),
            Path("altered.bag") + ": at 0.00 s: there is no path yet");
  const auto only_version = [](const rosbag::MessageInstance& instance, rosbag::Bag*) {
    return instance.getTopic() != recording::kVersionTopic;
  };
  EXPECT_EQ(ComplaintAbout(Altered(only_version)), Path("altered.bag") + ": holds no cycles");
  const auto foreign_type = [](const rosbag::MessageInstance& instance, rosbag::Bag* out) {
    if (instance.getTopic() == Input("robot")) {
      out->write(Input("robot"), instance.getTime(), geometry_msgs::Point());
    }
    return instance.getTopic() == Input("robot");
  };
  EXPECT_EQ(ComplaintAbout(Altered(foreign_type)),
            Path("altered.bag") + ": at 0.00 s: " + Input("robot") + " has the unexpected type geometry_msgs/Point");
}

// ---- Files that cannot be written ----

std::string ComplaintOfRecording(const std::string& file) {
  try {
    const BagRecorder recorder(file, costmap_2d::Costmap2D(1, 1, 1.0, 0.0, 0.0));
  } catch (const OutputError& error) {
    return error.what();
  }
  return "nothing";
}

TEST_F(RecordedDrive, FilesThatCannotBeWrittenAreOneLine) {
  EXPECT_THAT(ComplaintOfRecording(""), StartsWith("cannot write the bag ''"));
  EXPECT_THAT(ComplaintOfRecording(folder_.path().string()), HasSubstr("a file's name is wanted"));
  EXPECT_THAT(ComplaintOfRecording(Path("absent/a.bag")), StartsWith("cannot write the bag " + Path("absent/a.bag")));
  EXPECT_THAT(ComplaintOfRecording("/proc/a.bag"), StartsWith("cannot write the bag /proc/a.bag"));
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

}  // namespace
}  // namespace controller_base::demo
