// RViz on a virtual screen, watching a drive of the demo program.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "demo/watch/child_process.h"
#include "ros_master/ros_master_process.h"
#include "test/demo/watch/virtual_screen.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;
using controller_base::ros_master::RosMasterProcess;

bool IsOnPath(const std::string& program) {
  return ChildProcess({"sh", "-c", "command -v " + program}, {}, "/dev/null").WaitForEnd() == 0;
}

// The pixels of exactly or nearly this colour.
int Pixels(const cv::Mat& picture, int red, int green, int blue) {
  constexpr int kTolerance = 4;
  const cv::Scalar color(blue, green, red);
  const cv::Scalar tolerance = cv::Scalar::all(kTolerance);
  cv::Mat found;
  cv::inRange(picture, color - tolerance, color + tolerance, found);
  return cv::countNonZero(found);
}

// Where RViz draws the world, and where it lists its displays and what is wrong with them.
cv::Mat World(const cv::Mat& picture) { return picture(cv::Rect(360, 62, 640, 590)); }
cv::Mat Displays(const cv::Mat& picture) { return picture(cv::Rect(0, 62, 320, 500)); }

// The corridor is tinted over a map and costs of many colours: greener than anything else that is large.
int GreenPixels(const cv::Mat& picture) {
  int count = 0;
  for (int row = 0; row < picture.rows; ++row) {
    for (int column = 0; column < picture.cols; ++column) {
      const auto& pixel = picture.at<cv::Vec3b>(row, column);
      count += pixel[1] > pixel[0] + 20 && pixel[1] > pixel[2] + 20 ? 1 : 0;
    }
  }
  return count;
}

// The colours in which RViz lists what it warns of.
bool ShowsWarning(const cv::Mat& picture) {
  return Pixels(Displays(picture), 192, 128, 0) > 10 || Pixels(Displays(picture), 192, 32, 0) > 10;
}

bool ShowsDetour(const cv::Mat& picture) { return Pixels(World(picture), 190, 40, 170) > 300; }
bool ShowsBoxes(const cv::Mat& picture) { return Pixels(World(picture), 255, 61, 61) > 100; }
bool ShowsCorridor(const cv::Mat& picture) { return GreenPixels(World(picture)) > 8000; }

// RViz's warnings and errors, but for the one that its map shader causes with some software renderers.
std::string Complaints(const std::string& log) {
  std::istringstream lines(log);
  std::string line;
  std::string complaints;
  while (std::getline(lines, line)) {
    const bool is_complaint = line.find("[ WARN]") != std::string::npos || line.find("[ERROR]") != std::string::npos;
    if (is_complaint && line.find("rviz/glsl120/indexed_8bit_image.vert") == std::string::npos) {
      complaints += line + '\n';
    }
  }
  return complaints;
}

class RvizOnAVirtualScreen : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* program : {"rviz", "Xvfb"}) {
      if (!IsOnPath(program)) {
        GTEST_SKIP() << "there is no " << program << " on this machine; scripts/setup installs it";
      }
    }
    screen_.emplace();
    master_ = RosMasterProcess::StartOnFreePort();
  }

  std::vector<std::string> Environment() const {
    return {"DISPLAY=" + screen_->display(),
            "LIBGL_ALWAYS_SOFTWARE=1",
            "ROS_MASTER_URI=" + master_->Uri(),
            "ROS_IP=127.0.0.1",
            "HOME=" + folder_.path().string(),
            "ROS_LOG_DIR=" + folder_.path().string(),
            "XDG_RUNTIME_DIR=" + folder_.path().string()};
  }

  std::string LogFile() const { return (folder_.path() / "log").string(); }

  // The first picture of the screen that is `wanted`, looked at twice a second; the last one when none is.
  cv::Mat WaitForPicture(const std::function<bool(const cv::Mat&)>& wanted) const {
    constexpr std::chrono::seconds kTimeout{150};
    constexpr std::chrono::milliseconds kPause{500};
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    cv::Mat picture = screen_->Picture();
    while (!wanted(picture) && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(kPause);
      picture = screen_->Picture();
    }
    return picture;
  }

  TemporaryFolder folder_;
  std::optional<VirtualScreen> screen_;
  std::unique_ptr<RosMasterProcess> master_;
};

TEST_F(RvizOnAVirtualScreen, ShowsCorridorDetourAndBoxesWithoutAWarning) {
  ChildProcess demo({CONTROLLER_BASE_DEMO_PROGRAM, "--rviz", "--out", (folder_.path() / "out").string()}, Environment(),
                    LogFile());
  const cv::Mat picture = WaitForPicture(
      [](const cv::Mat& shown) { return ShowsCorridor(shown) && ShowsDetour(shown) && ShowsBoxes(shown); });
  cv::imwrite("rviz.png", picture);  // for whoever wants to see it
  EXPECT_TRUE(ShowsCorridor(picture));
  EXPECT_TRUE(ShowsDetour(picture));
  EXPECT_TRUE(ShowsBoxes(picture));
  EXPECT_FALSE(ShowsWarning(picture));
  EXPECT_EQ(Complaints(ReadFile(LogFile())), "") << ReadFile(LogFile());
  kill(demo.pid(), SIGINT);
  EXPECT_EQ(demo.WaitForEnd(), 130);
}

// A recorded drive, played to an RViz that is open already.
TEST_F(RvizOnAVirtualScreen, ShowsABagThatIsPlayed) {
  if (!IsOnPath("rosbag")) {
    GTEST_SKIP() << "there is no rosbag on this machine; scripts/setup installs it";
  }
  const std::string bag = (folder_.path() / "a.bag").string();
  ASSERT_EQ(ChildProcess({CONTROLLER_BASE_DEMO_PROGRAM, "--bag", bag, "--out", (folder_.path() / "out").string()},
                         Environment(), "/dev/null")
                .WaitForEnd(),
            0);
  const ChildProcess rviz({"rviz", "-d", CONTROLLER_BASE_DEMO_RVIZ_CONFIG}, Environment(), LogFile());
  WaitForPicture(ShowsWarning);  // RViz is up, and misses the robot's frame
  const ChildProcess play({"rosbag", "play", "--quiet", "--loop", bag}, Environment(), "/dev/null");
  const cv::Mat picture = WaitForPicture(
      [](const cv::Mat& shown) { return ShowsCorridor(shown) && ShowsDetour(shown) && ShowsBoxes(shown); });
  cv::imwrite("rviz-bag.png", picture);  // for whoever wants to see it
  EXPECT_TRUE(ShowsCorridor(picture));
  EXPECT_TRUE(ShowsDetour(picture));
  EXPECT_TRUE(ShowsBoxes(picture));
  EXPECT_FALSE(ShowsWarning(picture));
}

TEST_F(RvizOnAVirtualScreen, WarnsWhereNothingIsPublishedAndShowsNothing) {
  const ChildProcess rviz({"rviz", "-d", CONTROLLER_BASE_DEMO_RVIZ_CONFIG}, Environment(), LogFile());
  const cv::Mat picture = WaitForPicture(ShowsWarning);
  EXPECT_TRUE(ShowsWarning(picture));
  EXPECT_FALSE(ShowsCorridor(picture));
  EXPECT_FALSE(ShowsDetour(picture));
  EXPECT_FALSE(ShowsBoxes(picture));
}

TEST(RvizWithoutAScreen, IsOneClearLine) {
  const TemporaryFolder folder;
  const std::string log = (folder.path() / "log").string();
  ChildProcess demo({CONTROLLER_BASE_DEMO_PROGRAM, "--rviz", "--out", (folder.path() / "out").string()},
                    {"DISPLAY=", "WAYLAND_DISPLAY=", "ROS_MASTER_URI=http://127.0.0.1:1"}, log);
  EXPECT_EQ(demo.WaitForEnd(), 9);
  EXPECT_NE(
      ReadFile(log).find("controller_base_demo: RViz needs a screen: neither DISPLAY nor WAYLAND_DISPLAY is set\n"),
      std::string::npos)
      << ReadFile(log);
}

}  // namespace
}  // namespace controller_base_test
