#ifndef CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "demo/pictures/drawing.h"
#include "nav_core/math/vec2d.h"

namespace controller_base_demo {

// A drawing of a piece of the world, with a panel of text to its right. World coordinates are metres, everything about
// the panel and all widths are pixels. The picture grows with its panel.
class Canvas {
 public:
  struct Area {
    double min_x, min_y, max_x, max_y;  // m
  };
  using Points = std::vector<nav_core::math::Vec2d>;

  Canvas(const Area& area, double pixels_per_metre, int panel_width);

  // One colour (CV_8UC3) a cell, the first row on top, stretched over `area`.
  void Cells(const cv::Mat& colors, const Area& area);
  void Line(const Points& points, const cv::Scalar& color, double width);
  void Dashes(const Points& points, const cv::Scalar& color, double width);
  void Polygon(const Points& corners, const cv::Scalar& color, double width);
  void FillPolygon(const Points& corners, const cv::Scalar& color);
  void Circle(const nav_core::math::Vec2d& center, double radius, const cv::Scalar& color, double width);
  void FillCircle(const nav_core::math::Vec2d& center, double radius, const cv::Scalar& color);
  void Dot(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color);
  void Cross(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color, double width);
  // A numbered disc beside `anchor`, joined to it by a line; moved until it covers no other number.
  void Number(const nav_core::math::Vec2d& anchor, int number, const cv::Scalar& color);
  // `metres` long, in the lower left corner of the world.
  void ScaleBar(double metres);

  // The panel, from top to bottom.
  void Title(const std::string& text);
  void Heading(const std::string& text);
  void Text(const std::string& text);
  void Gap();
  enum class Key { kLine, kDashes, kDot, kSquare, kFrame, kCross, kRing };
  void Legend(Key key, const cv::Scalar& color, const std::string& text);
  void NumberedText(int number, const cv::Scalar& color, const std::string& text);

  // The finished picture (CV_8UC3).
  cv::Mat Finish() const;

 private:
  cv::Point2d At(const nav_core::math::Vec2d& point) const;
  Drawing::Points At(const Points& points) const;
  static void NumberAt(const cv::Point2d& center, int number, const cv::Scalar& color, Drawing* drawing);
  void WriteWrapped(const std::string& text, double left, const Drawing::Font& font);

  Area area_;
  double scale_;         // pixels per metre
  cv::Size world_size_;  // pixels
  int panel_width_;      // pixels
  double panel_row_;     // pixels; where the panel's next line begins
  Drawing world_;
  Drawing panel_;
  std::vector<cv::Point2d> numbers_;  // drawn already
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_
