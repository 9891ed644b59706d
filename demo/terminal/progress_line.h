#ifndef CONTROLLER_BASE_DEMO_TERMINAL_PROGRESS_LINE_H_
#define CONTROLLER_BASE_DEMO_TERMINAL_PROGRESS_LINE_H_

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

#include "demo/terminal/live_line.h"

namespace controller_base::demo {

// Tells people how far a long calculation is: in a terminal on one line that is kept up to date, elsewhere on a line a
// second. The first half second is silent. What it is made for is a Progress of the simulation.
class ProgressLine {
 public:
  // The calculation is ended once `stop` says so.
  ProgressLine(std::FILE* out, std::function<bool()> stop);

  // Throws Interrupted.
  void Tell(const std::string& step);

 private:
  LiveLine line_;
  std::function<bool()> stop_;
  std::chrono::steady_clock::time_point next_;  // when something is told again
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_TERMINAL_PROGRESS_LINE_H_
