#include "demo/terminal/progress_line.h"

#include <utility>

#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

constexpr std::chrono::milliseconds kSilence{500};
constexpr std::chrono::milliseconds kPause{100};       // in a terminal
constexpr std::chrono::milliseconds kLinePause{1000};  // elsewhere

}  // namespace

ProgressLine::ProgressLine(std::FILE* out, std::function<bool()> stop)
    : line_(out), stop_(std::move(stop)), next_(std::chrono::steady_clock::now() + kSilence) {}

void ProgressLine::Tell(const std::string& step) {
  if (stop_()) {
    throw simulation::Interrupted();
  }
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) {
    return;
  }
  next_ = now + (line_.is_terminal() ? kPause : kLinePause);
  if (line_.is_terminal()) {
    line_.Show(step);
  } else {
    line_.Print(step);
  }
}

}  // namespace controller_base::demo
