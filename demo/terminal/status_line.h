#ifndef CONTROLLER_BASE_DEMO_TERMINAL_STATUS_LINE_H_
#define CONTROLLER_BASE_DEMO_TERMINAL_STATUS_LINE_H_

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "demo/terminal/live_line.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// Tells a drive: a line for each event, and in a terminal, below them, one line that is kept up to date with time,
// distance left, state and speed.
class StatusLine : public simulation::DriveObserver {
 public:
  explicit StatusLine(std::FILE* out) : line_(out) {}

  void OnPath(const nav_msgs::Path& path) override;
  void OnEvent(const follower::Event& event) override;
  void OnCycle(const simulation::CycleReport& cycle) override;
  void OnEnd(const simulation::DriveRecord& drive) override;

 private:
  double DistanceLeft(std::uint64_t index) const;

  LiveLine line_;
  std::chrono::steady_clock::time_point next_update_;
  std::vector<double> left_;  // m from each pose of the resampled path to its end
};

// "  12.35 s     8.42 m left   detour     0.45 m/s   [######......]", the bar filled by the way done.
std::string StatusText(double time, double left, double length, const std::string& state, double speed);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_TERMINAL_STATUS_LINE_H_
