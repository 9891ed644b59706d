// The plots of a drive.

#include <vector>

#include "demo/pictures/palette.h"
#include "demo/pictures/picture_parts.h"
#include "demo/pictures/pictures.h"
#include "demo/pictures/plots.h"

namespace controller_base::demo {
namespace {

template <typename ValueOf>
std::vector<cv::Point2d> OverTime(const simulation::DriveRecord& drive, const ValueOf& value_of) {
  std::vector<cv::Point2d> points;
  for (const simulation::TrajectorySample& sample : drive.trajectory) {
    points.emplace_back(sample.time, value_of(sample));
  }
  return points;
}

Chart DeviationChart(const simulation::DriveRecord& drive) {
  return {"distance from the path, m",
          0.4,
          {{"deviation", palette::kTrail, OverTime(drive, [](const auto& sample) { return sample.deviation; })}},
          Chart::Limit{"warning", 0.3}};
}

Chart ProgressChart(const simulation::DriveRecord& drive) {
  return {"used up of the path's budget, 1 being the path itself",
          1.2,
          {{"distance", palette::kPath, OverTime(drive, [](const auto& sample) { return sample.distance_ratio; })},
           {"time", palette::kDetour, OverTime(drive, [](const auto& sample) { return sample.time_ratio; })}},
          Chart::Limit{"end of the budget", 3.0}};
}

Chart SpeedChart(const simulation::DriveRecord& drive) {
  return {"speed, m/s",
          0.5,
          {{"speed", palette::kLaser, OverTime(drive, [](const auto& sample) { return sample.motion.speed; })}},
          {}};
}

}  // namespace

cv::Mat DrawPlots(const simulation::DriveRecord& drive, const Story& story) {
  std::vector<Mark> marks;
  for (const Moment& moment : story.moments()) {
    marks.push_back({moment.time, static_cast<int>(marks.size()) + 1, NumberColor(moment)});
  }
  return DrawCharts(OutcomeText(drive), Summary(drive),
                    {DeviationChart(drive), ProgressChart(drive), SpeedChart(drive)}, marks,
                    drive.trajectory.back().time);
}

}  // namespace controller_base::demo
