#ifndef CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "demo/pictures/drawing.h"
#include "nav_core/math/vec2d.h"

namespace controller_base::demo {

// A rectangle of the world, metres.
struct Area {
  double min_x, min_y, max_x, max_y;

  double Width() const { return max_x - min_x; }
  double Height() const { return max_y - min_y; }
};

// A drawing of a piece of the world, with coordinates along its edges. World coordinates are metres, widths are pixels.
// What lies off the area, however far, is not drawn.
class Canvas {
 public:
  using Points = std::vector<nav_core::math::Vec2d>;

  Canvas(const Area& area, double pixels_per_metre);

  // One colour (CV_8UC3) a cell, the first row on top, stretched over `area`. At most 32767 cells a side.
  void Cells(const cv::Mat& colors, const Area& area);
  // Thin lines at the coordinates that stand along the edges.
  void Grid();
  void Line(const Points& points, const cv::Scalar& color, double width);
  void Dashes(const Points& points, const cv::Scalar& color, double width);
  // Polygons are convex.
  void Polygon(const Points& corners, const cv::Scalar& color, double width);
  void FillPolygon(const Points& corners, const cv::Scalar& color);
  // `radius` in metres, but never so small that it cannot be seen.
  void Circle(const nav_core::math::Vec2d& center, double radius, const cv::Scalar& color, double width);
  void Dot(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color);
  void Cross(const nav_core::math::Vec2d& center, double pixels, const cv::Scalar& color, double width);
  // A numbered disc beside `anchor`, joined to it by a line; moved until it covers no other number. Where the anchor is
  // off the area, it stands at the edge.
  void Number(const nav_core::math::Vec2d& anchor, int number, const cv::Scalar& color);
  // In the lower left corner, a round number of metres long.
  void ScaleBar();

  // The finished picture (CV_8UC3).
  cv::Mat Finish() const;

 private:
  struct Tick {
    double pixel;  // along the axis, from the left or from the top
    std::string text;
  };

  cv::Point2d At(const nav_core::math::Vec2d& point) const;
  Drawing::Points At(const Points& points) const;
  cv::Rect2d Frame() const;
  bool Shows(const cv::Point2d& point) const;
  bool IsFreeForNumber(const cv::Point2d& place) const;
  cv::Point2d PlaceForNumber(const cv::Point2d& anchor) const;
  double LabelWidth() const;
  std::vector<Tick> TicksX() const;
  std::vector<Tick> TicksY() const;
  void DrawAxes(double left, double top, Drawing* drawing) const;

  Area area_;
  double scale_;         // pixels per metre
  cv::Size world_size_;  // pixels
  Drawing world_;
  std::vector<cv::Point2d> numbers_;  // drawn already
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_CANVAS_H_
