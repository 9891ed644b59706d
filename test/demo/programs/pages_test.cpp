// The numbers about the default drive that stand in README.md and docs/: what the programs say today. After a change of
// the drive, each failure tells what to write.

#include <geometry_msgs/Twist.h>
#include <gtest/gtest.h>
#include <rosbag/bag.h>
#include <rosbag/view.h>

#include <cmath>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using controller_base::demo::ChildProcess;

// The default drive, recorded and replayed once for all tests.
class Pages : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    ASSERT_EQ(Run({CONTROLLER_BASE_DEMO_PROGRAM, "--bag", Path("drive.bag"), "--out", Path("out")}), 0);
    ASSERT_EQ(Run({CONTROLLER_BASE_REPLAY_PROGRAM, Path("drive.bag")}), 0);
    replay_ = ReadFile(Path("log"));
    result_ = ReadFile(Path("out") + "/result.json");
  }

  static void TearDownTestSuite() { delete folder_; }

  static std::string Path(const std::string& name) { return (folder_->path() / name).string(); }
  static int Run(const std::vector<std::string>& command) {
    return ChildProcess(command, {"ROS_MASTER_URI=http://127.0.0.1:9"}, Path("log")).WaitForEnd();
  }
  static std::string Page(const std::string& name) { return ReadFile(fs::path(CONTROLLER_BASE_PAGES) / name); }

  // The groups of the only match in a text; a failure where there is none.
  static std::vector<std::string> Find(const std::string& text, const std::string& pattern) {
    std::smatch match;
    if (!std::regex_search(text, match, std::regex(pattern))) {
      ADD_FAILURE() << "nothing like \"" << pattern << '"';
      return std::vector<std::string>(10, "0");
    }
    return {match.begin(), match.end()};
  }

  static double Seconds() { return std::stod(Find(result_, "\"duration_s\": ([0-9.]+)")[1]); }
  static int Figure(const std::string& name) { return std::stoi(Find(result_, "\"" + name + "\": ([0-9]+)")[1]); }

  static TemporaryFolder* folder_;
  static std::string replay_;
  static std::string result_;
};

TemporaryFolder* Pages::folder_ = nullptr;
std::string Pages::replay_;
std::string Pages::result_;

TEST_F(Pages, AReplayIsQuotedAsItIs) {
  const std::string quoted = Find(Page("docs/replay.md"), "    (identical: .*)\n")[1];
  EXPECT_EQ(quoted + '\n', replay_) << "write into docs/replay.md: " << replay_;
}

TEST_F(Pages, TheBagIsAsLongAndAsLargeAsTheySay) {
  const std::string page = Page("docs/replay.md");
  const std::vector<std::string> bag = Find(page, "drive of ([0-9]+) s makes ([0-9]+) MB");
  EXPECT_EQ(std::stol(bag[1]), std::lround(Seconds())) << "seconds in docs/replay.md";
  EXPECT_EQ(std::stol(bag[2]), std::lround(static_cast<double>(fs::file_size(Path("drive.bag"))) / 1e6)) << "MB there";
  EXPECT_EQ(std::stol(Find(page, "for those ([0-9]+) s")[1]), std::lround(Seconds())) << "seconds in docs/replay.md";
}

TEST_F(Pages, TheCommandThatDiffersWasRecorded) {
  const std::vector<std::string> quoted =
      Find(Page("docs/replay.md"),
           "different at ([0-9.]+) s, after ([0-9]+) identical cycles: .*recorded 'angular.z: ([0-9.-]+)'");
  const rosbag::Bag bag(Path("drive.bag"));
  rosbag::View view(bag, rosbag::TopicQuery("/controller_base_demo/output/command"));
  std::vector<double> turn_rates;
  for (const rosbag::MessageInstance& message : view) {
    turn_rates.push_back(message.instantiate<geometry_msgs::Twist>()->angular.z);
  }
  const std::size_t cycle = std::stoul(quoted[2]);
  EXPECT_NEAR(std::stod(quoted[1]), 0.05 * static_cast<double>(cycle), 1e-9) << "seconds in docs/replay.md";
  ASSERT_LT(cycle, turn_rates.size());
  EXPECT_EQ(std::stod(quoted[3]), turn_rates[cycle]) << "angular.z in docs/replay.md";
}

TEST_F(Pages, TheReadmesPictureIsOfThisDrive) {
  const std::vector<std::string> words{"no", "a", "two", "three", "four", "five", "six"};
  const auto count = [&](const std::string& name) { return words.at(static_cast<std::size_t>(Figure(name))); };
  const std::vector<std::string> quoted =
      Find(Page("README.md"), "planned path, ([a-z]+) detours?, ([a-z]+) bumper contacts?");
  EXPECT_EQ(quoted[1], count("detours")) << "detours in README.md; renew docs/images/drive.png, too";
  EXPECT_EQ(quoted[2], count("contacts")) << "contacts in README.md; renew docs/images/drive.png, too";
}

}  // namespace
}  // namespace controller_base_test
