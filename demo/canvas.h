#ifndef CONTROLLER_BASE_DEMO_CANVAS_H_
#define CONTROLLER_BASE_DEMO_CANVAS_H_

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "nav_core/math/vec2d.h"

namespace controller_base_demo {

// A drawing of a piece of the world, with a panel of text to its right. World coordinates are metres, everything about
// the panel and all widths are pixels of the finished picture. Drawn at twice its size and shrunk, so that slanted
// lines and letters come out smooth.
class Canvas {
 public:
  struct Area {
    double min_x, min_y, max_x, max_y;  // m
  };
  using Points = std::vector<nav_core::math::Vec2d>;

  Canvas(const Area& area, double pixels_per_metre, int panel_width, int min_height);

  void FillCell(const nav_core::math::Vec2d& center, double side, const cv::Scalar& color);
  void Line(const Points& points, const cv::Scalar& color, double width);
  void Dashes(const Points& points, const cv::Scalar& color, double width);
  void Polygon(const Points& corners, const cv::Scalar& color, double width);
  void FillPolygon(const Points& corners, const cv::Scalar& color);
  void Circle(const nav_core::math::Vec2d& center, double radius, const cv::Scalar& color, double width);
  void Dot(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color);
  void Cross(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color, double width);
  // A numbered disc beside `anchor`, joined to it by a line; moved until it covers no other number.
  void Number(const nav_core::math::Vec2d& anchor, int number, const cv::Scalar& color);
  // `metres` long, in the lower left corner.
  void ScaleBar(double metres);

  // The panel, from top to bottom.
  void Title(const std::string& text);
  void Text(const std::string& text);
  void Gap();
  enum class Key { kLine, kDashes, kDot, kSquare, kFrame, kCross, kRing };
  void Legend(Key key, const cv::Scalar& color, const std::string& text);
  void NumberedText(int number, const cv::Scalar& color, const std::string& text);

  // The finished picture (CV_8UC3).
  cv::Mat Finish() const;

 private:
  cv::Point At(const nav_core::math::Vec2d& point) const;
  void NumberAt(const cv::Point& center, int number, const cv::Scalar& color);
  void WriteWrapped(const std::string& text, int left);
  void Write(const std::string& text, const cv::Point& left_baseline, double size, int thickness);

  Area area_;
  double scale_;    // drawn pixels per metre
  int panel_left_;  // drawn pixels
  int panel_row_;   // drawn pixels; where the panel's next line begins
  cv::Mat image_;
  std::vector<cv::Point> numbers_;  // drawn already
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_CANVAS_H_
