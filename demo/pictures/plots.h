#ifndef CONTROLLER_BASE_DEMO_PICTURES_PLOTS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_PLOTS_H_

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

namespace controller_base::demo {

// A line of a chart: x in seconds, y in the chart's unit. Where y is not finite or beyond
// 1e9, the line has a gap.
struct Series {
  std::string name;
  cv::Scalar color;  // blue, green, red
  std::vector<cv::Point2d> points;
};

// Values over time; the y axis goes from 0, or the lowest value, to `least_top` or the highest value.
struct Chart {
  std::string title;  // with its unit
  double least_top;
  std::vector<Series> series;
  struct Limit {
    std::string name;
    double value;
  };
  std::optional<Limit> limit;  // a level to compare with; shown where the y axis reaches it
};

// A numbered moment, drawn through all charts.
struct Mark {
  double time;  // s
  int number;
  cv::Scalar color;
};

// The charts below each other over one common time axis, which reaches from 0 to `duration` seconds.
cv::Mat DrawCharts(const std::string& title, const std::string& subtitle, const std::vector<Chart>& charts,
                   const std::vector<Mark>& marks, double duration);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_PLOTS_H_
