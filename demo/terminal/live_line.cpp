#include "demo/terminal/live_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "follower/printable.h"

namespace controller_base::demo {

LiveLine::LiveLine(std::FILE* out) : LiveLine(out, isatty(fileno(out)) == 1) {}

LiveLine::LiveLine(std::FILE* out, bool is_terminal) : out_(out), is_terminal_(is_terminal) {}

LiveLine::~LiveLine() {
  if (is_terminal_ && !text_.empty()) {
    Write(kEraseLine);
  }
}

void LiveLine::Show(const std::string& text) {
  if (!is_terminal_) {
    return;
  }
  text_ = follower::Printable(text).substr(0, Width());
  Write(kEraseLine + text_ + '\r');
}

void LiveLine::Print(const std::string& text) {
  const std::string line = follower::Printable(text) + '\n';
  Write(is_terminal_ ? kEraseLine + line + text_ + '\r' : line);
}

// One less than there is room for: a full line would wrap.
std::size_t LiveLine::Width() const {
  constexpr std::size_t kUsualWidth = 80;
  winsize size{};
  const bool is_known = ioctl(fileno(out_), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return (is_known ? size.ws_col : kUsualWidth) - 1;
}

void LiveLine::Write(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), out_);
  std::fflush(out_);
}

std::string ProgressBar(std::size_t done, std::size_t total, std::size_t width) {
  const std::size_t filled = total == 0 ? width : std::min(done, total) * width / total;
  return std::string(filled, '#') + std::string(width - filled, '.');
}

}  // namespace controller_base::demo
