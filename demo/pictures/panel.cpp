#include "demo/pictures/panel.h"

#include <cmath>
#include <sstream>

namespace controller_base::demo {
namespace {

using Align = Drawing::Align;
using Font = Drawing::Font;

// Pixels.
constexpr double kMargin = 18;
constexpr double kLineHeight = 20;
constexpr double kBaseline = 15;  // below a line's top
constexpr double kKeyWidth = 34;
constexpr double kArm = 5;  // from the middle of a legend's key to its end
constexpr double kHalfKeyLine = 11;
constexpr Font kTextFont{13.5};
constexpr Font kHeadingFont{14.5, true};
constexpr Font kTitleFont{21, true};
constexpr double kTitleGap = 14;
constexpr double kKeyLineWidth = 2.5;
const cv::Scalar kInk(40, 40, 40);
const cv::Scalar kSquareEdge(120, 120, 120);

}  // namespace

Panel::Panel(int width) : width_(width), row_(kMargin) {}

void Panel::Title(const std::string& text) {
  row_ += kTitleFont.size;
  drawing_.Text(text, {kMargin, row_}, Align::kLeft, kTitleFont, kInk);
  row_ += kTitleGap;
}

void Panel::Heading(const std::string& text) { WriteWrapped(text, kMargin, kHeadingFont); }

void Panel::Text(const std::string& text) { WriteWrapped(text, kMargin, kTextFont); }

void Panel::Gap() { row_ += kLineHeight / 2; }

void Panel::Legend(Key key, const cv::Scalar& color, const std::string& text) {
  DrawKey(key, color, {kMargin + kHalfKeyLine, row_ + kLineHeight / 2});
  WriteWrapped(text, kMargin + kKeyWidth, kTextFont);
}

void Panel::DrawKey(Key key, const cv::Scalar& color, const cv::Point2d& center) {
  const Drawing::Points line{center - cv::Point2d(kHalfKeyLine, 0), center + cv::Point2d(kHalfKeyLine, 0)};
  switch (key) {
    case Key::kLine:
      return drawing_.Line(line, color, kKeyLineWidth);
    case Key::kDashes:
      return drawing_.Dashes(line, color, kKeyLineWidth, kArm);
    case Key::kDot:
      return drawing_.Disc(center, kArm, color);
    case Key::kRing:
      return drawing_.Circle(center, kArm, color, 2);
    case Key::kCross:
      return drawing_.Cross(center, kArm, color, kKeyLineWidth);
    case Key::kSquare:
    case Key::kFrame:
      return DrawSquare(key, color, center);
  }
}

void Panel::DrawSquare(Key key, const cv::Scalar& color, const cv::Point2d& center) {
  const double left = center.x - 2 * kArm;
  const double right = center.x + 2 * kArm;
  const double top = center.y - kArm;
  const double bottom = center.y + kArm;
  const Drawing::Points corners{{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  if (key == Key::kFrame) {
    drawing_.Polygon(corners, color, 1.5);
  } else {
    drawing_.FillPolygon(corners, color);
    drawing_.Polygon(corners, kSquareEdge, 0.7);
  }
}

void Panel::NumberedText(int number, const cv::Scalar& color, const std::string& text) {
  constexpr double kRadius = 10;
  drawing_.Number({kMargin + kRadius, row_ + kLineHeight / 2}, number, color, kRadius);
  WriteWrapped(text, kMargin + kKeyWidth, kTextFont);
}

void Panel::WriteLine(const std::string& line, double left, const Font& font) {
  drawing_.Text(line, {left, row_ + kBaseline}, Align::kLeft, font, kInk);
  row_ += kLineHeight;
}

void Panel::WriteWrapped(const std::string& text, double left, const Font& font) {
  std::istringstream words(text);
  std::string line;
  std::string word;
  while (words >> word) {
    const std::string longer = line.empty() ? word : line + " " + word;
    if (!line.empty() && left + drawing_.TextWidth(longer, font) > width_ - kMargin / 2) {
      WriteLine(line, left, font);
      line = word;
    } else {
      line = longer;
    }
  }
  WriteLine(line, left, font);
}

int Panel::Height() const { return static_cast<int>(std::ceil(row_ + kMargin)); }

}  // namespace controller_base::demo
