#include "demo/pictures/canvas.h"

#include <algorithm>
#include <cmath>

#include "demo/pictures/clip.h"
#include "demo/pictures/ticks.h"
#include "follower/format.h"
#include "follower/geometry.h"

namespace controller_base::demo {
namespace {

using nav_core::math::Vec2d;
using Align = Drawing::Align;
using Font = Drawing::Font;

// Pixels.
constexpr double kClipMargin = 50;  // beyond the edges, so that no end of a clipped line shows
constexpr double kLeastRadius = 4;
constexpr double kNumberRadius = 10;
constexpr double kTopMargin = 30;
constexpr double kBottomMargin = 48;
constexpr double kSideMargin = 10;
constexpr double kTickLength = 5;
constexpr double kLabelGap = 4;
constexpr double kLeastTickSpacing = 40;  // in a stripe, less along its short side
constexpr int kFewestTicksY = 4;
constexpr double kHalfDigit = 4.5;  // of height
constexpr Font kTextFont{12.5};
constexpr double kGridOpacity = 0.13;
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kPaper(255, 255, 255);
const cv::Scalar kFrameColor(120, 120, 120);

// The step between ticks, whose texts are told apart by it.
double StepOf(const std::vector<double>& ticks) { return ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0; }

}  // namespace

Canvas::Canvas(const Area& area, double pixels_per_metre)
    : area_(area),
      scale_(pixels_per_metre),
      world_size_(std::max(1, static_cast<int>(std::ceil(area.Width() * scale_))),
                  std::max(1, static_cast<int>(std::ceil(area.Height() * scale_)))) {}

cv::Point2d Canvas::At(const Vec2d& point) const {
  return {(point.x - area_.min_x) * scale_, (area_.max_y - point.y) * scale_};
}

Drawing::Points Canvas::At(const Points& points) const {
  Drawing::Points pixels;
  std::transform(points.begin(), points.end(), std::back_inserter(pixels), [&](const Vec2d& p) { return At(p); });
  return pixels;
}

cv::Rect2d Canvas::Frame() const {
  return {-kClipMargin, -kClipMargin, world_size_.width + 2 * kClipMargin, world_size_.height + 2 * kClipMargin};
}

bool Canvas::Shows(const cv::Point2d& point) const { return Frame().contains(point); }

void Canvas::Cells(const cv::Mat& colors, const Area& area) {
  world_.Image(colors, {At({area.min_x, area.max_y}), At({area.max_x, area.min_y})});
}

void Canvas::Grid() {
  for (const Tick& tick : TicksX()) {
    world_.Fill({tick.pixel - 0.5, 0, 1, 1.0 * world_size_.height}, kInk, kGridOpacity);
  }
  for (const Tick& tick : TicksY()) {
    world_.Fill({0, tick.pixel - 0.5, 1.0 * world_size_.width, 1}, kInk, kGridOpacity);
  }
}

void Canvas::Line(const Points& points, const cv::Scalar& color, double width) {
  for (const Drawing::Points& part : ClipLine(At(points), Frame())) {
    world_.Line(part, color, width);
  }
}

void Canvas::Dashes(const Points& points, const cv::Scalar& color, double width) {
  constexpr double kDash = 7;
  for (const Drawing::Points& part : ClipLine(At(points), Frame())) {
    world_.Dashes(part, color, width, kDash);
  }
}

void Canvas::Polygon(const Points& corners, const cv::Scalar& color, double width) {
  world_.Polygon(ClipPolygon(At(corners), Frame()), color, width);
}

void Canvas::FillPolygon(const Points& corners, const cv::Scalar& color) {
  world_.FillPolygon(ClipPolygon(At(corners), Frame()), color);
}

void Canvas::Circle(const Vec2d& center, double radius, const cv::Scalar& color, double width) {
  if (Shows(At(center))) {
    world_.Circle(At(center), std::max(radius * scale_, kLeastRadius), color, width);
  }
}

void Canvas::Dot(const Vec2d& center, double pixels, const cv::Scalar& color) {
  if (Shows(At(center))) {
    world_.Disc(At(center), pixels, color);
  }
}

void Canvas::Cross(const Vec2d& center, double pixels, const cv::Scalar& color, double width) {
  if (Shows(At(center))) {
    world_.Cross(At(center), pixels, color, width);
  }
}

void Canvas::Number(const Vec2d& anchor, int number, const cv::Scalar& color) {
  const cv::Point2d at = At(anchor);
  const cv::Point2d from(std::clamp(at.x, 0.0, 1.0 * world_size_.width),
                         std::clamp(at.y, 0.0, 1.0 * world_size_.height));
  const cv::Point2d place = PlaceForNumber(from);
  numbers_.push_back(place);
  world_.Line({from, place}, color, 1.2);
  world_.Number(place, number, color, kNumberRadius);
}

bool Canvas::IsFreeForNumber(const cv::Point2d& place) const {
  const cv::Rect2d inside(kNumberRadius, kNumberRadius, world_size_.width - 2 * kNumberRadius,
                          world_size_.height - 2 * kNumberRadius);
  return inside.contains(place) && std::none_of(numbers_.begin(), numbers_.end(), [&](const cv::Point2d& other) {
           return follower::Distance(place, other) < 2.2 * kNumberRadius;
         });
}

// Around the anchor, farther away with each turn.
cv::Point2d Canvas::PlaceForNumber(const cv::Point2d& anchor) const {
  constexpr int kSteps = 192;
  constexpr int kStepsPerTurn = 16;
  constexpr double kFirstDirection = 0.25 * follower::kPi;
  cv::Point2d place;
  for (int step = 0; step < kSteps; ++step) {
    const double direction = kFirstDirection + step * 2.0 * follower::kPi / kStepsPerTurn;
    const double distance = (2.4 + 0.08 * step) * kNumberRadius;
    place = anchor + cv::Point2d(distance * std::cos(direction), -distance * std::sin(direction));
    if (IsFreeForNumber(place)) {
      break;
    }
  }
  return place;
}

void Canvas::ScaleBar() {
  constexpr double kMargin = 18;
  constexpr double kLongest = 150;
  const double metres = RoundBelow(std::min(kLongest, 0.5 * world_size_.width) / scale_);
  const double length = metres * scale_;
  const cv::Point2d left(kMargin, world_size_.height - kMargin);
  const cv::Point2d right = left + cv::Point2d(length, 0);
  const cv::Point2d tick(0, -kTickLength);
  world_.Fill({left.x - 8, left.y - 28, length + 16, 36}, kPaper, 0.85);
  world_.Line({left + tick, left, right, right + tick}, kInk, 2);
  world_.Text(TickText(metres, metres) + " m", left + cv::Point2d(0.5 * length, -9), Align::kCenter, kTextFont, kInk);
}

// The widest text that stands along the edges.
double Canvas::LabelWidth() const {
  double width = 0.0;
  for (const double value : {area_.min_x, area_.max_x, area_.min_y, area_.max_y}) {
    width = std::max(width, world_.TextWidth(follower::Format("%.1f", value), kTextFont));
  }
  return width;
}

std::vector<Canvas::Tick> Canvas::TicksX() const {
  const double spacing = std::max(kLeastTickSpacing, 1.5 * LabelWidth());
  const std::vector<double> values =
      RoundTicks(area_.min_x, area_.max_x, std::max(1, static_cast<int>(world_size_.width / spacing)));
  std::vector<Tick> ticks;
  for (const double x : values) {
    ticks.push_back({(x - area_.min_x) * scale_, TickText(x, StepOf(values))});
  }
  return ticks;
}

std::vector<Canvas::Tick> Canvas::TicksY() const {
  const int most = std::max(kFewestTicksY, static_cast<int>(world_size_.height / kLeastTickSpacing));
  const std::vector<double> values = RoundTicks(area_.min_y, area_.max_y, most);
  std::vector<Tick> ticks;
  for (const double y : values) {
    ticks.push_back({(area_.max_y - y) * scale_, TickText(y, StepOf(values))});
  }
  return ticks;
}

void Canvas::DrawAxes(double left, double top, Drawing* drawing) const {
  const cv::Rect2d frame(left, top, world_size_.width, world_size_.height);
  const double bottom = frame.br().y;
  for (const Tick& tick : TicksX()) {
    const double x = left + tick.pixel;
    drawing->Line({{x, bottom}, {x, bottom + kTickLength}}, kInk, 1);
    drawing->Text(tick.text, {x, bottom + kTickLength + 14}, Align::kCenter, kTextFont, kInk);
  }
  for (const Tick& tick : TicksY()) {
    const double y = top + tick.pixel;
    drawing->Line({{left - kTickLength, y}, {left, y}}, kInk, 1);
    drawing->Text(tick.text, {left - kTickLength - kLabelGap, y + kHalfDigit}, Align::kRight, kTextFont, kInk);
  }
  drawing->Text("x, m", {left + 0.5 * frame.width, bottom + 38}, Align::kCenter, kTextFont, kInk);
  drawing->Text("y, m", {left, top - 12}, Align::kCenter, kTextFont, kInk);
  drawing->Polygon({frame.tl(), {frame.br().x, top}, frame.br(), {left, bottom}}, kFrameColor, 1);
}

cv::Mat Canvas::Finish() const {
  const double left = std::ceil(kSideMargin + LabelWidth() + kLabelGap + kTickLength);
  const double right = std::ceil(kSideMargin + 0.5 * LabelWidth());
  Drawing axes;
  DrawAxes(left, kTopMargin, &axes);
  cv::Mat finished = axes.Finish(static_cast<int>(left + right) + world_size_.width,
                                 static_cast<int>(kTopMargin + kBottomMargin) + world_size_.height);
  const cv::Rect inner(cv::Point(static_cast<int>(left), static_cast<int>(kTopMargin)), world_size_);
  world_.Finish(world_size_.width, world_size_.height).copyTo(finished(inner));
  return finished;
}

}  // namespace controller_base::demo
