#ifndef CONTROLLER_BASE_DEMO_PICTURES_DRAWING_H_
#define CONTROLLER_BASE_DEMO_PICTURES_DRAWING_H_

#include <cairo/cairo.h>

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace controller_base::demo {

// Lines, shapes and letters on white paper that grows with what is drawn on it, drawn by Cairo. Coordinates and widths
// are pixels, x to the right and y down from the upper left corner; colours are blue, green, red of 0..255.
class Drawing {
 public:
  using Points = std::vector<cv::Point2d>;
  enum class Align { kLeft, kCenter, kRight };
  struct Font {
    double size;  // pixels
    bool bold = false;
  };

  Drawing();

  void Line(const Points& points, const cv::Scalar& color, double width);
  // `dash` pixels on, as many off.
  void Dashes(const Points& points, const cv::Scalar& color, double width, double dash);
  void Polygon(const Points& corners, const cv::Scalar& color, double width);
  // `opacity` from 0 to 1.
  void FillPolygon(const Points& corners, const cv::Scalar& color, double opacity = 1.0);
  void Fill(const cv::Rect2d& area, const cv::Scalar& color, double opacity = 1.0);
  void Circle(const cv::Point2d& center, double radius, const cv::Scalar& color, double width);
  void Disc(const cv::Point2d& center, double radius, const cv::Scalar& color);
  // Two diagonal strokes; `arm` pixels from the middle to the end of each, along both axes.
  void Cross(const cv::Point2d& center, double arm, const cv::Scalar& color, double width);
  // A white number on a disc.
  void Number(const cv::Point2d& center, int number, const cv::Scalar& color, double radius);
  // Stretched over `area`, every pixel of the image (CV_8UC3) a sharp rectangle where it is
  // enlarged. At most 32767 pixels a side.
  void Image(const cv::Mat& image, const cv::Rect2d& area);

  // One line of text; `anchor` is on its baseline.
  void Text(const std::string& text, const cv::Point2d& anchor, Align align, const Font& font, const cv::Scalar& color);
  // Pixels from the text's beginning to where a next one would begin.
  double TextWidth(const std::string& text, const Font& font) const;

  // The upper left part of the drawing (CV_8UC3).
  cv::Mat Finish(int width, int height) const;

 private:
  struct Destroy {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
  };
  using Surface = std::unique_ptr<cairo_surface_t, Destroy>;
  using Context = std::unique_ptr<cairo_t, Destroy>;

  void SetColor(const cv::Scalar& color, double opacity = 1.0);
  void SetFont(const Font& font) const;
  void Trace(const Points& points);

  Surface record_;  // of all that was drawn
  Context pen_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_DRAWING_H_
