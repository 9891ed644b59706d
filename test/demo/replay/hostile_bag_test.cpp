// Damaged and hostile bags: each is refused in one line, without a crash and in bounded memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ros/console.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "demo/replay/bag_recorder.h"
#include "demo/replay/drive_bag.h"
#include "demo/replay/replay.h"
#include "demo/scenario/scenario_file.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "test/demo/replay/bag_edit.h"
#include "test/demo/replay/stopper.h"
#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

using controller_base_test::Altering;
using controller_base_test::AlteringBytes;
using controller_base_test::CopyBag;
using controller_base_test::MessageFilter;
using controller_base_test::RawMessage;
using controller_base_test::ReadFile;
using controller_base_test::Stopper;
using controller_base_test::TemporaryFolder;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string Input(const std::string& name) { return recording::kInputPrefix + name; }

class HostileBag : public testing::Test {
 protected:
  HostileBag() { ros::console::set_logger_level("ros.nav_controller", ros::console::levels::Fatal); }

  // The first cycles of a drive that plans its path.
  static const std::string& Recorded() {
    static const TemporaryFolder folder;
    static const std::string file = [] {
      const std::string name = (folder.path() / "recorded.bag").string();
      const Scenario scenario = LoadScenario(std::string(CONTROLLER_BASE_DEMO_SCENARIOS) + "/sill.yaml");
      const costmap_2d::Costmap2D map = simulation::LoadMap(scenario.setup.map_file);
      BagRecorder recorder(name, map);
      Stopper stopper(3);
      RunDrive(map, scenario.setup, PlanDrive(map, scenario.setup), {&recorder, &stopper}, stopper.stop);
      return name;
    }();
    return file;
  }

  std::string File() const { return (folder_.path() / "hostile.bag").string(); }

  // What is said about a file, without its name; empty when it is replayed, identically or not.
  static std::string ComplaintAbout(const std::string& file) {
    try {
      DriveBag bag(file);
      Replay(&bag, [] { return false; });
      while (bag.Next()) {  // what follows a difference
      }
    } catch (const BagError& error) {
      const std::string complaint = error.what();
      EXPECT_THAT(complaint, StartsWith(file + ": "));
      EXPECT_THAT(complaint, Not(HasSubstr("\n")));
      return complaint.substr(file.size() + 2);
    }
    return "";
  }

  std::string ComplaintAbout(const MessageFilter& filter) const {
    return ComplaintAbout(CopyBag(Recorded(), File(), filter));
  }
  template <typename Type>
  std::string ComplaintAbout(const std::string& input, const std::function<void(Type*)>& alter) const {
    return ComplaintAbout(Altering<Type>(Input(input), 0.05, alter));
  }

  TemporaryFolder folder_;
};

double MemoryPeak() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / (1024.0 * 1024.0);  // GiB
}

// A path's message begins with sequence number, stamp and frame "map"; the number of its poses follows.
std::function<void(std::vector<std::uint8_t>*)> Claiming(std::uint32_t poses) {
  return
      [poses](std::vector<std::uint8_t>* bytes) { std::memcpy(bytes->data() + 4 + 8 + 4 + 3, &poses, sizeof(poses)); };
}

TEST_F(HostileBag, MoreElementsThanTheMessageHasBytesForAreRefused) {
  for (const std::uint32_t poses : {3U, 100'000'000U, 0xffffffffU}) {
    EXPECT_THAT(ComplaintAbout(AlteringBytes(Input("path"), 0.0, Claiming(poses))),
                StartsWith("at 0.00 s: " + Input("path") + " claims " + std::to_string(poses) + " elements in "));
  }
  EXPECT_LT(MemoryPeak(), 1.0);
}

TEST_F(HostileBag, AMessageThatIsLongerOrShorterThanItsFieldsIsRefused) {
  EXPECT_THAT(ComplaintAbout(AlteringBytes(Input("robot"), 0.0, [](auto* bytes) { bytes->push_back(0); })),
              HasSubstr("robot is longer than it claims"));
  EXPECT_THAT(ComplaintAbout(AlteringBytes(Input("robot"), 0.0, [](auto* bytes) { bytes->pop_back(); })),
              HasSubstr("robot is shorter than it claims"));
  EXPECT_THAT(ComplaintAbout(AlteringBytes(Input("robot"), 0.0, [](auto* bytes) { (*bytes)[12] = 200; })),
              HasSubstr("robot is shorter than it claims"));  // the name of its frame
}

TEST_F(HostileBag, AHeadingThatIsNoNumberIsRefused) {
  const std::vector<double geometry_msgs::Quaternion::*> kParts = {
      &geometry_msgs::Quaternion::x, &geometry_msgs::Quaternion::y, &geometry_msgs::Quaternion::z,
      &geometry_msgs::Quaternion::w};
  for (const auto part : kParts) {
    for (const double number : {kNan, kInfinity, -kInfinity}) {
      EXPECT_EQ(ComplaintAbout<geometry_msgs::PoseStamped>(
                    "robot", [&](auto* robot) { robot->pose.orientation.*part = number; }),
                "at 0.05 s: " + Input("robot") + " has no heading");
      EXPECT_EQ(ComplaintAbout(Altering<nav_msgs::Path>(
                    Input("path"), 0.0, [&](auto* path) { path->poses[1].pose.orientation.*part = number; })),
                "at 0.00 s: " + Input("path") + " has an impossible pose, number 1");
    }
  }
}

TEST_F(HostileBag, AClockThatRosCannotTellIsRefused) {
  const auto clock = [&](std::uint32_t seconds) {
    return ComplaintAbout<std_msgs::Time>("clock", [=](auto* message) { message->data = ros::Time(seconds, 0); });
  };
  EXPECT_EQ(clock(2'147'483'747), "");  // the farthest jump
  EXPECT_EQ(clock(2'147'483'748), "at 0.05 s: " + Input("clock") + " says 2147483748 s: a jump that ROS cannot tell");
  EXPECT_THAT(clock(0xffffffff), HasSubstr("a jump that ROS cannot tell"));
  EXPECT_EQ(clock(0), "");
}

TEST_F(HostileBag, AClockThatJumpsFartherInTwoStepsIsRefused) {
  const auto clock = [](std::uint32_t seconds) {
    return [=](std_msgs::Time* message) { message->data = ros::Time(seconds, 0); };
  };
  const std::string once = CopyBag(Recorded(), (folder_.path() / "once.bag").string(),
                                   Altering<std_msgs::Time>(Input("clock"), 0.0, clock(1)));
  const std::string twice = CopyBag(once, File(), Altering<std_msgs::Time>(Input("clock"), 0.1, clock(2'147'483'650)));
  EXPECT_THAT(ComplaintAbout(twice), StartsWith("at 0.10 s: " + Input("clock") + " says 2147483650 s"));
}

// The speed that the follower measures over such a step is beyond any robot.
TEST_F(HostileBag, AClockThatHardlyMovesIsReplayedSoon) {
  const auto hardly_later = [](std_msgs::Time* clock) { clock->data = ros::Time(100, 128); };
  EXPECT_EQ(ComplaintAbout<std_msgs::Time>("clock", hardly_later), "");
}

TEST_F(HostileBag, CellsOnWhichNobodyDrivesAreRefused) {
  for (const double resolution : {1e-300, 0.0049, 0.51, 5.0, 1e300, 0.0, -0.05, kNan, kInfinity}) {
    EXPECT_THAT(ComplaintAbout<std_msgs::Float64>("local_map/resolution", [=](auto* m) { m->data = resolution; }),
                StartsWith("at 0.05 s: " + Input("local_map") + " is no map: its cells are "));
  }
}

TEST_F(HostileBag, PlacesThatAreNowhereAreRefused) {
  for (const double x : {kNan, kInfinity, 1.1e7, -1e300}) {
    EXPECT_THAT(ComplaintAbout<nav_msgs::OccupancyGrid>("local_map/costs",
                                                        [=](auto* grid) { grid->info.origin.position.x = x; }),
                HasSubstr(" is no map: it lies farther than 1e+07 m from the origin"));
    EXPECT_THAT(ComplaintAbout(Altering<nav_msgs::Path>(Input("path"), 0.0,
                                                        [=](auto* path) { path->poses[1].pose.position.x = x; })),
                HasSubstr(" has an impossible pose, number 1"));
  }
  EXPECT_THAT(ComplaintAbout(Altering<nav_msgs::Path>(Input("path"), 0.0,
                                                      [](auto* path) { path->poses[1].pose.position.x = 2e5; })),
              HasSubstr("m long; 100000 m are the most"));
}

TEST_F(HostileBag, AMapOfManyCellsThatAreNotThereIsRefused) {
  EXPECT_THAT(ComplaintAbout<nav_msgs::OccupancyGrid>("local_map/costs", [](auto* grid) { grid->info.width = 0; }),
              HasSubstr("does not have as many cells"));
  const auto line = [](nav_msgs::OccupancyGrid* grid) {
    grid->info.width = 70'000;
    grid->info.height = 1;
    grid->data.assign(70'000, 0);
  };
  const std::string costs = CopyBag(Recorded(), (folder_.path() / "costs.bag").string(),
                                    Altering<nav_msgs::OccupancyGrid>(Input("local_map/costs"), 0.05, line));
  EXPECT_THAT(
      ComplaintAbout(CopyBag(costs, File(), Altering<nav_msgs::OccupancyGrid>(Input("local_map/laser"), 0.05, line))),
      HasSubstr("is no map: 70000 x 1 cells; 1 to 65535 a side are possible"));
}

// A long path that the file really contains: the most memory that a small file can make a replay use.
TEST_F(HostileBag, TheLongestPathIsReplayedWithinMemory) {
  EXPECT_EQ(ComplaintAbout(Altering<nav_msgs::Path>(Input("path"), 0.0,
                                                    [](auto* path) { path->poses.back().pose.position.x = 9.9e4; })),
            "");
  EXPECT_LT(MemoryPeak(), 1.0);
}

TEST_F(HostileBag, ACycleWithoutEndIsRefused) {
  const auto flood = [](const rosbag::MessageInstance& instance, rosbag::Bag* out) {
    if (instance.getTopic() == Input("robot")) {
      for (int i = 0; i < 10'001; ++i) {
        out->write(Input("contacts"), instance.getTime(), sensor_msgs::Joy());
      }
    }
    return false;
  };
  EXPECT_THAT(ComplaintAbout(MessageFilter(flood)), HasSubstr("a cycle of more than 10000 messages"));
}

TEST_F(HostileBag, AMessageWithoutEndIsRefused) {
  const auto talk = [](std_msgs::String* state) { state->data.assign((8U << 20U) - 3, ' '); };
  EXPECT_THAT(ComplaintAbout(Altering<std_msgs::String>(std::string(recording::kOutputPrefix) + "state", 0.0, talk)),
              HasSubstr("output/state has 8388609 bytes; 8388608 are the most"));
}

// ---- The file itself ----

// The text after the first `field=` is replaced.
std::string WithField(std::string bytes, const std::string& field, const std::string& value) {
  const std::size_t at = bytes.find(field + "=");
  EXPECT_NE(at, std::string::npos) << field;
  return bytes.replace(at + field.size() + 1, value.size(), value);
}

TEST_F(HostileBag, AChunkThatClaimsToBeLargeIsRefused) {
  const std::string four_gigabytes = "\xff\xff\xff\xff";
  const std::string half_a_gigabyte{"\0\0\0\x20", 4};
  for (const auto compression :
       {rosbag::compression::Uncompressed, rosbag::compression::LZ4, rosbag::compression::BZ2}) {
    CopyBag(
        Recorded(), File(), [](const auto&, auto*) { return false; }, compression);
    const std::string whole = ReadFile(File());
    for (const std::string& size : {four_gigabytes, half_a_gigabyte}) {
      EXPECT_THAT(ComplaintAbout(folder_.Write("hostile.bag", WithField(whole, "size", size))),
                  AnyOf(HasSubstr("cut off or damaged: a chunk of "), HasSubstr("claims to hold")));
    }
  }
  EXPECT_LT(MemoryPeak(), 1.0);
}

TEST_F(HostileBag, AnEncryptedOneIsTold) {
  const std::string bytes = ReadFile(Recorded());
  const std::size_t header = bytes.find("conn_count=");
  ASSERT_NE(header, std::string::npos);
  // The field "conn_count" becomes "encryptor" of the same length and is gone; encryption is told first.
  EXPECT_EQ(ComplaintAbout(folder_.Write("hostile.bag", std::string(bytes).replace(header, 11, "encryptor=x"))),
            "it is encrypted");
}

// ---- Random damage ----

constexpr std::uint32_t kSpecialWords[] = {0, 1, 0xff, 0xffff, 100'000'000, 0x7fffffff, 0x80000000, 0xffffffff};
constexpr double kSpecialNumbers[] = {0.0, -1.0, 1e-300, 1e300, 1e9, kInfinity, kNan};

template <typename Bytes, typename Value>
void Overwrite(Bytes* bytes, std::size_t at, const Value& value) {
  std::memcpy(bytes->data() + at, &value, std::min(sizeof(value), bytes->size() - at));
}

// Below `end`.
std::uint32_t Draw(std::mt19937* random, std::size_t end) { return static_cast<std::uint32_t>((*random)() % end); }

// Overwrites bytes in one to four places.
template <typename Bytes>
void Spoil(Bytes* bytes, std::mt19937* random) {
  for (std::uint32_t places = Draw(random, 4) + 1; places > 0 && !bytes->empty(); --places) {
    const std::size_t at = Draw(random, bytes->size());
    const auto place = bytes->begin() + static_cast<std::ptrdiff_t>(at);
    const std::size_t length = Draw(random, 64);
    switch (Draw(random, 6)) {
      case 0:
        Overwrite(bytes, at, static_cast<std::uint8_t>(Draw(random, 256)));
        break;
      case 1:
        Overwrite(bytes, at, static_cast<std::uint8_t>(1U << Draw(random, 8)));
        break;
      case 2:
        Overwrite(bytes, at, kSpecialWords[Draw(random, std::size(kSpecialWords))]);
        break;
      case 3:
        Overwrite(bytes, at, kSpecialNumbers[Draw(random, std::size(kSpecialNumbers))]);
        break;
      case 4:
        bytes->erase(place, bytes->begin() + static_cast<std::ptrdiff_t>(std::min(bytes->size(), at + length)));
        break;
      default:
        bytes->insert(place, length, 0);
    }
  }
}

class SpoiledFile : public HostileBag, public testing::WithParamInterface<rosbag::CompressionType> {};

// The spoilt file stays in the temporary folder where the test crashes.
TEST_P(SpoiledFile, IsReplayedOrTold) {
  constexpr std::uint32_t kFiles = 1000;
  CopyBag(
      Recorded(), File(), [](const auto&, auto*) { return false; }, GetParam());
  const std::string whole = ReadFile(File());
  ASSERT_EQ(ComplaintAbout(File()), "");
  std::uint32_t told = 0;
  for (std::uint32_t seed = 0; seed < kFiles; ++seed) {
    std::mt19937 random(seed);
    std::string bytes = whole;
    Spoil(&bytes, &random);
    told += ComplaintAbout(folder_.Write("hostile.bag", bytes)).empty() ? 0U : 1U;
  }
  EXPECT_GT(told, kFiles / 10);
  EXPECT_LT(MemoryPeak(), 1.0);
}

INSTANTIATE_TEST_SUITE_P(HostileBag, SpoiledFile,
                         testing::Values(rosbag::compression::Uncompressed, rosbag::compression::LZ4,
                                         rosbag::compression::BZ2),
                         [](const auto& param) {
                           return std::string(param.param == rosbag::compression::Uncompressed ? "uncompressed"
                                              : param.param == rosbag::compression::LZ4        ? "lz4"
                                                                                               : "bz2");
                         });

// The file is well-formed, and what a message says is not.
TEST_F(HostileBag, SpoiledMessagesAreReplayedOrTold) {
  constexpr std::uint32_t kBags = 1000;
  std::vector<std::string> topics;
  for (const char* name : {"clock", "path", "robot", "local_map/costs", "local_map/laser", "local_map/resolution"}) {
    topics.push_back(Input(name));
  }
  topics.push_back(std::string(recording::kOutputPrefix) + "ahead");
  std::uint32_t told = 0;
  for (std::uint32_t seed = 0; seed < kBags; ++seed) {
    std::mt19937 random(seed);
    const std::string& topic = topics[random() % topics.size()];
    const auto spoil = [&](std::vector<std::uint8_t>* bytes) { Spoil(bytes, &random); };
    told += ComplaintAbout(AlteringBytes(topic, 0.05 * static_cast<double>(random() % 3), spoil)).empty() ? 0U : 1U;
  }
  EXPECT_GT(told, kBags / 10);
  EXPECT_LT(MemoryPeak(), 1.0);
}

}  // namespace
}  // namespace controller_base::demo
