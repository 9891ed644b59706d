#include "demo/terminal/status_line.h"

#include <algorithm>
#include <cmath>

#include "controller_base/path_interpolation.h"
#include "demo/output/drive_files.h"
#include "follower/path_geometry.h"

namespace controller_base::demo {

void StatusLine::OnPath(const nav_msgs::Path& path) {
  const nav_msgs::Path resampled = nav_core::math::LinearInterpolation(path, follower::kTrackingSpacing);
  left_.assign(resampled.poses.size(), 0.0);
  for (std::size_t i = left_.size() - 1; i > 0; --i) {
    left_[i - 1] =
        left_[i] + follower::Distance(resampled.poses[i - 1].pose.position, resampled.poses[i].pose.position);
  }
}

void StatusLine::OnEvent(const follower::Event& event) { line_.Print(EventLine(event)); }

void StatusLine::OnCycle(const simulation::CycleReport& cycle) {
  constexpr std::chrono::milliseconds kUpdatePause{100};
  const auto now = std::chrono::steady_clock::now();
  if (line_.is_terminal() && now >= next_update_) {
    next_update_ = now + kUpdatePause;
    line_.Show(StatusText(cycle.time, DistanceLeft(cycle.output.index), left_.front(), cycle.output.state,
                          cycle.motion.speed));
  }
}

void StatusLine::OnEnd(const simulation::DriveRecord& /*drive*/) { line_.Show(""); }

double StatusLine::DistanceLeft(std::uint64_t index) const {
  return left_[std::min<std::size_t>(index, left_.size() - 1)];
}

std::string StatusText(double time, double left, double length, const std::string& state, double speed) {
  constexpr std::size_t kBarWidth = 24;
  constexpr double kSteps = 1000.0;
  const double done = length > 0.0 ? 1.0 - left / length : 1.0;
  char text[128];
  std::snprintf(text, sizeof(text), "%7.2f s  %7.2f m left  %-9s %5.2f m/s  [", time, left, state.c_str(), speed);
  return text +
         ProgressBar(static_cast<std::size_t>(std::lround(done * kSteps)), static_cast<std::size_t>(kSteps),
                     kBarWidth) +
         ']';
}

}  // namespace controller_base::demo
