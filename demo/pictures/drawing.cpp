#include "demo/pictures/drawing.h"

#include <opencv2/imgproc.hpp>

#include "follower/geometry.h"

namespace controller_base::demo {
namespace {

constexpr char kTypeface[] = "DejaVu Sans";

}  // namespace

Drawing::Drawing()
    : record_(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr)), pen_(cairo_create(record_.get())) {
  cairo_set_line_cap(pen_.get(), CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(pen_.get(), CAIRO_LINE_JOIN_ROUND);
}

void Drawing::Line(const Points& points, const cv::Scalar& color, double width) {
  Trace(points);
  SetColor(color);
  cairo_set_line_width(pen_.get(), width);
  cairo_stroke(pen_.get());
}

void Drawing::Dashes(const Points& points, const cv::Scalar& color, double width, double dash) {
  cairo_save(pen_.get());
  cairo_set_line_cap(pen_.get(), CAIRO_LINE_CAP_BUTT);
  cairo_set_dash(pen_.get(), &dash, 1, 0.0);
  Line(points, color, width);
  cairo_restore(pen_.get());
}

void Drawing::Polygon(const Points& corners, const cv::Scalar& color, double width) {
  Trace(corners);
  cairo_close_path(pen_.get());
  SetColor(color);
  cairo_set_line_width(pen_.get(), width);
  cairo_stroke(pen_.get());
}

void Drawing::FillPolygon(const Points& corners, const cv::Scalar& color, double opacity) {
  Trace(corners);
  SetColor(color, opacity);
  cairo_fill(pen_.get());
}

void Drawing::Fill(const cv::Rect2d& area, const cv::Scalar& color, double opacity) {
  cairo_rectangle(pen_.get(), area.x, area.y, area.width, area.height);
  SetColor(color, opacity);
  cairo_fill(pen_.get());
}

void Drawing::Circle(const cv::Point2d& center, double radius, const cv::Scalar& color, double width) {
  cairo_new_path(pen_.get());
  cairo_arc(pen_.get(), center.x, center.y, radius, 0.0, 2.0 * follower::kPi);
  SetColor(color);
  cairo_set_line_width(pen_.get(), width);
  cairo_stroke(pen_.get());
}

void Drawing::Disc(const cv::Point2d& center, double radius, const cv::Scalar& color) {
  cairo_new_path(pen_.get());
  cairo_arc(pen_.get(), center.x, center.y, radius, 0.0, 2.0 * follower::kPi);
  SetColor(color);
  cairo_fill(pen_.get());
}

void Drawing::Cross(const cv::Point2d& center, double arm, const cv::Scalar& color, double width) {
  const cv::Point2d falling(arm, arm);
  const cv::Point2d rising(arm, -arm);
  Line({center - falling, center + falling}, color, width);
  Line({center - rising, center + rising}, color, width);
}

void Drawing::Number(const cv::Point2d& center, int number, const cv::Scalar& color, double radius) {
  constexpr double kFontSize = 1.15;   // of the radius
  constexpr double kHalfDigit = 0.42;  // of the radius
  Disc(center, radius, color);
  Text(std::to_string(number), center + cv::Point2d(0, kHalfDigit * radius), Align::kCenter, {kFontSize * radius, true},
       cv::Scalar(255, 255, 255));
}

void Drawing::Image(const cv::Mat& image, const cv::Rect2d& area) {
  const Surface pixels(cairo_image_surface_create(CAIRO_FORMAT_RGB24, image.cols, image.rows));
  cv::Mat target(image.rows, image.cols, CV_8UC4, cairo_image_surface_get_data(pixels.get()),
                 static_cast<std::size_t>(cairo_image_surface_get_stride(pixels.get())));
  cv::cvtColor(image, target, cv::COLOR_BGR2BGRA);
  cairo_surface_mark_dirty(pixels.get());
  cairo_save(pen_.get());
  cairo_translate(pen_.get(), area.x, area.y);
  cairo_scale(pen_.get(), area.width / image.cols, area.height / image.rows);
  cairo_set_source_surface(pen_.get(), pixels.get(), 0.0, 0.0);
  cairo_pattern_set_filter(cairo_get_source(pen_.get()),
                           area.width < image.cols ? CAIRO_FILTER_GOOD : CAIRO_FILTER_NEAREST);
  cairo_paint(pen_.get());
  cairo_restore(pen_.get());
}

void Drawing::Text(const std::string& text, const cv::Point2d& anchor, Align align, const Font& font,
                   const cv::Scalar& color) {
  const double share = align == Align::kLeft ? 0.0 : align == Align::kCenter ? 0.5 : 1.0;
  const double left = anchor.x - share * TextWidth(text, font);
  SetColor(color);
  cairo_move_to(pen_.get(), left, anchor.y);
  cairo_show_text(pen_.get(), text.c_str());
  cairo_new_path(pen_.get());
}

double Drawing::TextWidth(const std::string& text, const Font& font) const {
  SetFont(font);
  cairo_text_extents_t extents;
  cairo_text_extents(pen_.get(), text.c_str(), &extents);
  return extents.x_advance;
}

cv::Mat Drawing::Finish(int width, int height) const {
  const Surface paper(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
  const Context pen(cairo_create(paper.get()));
  cairo_set_source_rgb(pen.get(), 1.0, 1.0, 1.0);
  cairo_paint(pen.get());
  cairo_set_source_surface(pen.get(), record_.get(), 0.0, 0.0);
  cairo_paint(pen.get());
  cairo_surface_flush(paper.get());
  const cv::Mat pixels(height, width, CV_8UC4, cairo_image_surface_get_data(paper.get()),
                       static_cast<std::size_t>(cairo_image_surface_get_stride(paper.get())));
  cv::Mat finished;
  cv::cvtColor(pixels, finished, cv::COLOR_BGRA2BGR);
  return finished;
}

void Drawing::SetColor(const cv::Scalar& color, double opacity) {
  cairo_set_source_rgba(pen_.get(), color[2] / 255.0, color[1] / 255.0, color[0] / 255.0, opacity);
}

void Drawing::SetFont(const Font& font) const {
  cairo_select_font_face(pen_.get(), kTypeface, CAIRO_FONT_SLANT_NORMAL,
                         font.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(pen_.get(), font.size);
}

void Drawing::Trace(const Points& points) {
  cairo_new_path(pen_.get());
  for (const cv::Point2d& point : points) {
    cairo_line_to(pen_.get(), point.x, point.y);
  }
}

}  // namespace controller_base::demo
