#include "test/demo/watch/virtual_screen.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <thread>

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;

// Xvfb keeps the screen in a file of the X Window Dump format (X11/XWDFile.h): a header of big-endian 32-bit numbers,
// a table of colours that true-colour screens have no use for, and the rows of pixels. The numbers used here, by their
// place in the header:
constexpr std::size_t kHeaderSize = 0;
constexpr std::size_t kPixmapWidth = 4;
constexpr std::size_t kPixmapHeight = 5;
constexpr std::size_t kBitsPerPixel = 11;
constexpr std::size_t kBytesPerLine = 12;
constexpr std::size_t kColors = 19;
constexpr std::size_t kBytesPerColor = 12;

std::size_t HeaderNumber(const std::string& dump, std::size_t place) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number = number << 8 | static_cast<std::uint8_t>(dump.at(4 * place + i));
  }
  return number;
}

}  // namespace

// Xvfb writes the display's number to its standard output once it is ready.
VirtualScreen::VirtualScreen()
    : server_(
          {"Xvfb", "-displayfd", "1", "-screen", "0", std::to_string(kWidth) + "x" + std::to_string(kHeight) + "x24",
           "-fbdir", folder_.path().string(), "-nolisten", "tcp"},
          {}, (folder_.path() / "log").string()),
      display_(":" + WaitForDisplay()) {}

std::string VirtualScreen::WaitForDisplay() {
  constexpr std::chrono::milliseconds kPoll{50};
  constexpr int kPolls = 400;
  for (int poll = 0; poll < kPolls && !server_.Ended(); ++poll) {
    const std::string log = ReadFile(folder_.path() / "log");
    const std::size_t end = log.rfind('\n');
    const std::size_t begin = log.find_last_not_of("0123456789", end - 1) + 1;
    if (end != std::string::npos && begin < end) {
      return log.substr(begin, end - begin);
    }
    std::this_thread::sleep_for(kPoll);
  }
  throw std::runtime_error("Xvfb does not start: " + ReadFile(folder_.path() / "log"));
}

cv::Mat VirtualScreen::Picture() const {
  std::string dump = ReadFile(ScreenFile());
  if (HeaderNumber(dump, kBitsPerPixel) != 32) {
    throw std::runtime_error("Xvfb's screen does not have 32 bits a pixel");
  }
  const std::size_t first = HeaderNumber(dump, kHeaderSize) + kBytesPerColor * HeaderNumber(dump, kColors);
  const cv::Mat pixels(static_cast<int>(HeaderNumber(dump, kPixmapHeight)),
                       static_cast<int>(HeaderNumber(dump, kPixmapWidth)), CV_8UC4, &dump.at(first),
                       HeaderNumber(dump, kBytesPerLine));
  cv::Mat picture;
  cv::cvtColor(pixels, picture, cv::COLOR_BGRA2BGR);
  return picture;
}

int VirtualScreen::WorldPixels(int red, int green, int blue) const {
  const cv::Scalar color(blue, green, red);
  cv::Mat found;
  cv::inRange(Picture()(cv::Rect(360, 62, 640, 590)), color - cv::Scalar::all(4), color + cv::Scalar::all(4), found);
  return cv::countNonZero(found);
}

}  // namespace controller_base_test
