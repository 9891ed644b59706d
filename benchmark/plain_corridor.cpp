#include "benchmark/plain_corridor.h"

#include <opencv2/imgproc.hpp>

namespace controller_base_benchmark {

cv::Mat DrawCorridorPlainly(const cv::Size& size, const std::vector<cv::Point>& points, int width) {
  constexpr bool kClosed = false;
  const cv::Point anchor(-1, -1);
  cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
  cv::polylines(mask, points, kClosed, cv::Scalar(255), width, cv::LINE_8, 0);
  const cv::Mat disc = cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(width, width), anchor);
  cv::dilate(mask, mask, disc, anchor, 1, cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
  return mask;
}

}  // namespace controller_base_benchmark
