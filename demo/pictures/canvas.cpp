#include "demo/pictures/canvas.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "follower/geometry.h"

namespace controller_base_demo {
namespace {

using nav_core::math::Vec2d;
using Align = Drawing::Align;
using Font = Drawing::Font;

constexpr double kMargin = 18;
constexpr double kLineHeight = 20;
constexpr double kKeyWidth = 34;
constexpr double kNumberRadius = 10;
constexpr Font kTextFont{13.5};
constexpr Font kHeadingFont{14.5, true};
constexpr Font kTitleFont{21, true};
constexpr Font kNumberFont{11.5, true};
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kPaper(255, 255, 255);

}  // namespace

Canvas::Canvas(const Area& area, double pixels_per_metre, int panel_width)
    : area_(area),
      scale_(pixels_per_metre),
      world_size_(static_cast<int>(std::ceil((area.max_x - area.min_x) * scale_)),
                  static_cast<int>(std::ceil((area.max_y - area.min_y) * scale_))),
      panel_width_(panel_width),
      panel_row_(kMargin) {}

cv::Point2d Canvas::At(const Vec2d& point) const {
  return {(point.x - area_.min_x) * scale_, (area_.max_y - point.y) * scale_};
}

Drawing::Points Canvas::At(const Points& points) const {
  Drawing::Points pixels;
  std::transform(points.begin(), points.end(), std::back_inserter(pixels), [&](const Vec2d& p) { return At(p); });
  return pixels;
}

void Canvas::Cells(const cv::Mat& colors, const Area& area) {
  world_.Image(colors, {At({area.min_x, area.max_y}), At({area.max_x, area.min_y})});
}

void Canvas::Line(const Points& points, const cv::Scalar& color, double width) {
  world_.Line(At(points), color, width);
}

void Canvas::Dashes(const Points& points, const cv::Scalar& color, double width) {
  constexpr double kDash = 7;
  world_.Dashes(At(points), color, width, kDash);
}

void Canvas::Polygon(const Points& corners, const cv::Scalar& color, double width) {
  world_.Polygon(At(corners), color, width);
}

void Canvas::FillPolygon(const Points& corners, const cv::Scalar& color) { world_.FillPolygon(At(corners), color); }

void Canvas::Circle(const Vec2d& center, double radius, const cv::Scalar& color, double width) {
  world_.Circle(At(center), radius * scale_, color, width);
}

void Canvas::FillCircle(const Vec2d& center, double radius, const cv::Scalar& color) {
  world_.Disc(At(center), radius * scale_, color);
}

void Canvas::Dot(const Vec2d& center, double pixels, const cv::Scalar& color) {
  world_.Disc(At(center), pixels, color);
}

void Canvas::Cross(const Vec2d& center, double pixels, const cv::Scalar& color, double width) {
  const cv::Point2d middle = At(center);
  const cv::Point2d falling(pixels, pixels);
  const cv::Point2d rising(pixels, -pixels);
  world_.Line({middle - falling, middle + falling}, color, width);
  world_.Line({middle - rising, middle + rising}, color, width);
}

void Canvas::Number(const Vec2d& anchor, int number, const cv::Scalar& color) {
  const cv::Point2d from = At(anchor);
  const cv::Rect2d inside(kNumberRadius, kNumberRadius, world_size_.width - 2 * kNumberRadius,
                          world_size_.height - 2 * kNumberRadius);
  const auto is_free = [&](const cv::Point2d& place) {
    return inside.contains(place) && std::none_of(numbers_.begin(), numbers_.end(), [&](const cv::Point2d& other) {
             return Distance(place, other) < 2.2 * kNumberRadius;
           });
  };
  cv::Point2d place = from;
  for (int step = 0; step < 192 && (step == 0 || !is_free(place)); ++step) {  // around the anchor, farther each turn
    const double direction = 0.25 * kPi + step * kPi / 8.0;
    const double distance = (2.4 + 0.08 * step) * kNumberRadius;
    place = from + cv::Point2d(distance * std::cos(direction), -distance * std::sin(direction));
  }
  numbers_.push_back(place);
  world_.Line({from, place}, color, 1.2);
  NumberAt(place, number, color, &world_);
}

void Canvas::NumberAt(const cv::Point2d& center, int number, const cv::Scalar& color, Drawing* drawing) {
  constexpr double kHalfDigit = 4.2;
  drawing->Disc(center, kNumberRadius, color);
  drawing->Text(std::to_string(number), center + cv::Point2d(0, kHalfDigit), Align::kCenter, kNumberFont, kPaper);
}

void Canvas::ScaleBar(double metres) {
  constexpr double kTick = 5;
  const double length = metres * scale_;
  const cv::Point2d left(kMargin, world_size_.height - kMargin);
  const cv::Point2d right = left + cv::Point2d(length, 0);
  const cv::Point2d tick(0, -kTick);
  world_.Fill({left.x - 8, left.y - 28, length + 16, 36}, kPaper, 0.85);
  world_.Line({left + tick, left, right, right + tick}, kInk, 2);
  const std::string text = (std::ostringstream() << metres << " m").str();
  world_.Text(text, left + cv::Point2d(0.5 * length, -9), Align::kCenter, kTextFont, kInk);
}

void Canvas::Title(const std::string& text) {
  panel_row_ += kTitleFont.size;
  panel_.Text(text, {kMargin, panel_row_}, Align::kLeft, kTitleFont, kInk);
  panel_row_ += 14;
}

void Canvas::Heading(const std::string& text) { WriteWrapped(text, kMargin, kHeadingFont); }

void Canvas::Text(const std::string& text) { WriteWrapped(text, kMargin, kTextFont); }

void Canvas::Gap() { panel_row_ += kLineHeight / 2; }

void Canvas::Legend(Key key, const cv::Scalar& color, const std::string& text) {
  constexpr double kArm = 5;
  const cv::Point2d left(kMargin, panel_row_ + kLineHeight / 2);
  const cv::Point2d right = left + cv::Point2d(22, 0);
  const cv::Point2d center = 0.5 * (left + right);
  const cv::Rect2d square(center.x - 2 * kArm, center.y - kArm, 4 * kArm, 2 * kArm);
  const Drawing::Points corners{
      square.tl(), {square.x + square.width, square.y}, square.br(), {square.x, square.br().y}};
  switch (key) {
    case Key::kLine:
      panel_.Line({left, right}, color, 2.5);
      break;
    case Key::kDashes:
      panel_.Dashes({left, right}, color, 2.5, 5);
      break;
    case Key::kDot:
      panel_.Disc(center, kArm, color);
      break;
    case Key::kRing:
      panel_.Circle(center, kArm, color, 2);
      break;
    case Key::kSquare:
      panel_.FillPolygon(corners, color);
      panel_.Polygon(corners, cv::Scalar(120, 120, 120), 0.7);
      break;
    case Key::kFrame:
      panel_.Polygon(corners, color, 1.5);
      break;
    case Key::kCross:
      panel_.Line({center + cv::Point2d(-kArm, -kArm), center + cv::Point2d(kArm, kArm)}, color, 2.5);
      panel_.Line({center + cv::Point2d(-kArm, kArm), center + cv::Point2d(kArm, -kArm)}, color, 2.5);
      break;
  }
  WriteWrapped(text, kMargin + kKeyWidth, kTextFont);
}

void Canvas::NumberedText(int number, const cv::Scalar& color, const std::string& text) {
  NumberAt({kMargin + kNumberRadius, panel_row_ + kLineHeight / 2}, number, color, &panel_);
  WriteWrapped(text, kMargin + kKeyWidth, kTextFont);
}

void Canvas::WriteWrapped(const std::string& text, double left, const Font& font) {
  constexpr double kBaseline = 15;
  std::istringstream words(text);
  std::string line;
  std::string word;
  const auto write_line = [&] {
    panel_.Text(line, {left, panel_row_ + kBaseline}, Align::kLeft, font, kInk);
    panel_row_ += kLineHeight;
  };
  while (words >> word) {
    const std::string longer = line.empty() ? word : line + " " + word;
    if (!line.empty() && left + panel_.TextWidth(longer, font) > panel_width_ - kMargin / 2) {
      write_line();
      line = word;
    } else {
      line = longer;
    }
  }
  write_line();
}

cv::Mat Canvas::Finish() const {
  const int height = std::max(world_size_.height, static_cast<int>(std::ceil(panel_row_ + kMargin)));
  cv::Mat finished(height, world_size_.width + panel_width_, CV_8UC3, kPaper);
  world_.Finish(world_size_.width, world_size_.height).copyTo(finished(cv::Rect(cv::Point(), world_size_)));
  panel_.Finish(panel_width_, height).copyTo(finished.colRange(world_size_.width, finished.cols));
  return finished;
}

}  // namespace controller_base_demo
