#ifndef CONTROLLER_BASE_DEMO_PICTURES_PANEL_H_
#define CONTROLLER_BASE_DEMO_PICTURES_PANEL_H_

#include <opencv2/core.hpp>
#include <string>

#include "demo/pictures/drawing.h"

namespace controller_base::demo {

// A column of text that explains a picture, written from top to bottom. Long texts are wrapped.
class Panel {
 public:
  explicit Panel(int width);  // pixels

  void Title(const std::string& text);
  void Heading(const std::string& text);
  void Text(const std::string& text);
  void Gap();
  enum class Key { kLine, kDashes, kDot, kSquare, kFrame, kCross, kRing };
  void Legend(Key key, const cv::Scalar& color, const std::string& text);
  void NumberedText(int number, const cv::Scalar& color, const std::string& text);

  // Pixels that the text takes so far.
  int Height() const;
  // CV_8UC3, `height` pixels high.
  cv::Mat Finish(int height) const { return drawing_.Finish(width_, height); }

 private:
  void DrawKey(Key key, const cv::Scalar& color, const cv::Point2d& center);
  void DrawSquare(Key key, const cv::Scalar& color, const cv::Point2d& center);
  void WriteLine(const std::string& line, double left, const Drawing::Font& font);
  void WriteWrapped(const std::string& text, double left, const Drawing::Font& font);

  int width_;   // pixels
  double row_;  // pixels; where the next line begins
  Drawing drawing_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_PANEL_H_
