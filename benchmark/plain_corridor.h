#ifndef BENCHMARK_PLAIN_CORRIDOR_H_
#define BENCHMARK_PLAIN_CORRIDOR_H_

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace controller_base_benchmark {

// The corridor around `points` by OpenCV's calls on a whole grid of `size`: CV_8UC1, not zero inside. What
// PathMapFiller must mark.
cv::Mat DrawCorridorPlainly(const cv::Size& size, const std::vector<cv::Point>& points, int width);

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_PLAIN_CORRIDOR_H_
