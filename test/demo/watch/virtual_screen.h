#ifndef TEST_DEMO_WATCH_VIRTUAL_SCREEN_H_
#define TEST_DEMO_WATCH_VIRTUAL_SCREEN_H_

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>

#include "demo/watch/child_process.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {

// A screen without a monitor, that programs draw on and tests look at: an Xvfb process with a display number of its
// own.
class VirtualScreen {
 public:
  static constexpr int kWidth = 1200;  // pixels
  static constexpr int kHeight = 800;  // pixels

  // Returns once programs can use the screen. Throws std::runtime_error when Xvfb does not start.
  VirtualScreen();

  // ":1", say; what DISPLAY is set to for a program that is to use it.
  const std::string& display() const { return display_; }

  // What it shows now (CV_8UC3; blue, green, red).
  cv::Mat Picture() const;

  // Its pixels of exactly or nearly this colour where RViz, in the middle of its window, draws the world.
  int WorldPixels(int red, int green, int blue) const;

 private:
  std::filesystem::path ScreenFile() const { return folder_.path() / "Xvfb_screen0"; }
  std::string WaitForDisplay();

  TemporaryFolder folder_;
  controller_base::demo::ChildProcess server_;
  std::string display_;
};

}  // namespace controller_base_test

#endif  // TEST_DEMO_WATCH_VIRTUAL_SCREEN_H_
