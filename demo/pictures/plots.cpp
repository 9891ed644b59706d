#include "demo/pictures/plots.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "demo/pictures/drawing.h"
#include "demo/pictures/ticks.h"

namespace controller_base::demo {
namespace {

using Align = Drawing::Align;
using Font = Drawing::Font;

constexpr int kWidth = 1200;
constexpr double kLeft = 64;
constexpr double kRight = 28;
constexpr double kHead = 92;  // above the first chart
constexpr double kFoot = 52;  // below the last one
constexpr double kChartHeight = 190;
constexpr double kChartGap = 42;
constexpr double kMarkRadius = 9;
constexpr double kTitleIndent = 6;  // beside the line of a mark at 0 s
constexpr Font kTitleFont{21, true};
constexpr Font kHeadingFont{14, true};
constexpr Font kTextFont{12.5};
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kGrid(225, 225, 225);
const cv::Scalar kFrame(150, 150, 150);
const cv::Scalar kLimitColor(60, 60, 200);

struct Range {
  double low, high;
};

// What is not finite, or beyond all measure, is a gap in its line.
bool IsShown(double value) {
  constexpr double kLargest = 1e9;
  return std::abs(value) <= kLargest;
}

std::string Number(double value) { return (std::ostringstream() << value).str(); }

Range ValueRange(const Chart& chart) {
  Range range{0.0, chart.least_top};
  for (const Series& series : chart.series) {
    for (const cv::Point2d& point : series.points) {
      if (IsShown(point.y)) {
        range = {std::min(range.low, point.y), std::max(range.high, point.y)};
      }
    }
  }
  const double room = 0.06 * (range.high - range.low);
  return {range.low < 0.0 ? range.low - room : 0.0, range.high + room};
}

// One chart's place on the drawing, and where its values lie there.
class Axes {
 public:
  Axes(const cv::Rect2d& frame, double duration, const Range& values)
      : frame_(frame), duration_(duration), values_(values) {}

  double X(double time) const { return frame_.x + frame_.width * time / duration_; }
  double Y(double value) const {
    return frame_.br().y - frame_.height * (value - values_.low) / (values_.high - values_.low);
  }
  bool Shows(double value) const { return value >= values_.low && value <= values_.high; }
  const cv::Rect2d& frame() const { return frame_; }
  double duration() const { return duration_; }
  const Range& values() const { return values_; }

 private:
  cv::Rect2d frame_;
  double duration_;
  Range values_;
};

void DrawGrid(const Axes& axes, bool with_times, Drawing* drawing) {
  const cv::Rect2d& frame = axes.frame();
  for (const double value : RoundTicks(axes.values().low, axes.values().high, 5)) {
    const double y = axes.Y(value);
    drawing->Line({{frame.x, y}, {frame.br().x, y}}, kGrid, 1);
    drawing->Text(Number(value), {frame.x - 8, y + 4}, Align::kRight, kTextFont, kInk);
  }
  for (const double time : RoundTicks(0.0, axes.duration(), 12)) {
    const double x = axes.X(time);
    drawing->Line({{x, frame.y}, {x, frame.br().y}}, kGrid, 1);
    if (with_times) {
      drawing->Text(Number(time), {x, frame.br().y + 18}, Align::kCenter, kTextFont, kInk);
    }
  }
}

void DrawLimit(const Chart::Limit& limit, const Axes& axes, Drawing* drawing) {
  const cv::Rect2d& frame = axes.frame();
  const double y = axes.Y(limit.value);
  drawing->Dashes({{frame.x, y}, {frame.br().x, y}}, kLimitColor, 1.2, 6);
  drawing->Text(limit.name, {frame.br().x - 6, y - 5}, Align::kRight, kTextFont, kLimitColor);
}

void DrawSeries(const Series& series, const Axes& axes, Drawing* drawing) {
  Drawing::Points run;
  const auto end_run = [&] {
    drawing->Line(run, series.color, 1.8);
    run.clear();
  };
  for (const cv::Point2d& point : series.points) {
    if (IsShown(point.y)) {
      run.emplace_back(axes.X(point.x), axes.Y(point.y));
    } else {
      end_run();
    }
  }
  end_run();
}

// Over the chart: its title, and the names of its series from the right.
void DrawHead(const Chart& chart, const Axes& axes, Drawing* drawing) {
  const double baseline = axes.frame().y - 9;
  drawing->Text(chart.title, {axes.frame().x + kTitleIndent, baseline}, Align::kLeft, kHeadingFont, kInk);
  double right = axes.frame().br().x;
  for (auto series = chart.series.rbegin(); chart.series.size() > 1 && series != chart.series.rend(); ++series) {
    drawing->Text(series->name, {right, baseline}, Align::kRight, kTextFont, kInk);
    right -= drawing->TextWidth(series->name, kTextFont) + 8;
    drawing->Line({{right - 22, baseline - 4}, {right, baseline - 4}}, series->color, 2.5);
    right -= 22 + 18;
  }
}

void DrawChart(const Chart& chart, const Axes& axes, bool is_last, Drawing* drawing) {
  const cv::Rect2d& frame = axes.frame();
  DrawGrid(axes, is_last, drawing);
  DrawHead(chart, axes, drawing);
  if (chart.limit && axes.Shows(chart.limit->value)) {
    DrawLimit(*chart.limit, axes, drawing);
  }
  for (const Series& series : chart.series) {
    DrawSeries(series, axes, drawing);
  }
  drawing->Polygon({frame.tl(), {frame.br().x, frame.y}, frame.br(), {frame.x, frame.br().y}}, kFrame, 1);
}

// The numbers stand over the first chart, as far apart as it takes to read them.
void DrawMarks(const std::vector<Mark>& marks, const Axes& first, double bottom, Drawing* drawing) {
  double free_from = 0.0;
  for (const Mark& mark : marks) {
    const double x = first.X(mark.time);
    const cv::Point2d place(std::max(x, free_from), first.frame().y - 36);
    free_from = place.x + 2.1 * kMarkRadius;
    drawing->Line({place, {x, first.frame().y - 24}}, mark.color, 1);
    drawing->Dashes({{x, first.frame().y - 24}, {x, bottom}}, mark.color, 1, 3);
    drawing->Number(place, mark.number, mark.color, kMarkRadius);
  }
}

}  // namespace

cv::Mat DrawCharts(const std::string& title, const std::string& subtitle, const std::vector<Chart>& charts,
                   const std::vector<Mark>& marks, double duration) {
  Drawing drawing;
  drawing.Text(title, {kLeft, 32}, Align::kLeft, kTitleFont, kInk);
  drawing.Text(subtitle, {kWidth - kRight, 31}, Align::kRight, kTextFont, kInk);
  std::vector<Axes> axes;
  double top = kHead;
  for (const Chart& chart : charts) {
    const cv::Rect2d frame(kLeft, top, kWidth - kLeft - kRight, kChartHeight);
    axes.emplace_back(frame, std::max(duration, 1e-3), ValueRange(chart));
    top += kChartHeight + kChartGap;
  }
  for (std::size_t i = 0; i < charts.size(); ++i) {
    DrawChart(charts[i], axes[i], i + 1 == charts.size(), &drawing);
  }
  const cv::Rect2d& last = axes.back().frame();
  DrawMarks(marks, axes.front(), last.br().y, &drawing);
  drawing.Text("time, s", {last.x + 0.5 * last.width, last.br().y + 38}, Align::kCenter, kTextFont, kInk);
  return drawing.Finish(kWidth, static_cast<int>(last.br().y + kFoot));
}

}  // namespace controller_base::demo
