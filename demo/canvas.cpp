#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "geometry.h"

namespace controller_base_demo {
namespace {

using nav_core::math::Vec2d;

constexpr int kOversampling = 2;
constexpr int kSubpixelBits = 4;  // of the coordinates that OpenCV's drawing functions take
constexpr int kMargin = 16 * kOversampling;
constexpr int kLineHeight = 22 * kOversampling;
constexpr int kKeyWidth = 34 * kOversampling;
constexpr int kNumberRadius = 10 * kOversampling;
constexpr double kTextSize = 0.48 * kOversampling;
constexpr double kTitleSize = 0.72 * kOversampling;
constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kPaper(255, 255, 255);

int Drawn(double pixels) { return std::max(1, static_cast<int>(std::lround(pixels * kOversampling))); }

// Whole pixels for a point in sub-pixels.
cv::Point WholePixels(const cv::Point& point) { return {point.x >> kSubpixelBits, point.y >> kSubpixelBits}; }

}  // namespace

Canvas::Canvas(const Area& area, double pixels_per_metre, int panel_width, int min_height)
    : area_(area), scale_(pixels_per_metre * kOversampling), panel_row_(kMargin) {
  panel_left_ = static_cast<int>(std::ceil((area.max_x - area.min_x) * scale_));
  const int height = static_cast<int>(std::ceil((area.max_y - area.min_y) * scale_));
  image_ =
      cv::Mat(std::max(height, min_height * kOversampling), panel_left_ + panel_width * kOversampling, CV_8UC3, kPaper);
}

cv::Point Canvas::At(const Vec2d& point) const {
  constexpr double kSubpixels = 1 << kSubpixelBits;
  return {static_cast<int>(std::lround((point.x - area_.min_x) * scale_ * kSubpixels)),
          static_cast<int>(std::lround((area_.max_y - point.y) * scale_ * kSubpixels))};
}

void Canvas::FillCell(const Vec2d& center, double side, const cv::Scalar& color) {
  const cv::Point lower_left = WholePixels(At({center.x - 0.5 * side, center.y - 0.5 * side}));
  const cv::Point upper_right = WholePixels(At({center.x + 0.5 * side, center.y + 0.5 * side}));
  cv::Rect cell(lower_left.x, upper_right.y, upper_right.x - lower_left.x, lower_left.y - upper_right.y);
  cell &= cv::Rect(0, 0, panel_left_, image_.rows);
  image_(cell).setTo(color);
}

void Canvas::Line(const Points& points, const cv::Scalar& color, double width) {
  std::vector<cv::Point> pixels;
  std::transform(points.begin(), points.end(), std::back_inserter(pixels), [&](const Vec2d& p) { return At(p); });
  cv::polylines(image_, pixels, false, color, Drawn(width), cv::LINE_AA, kSubpixelBits);
}

void Canvas::Dashes(const Points& points, const cv::Scalar& color, double width) {
  const double dash = 8.0 * kOversampling / scale_;  // m
  double way = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    if (std::fmod(way, 2.0 * dash) < dash) {
      Line({points[i - 1], points[i]}, color, width);
    }
    way += Distance(points[i - 1], points[i]);
  }
}

void Canvas::Polygon(const Points& corners, const cv::Scalar& color, double width) {
  Points closed = corners;
  closed.push_back(corners.front());
  Line(closed, color, width);
}

void Canvas::FillPolygon(const Points& corners, const cv::Scalar& color) {
  std::vector<cv::Point> pixels;
  std::transform(corners.begin(), corners.end(), std::back_inserter(pixels), [&](const Vec2d& p) { return At(p); });
  cv::fillPoly(image_, std::vector<std::vector<cv::Point>>{pixels}, color, cv::LINE_AA, kSubpixelBits);
}

void Canvas::Circle(const Vec2d& center, double radius, const cv::Scalar& color, double width) {
  cv::circle(image_, At(center), static_cast<int>(std::lround(radius * scale_)) << kSubpixelBits, color, Drawn(width),
             cv::LINE_AA, kSubpixelBits);
}

void Canvas::Dot(const Vec2d& center, double pixels, const cv::Scalar& color) {
  cv::circle(image_, At(center), Drawn(pixels) << kSubpixelBits, color, cv::FILLED, cv::LINE_AA, kSubpixelBits);
}

void Canvas::Cross(const Vec2d& center, double pixels, const cv::Scalar& color, double width) {
  const double arm = pixels * kOversampling / scale_;
  Line({{center.x - arm, center.y - arm}, {center.x + arm, center.y + arm}}, color, width);
  Line({{center.x - arm, center.y + arm}, {center.x + arm, center.y - arm}}, color, width);
}

void Canvas::Number(const Vec2d& anchor, int number, const cv::Scalar& color) {
  const cv::Point from = WholePixels(At(anchor));
  const cv::Rect inside(kNumberRadius, kNumberRadius, panel_left_ - 2 * kNumberRadius, image_.rows - 2 * kNumberRadius);
  const auto is_free = [&](const cv::Point& place) {
    return inside.contains(place) && std::none_of(numbers_.begin(), numbers_.end(), [&](const cv::Point& other) {
             return Distance(place, other) < 2.2 * kNumberRadius;
           });
  };
  cv::Point place = from;
  for (int step = 0; step < 96 && (step == 0 || !is_free(place)); ++step) {  // around the anchor, farther each turn
    const double direction = 0.25 * kPi + step * kPi / 8.0;
    const double distance = (2.4 + 0.08 * step) * kNumberRadius;
    place = {from.x + static_cast<int>(std::lround(distance * std::cos(direction))),
             from.y - static_cast<int>(std::lround(distance * std::sin(direction)))};
  }
  numbers_.push_back(place);
  cv::line(image_, from, place, color, Drawn(1.2), cv::LINE_AA);
  NumberAt(place, number, color);
}

void Canvas::NumberAt(const cv::Point& center, int number, const cv::Scalar& color) {
  cv::circle(image_, center, kNumberRadius, color, cv::FILLED, cv::LINE_AA);
  const std::string text = std::to_string(number);
  const double size = 0.42 * kOversampling;
  const cv::Size extent = cv::getTextSize(text, kFont, size, kOversampling, nullptr);
  cv::putText(image_, text, {center.x - extent.width / 2, center.y + extent.height / 2}, kFont, size, kPaper,
              kOversampling, cv::LINE_AA);
}

void Canvas::ScaleBar(double metres) {
  const int length = static_cast<int>(std::lround(metres * scale_));
  const cv::Point left(kMargin, image_.rows - kMargin);
  const std::string text = (std::ostringstream() << metres << " m").str();
  const cv::Size extent = cv::getTextSize(text, kFont, kTextSize, kOversampling, nullptr);
  const int height = extent.height + 12 * kOversampling;
  cv::rectangle(image_, {left.x - 8, left.y - height - 8}, {left.x + length + 8, left.y + 12}, kPaper, cv::FILLED);
  cv::line(image_, left, {left.x + length, left.y}, kInk, Drawn(2), cv::LINE_AA);
  for (const int x : {left.x, left.x + length}) {
    cv::line(image_, {x, left.y - 5 * kOversampling}, {x, left.y + 1}, kInk, Drawn(2), cv::LINE_AA);
  }
  Write(text, {left.x + (length - extent.width) / 2, left.y - 8 * kOversampling}, kTextSize, kOversampling);
}

void Canvas::Title(const std::string& text) {
  panel_row_ += 8 * kOversampling;
  Write(text, {panel_left_ + kMargin, panel_row_ + 12 * kOversampling}, kTitleSize, 2 * kOversampling);
  panel_row_ += kLineHeight + 10 * kOversampling;
}

void Canvas::Text(const std::string& text) { WriteWrapped(text, panel_left_ + kMargin); }

void Canvas::Gap() { panel_row_ += kLineHeight / 2; }

void Canvas::Legend(Key key, const cv::Scalar& color, const std::string& text) {
  const int left = panel_left_ + kMargin;
  const int middle = panel_row_ + kLineHeight / 2;
  const int right = left + 22 * kOversampling;
  const cv::Point center((left + right) / 2, middle);
  const int arm = 5 * kOversampling;
  const cv::Rect square(center.x - 2 * arm, center.y - arm, 4 * arm, 2 * arm);
  switch (key) {
    case Key::kLine:
      cv::line(image_, {left, middle}, {right, middle}, color, Drawn(2.5), cv::LINE_AA);
      break;
    case Key::kDashes:
      for (int x = left; x < right; x += 8 * kOversampling) {
        cv::line(image_, {x, middle}, {x + 4 * kOversampling, middle}, color, Drawn(2.5), cv::LINE_AA);
      }
      break;
    case Key::kDot:
      cv::circle(image_, center, arm, color, cv::FILLED, cv::LINE_AA);
      break;
    case Key::kRing:
      cv::circle(image_, center, arm, color, Drawn(2), cv::LINE_AA);
      break;
    case Key::kSquare:
      cv::rectangle(image_, square, color, cv::FILLED);
      cv::rectangle(image_, square, cv::Scalar(120, 120, 120), 1);
      break;
    case Key::kFrame:
      cv::rectangle(image_, square, color, Drawn(1.5));
      break;
    case Key::kCross:
      cv::line(image_, {center.x - arm, middle - arm}, {center.x + arm, middle + arm}, color, Drawn(2.5), cv::LINE_AA);
      cv::line(image_, {center.x - arm, middle + arm}, {center.x + arm, middle - arm}, color, Drawn(2.5), cv::LINE_AA);
      break;
  }
  WriteWrapped(text, left + kKeyWidth);
}

void Canvas::NumberedText(int number, const cv::Scalar& color, const std::string& text) {
  NumberAt({panel_left_ + kMargin + kNumberRadius, panel_row_ + kLineHeight / 2}, number, color);
  WriteWrapped(text, panel_left_ + kMargin + kKeyWidth);
}

void Canvas::WriteWrapped(const std::string& text, int left) {
  std::istringstream words(text);
  std::string line;
  std::string word;
  const auto write_line = [&] {
    Write(line, {left, panel_row_ + kLineHeight / 2 + 5 * kOversampling}, kTextSize, kOversampling);
    panel_row_ += kLineHeight;
  };
  while (words >> word) {
    const std::string longer = line.empty() ? word : line + " " + word;
    const cv::Size extent = cv::getTextSize(longer, kFont, kTextSize, kOversampling, nullptr);
    if (!line.empty() && left + extent.width > image_.cols - kMargin / 2) {
      write_line();
      line = word;
    } else {
      line = longer;
    }
  }
  write_line();
}

void Canvas::Write(const std::string& text, const cv::Point& left_baseline, double size, int thickness) {
  cv::putText(image_, text, left_baseline, kFont, size, kInk, thickness, cv::LINE_AA);
}

cv::Mat Canvas::Finish() const {
  cv::Mat finished;
  cv::resize(image_, finished, {image_.cols / kOversampling, image_.rows / kOversampling}, 0, 0, cv::INTER_AREA);
  return finished;
}

}  // namespace controller_base_demo
