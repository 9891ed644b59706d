#ifndef CONTROLLER_BASE_DEMO_PICTURES_CLIP_H_
#define CONTROLLER_BASE_DEMO_PICTURES_CLIP_H_

#include <opencv2/core.hpp>
#include <vector>

namespace controller_base::demo {

// What of a drawing lies within a rectangle. Coordinates may be as large as doubles are; what is not finite is left
// out.

// The parts of the line from point to point that lie within `area`, in their order, of two points or more each. Points
// inside stay as they are.
std::vector<std::vector<cv::Point2d>> ClipLine(const std::vector<cv::Point2d>& points, const cv::Rect2d& area);

// The part of a convex polygon that lies within `area`, its edge included; no corners where there is none.
std::vector<cv::Point2d> ClipPolygon(const std::vector<cv::Point2d>& corners, const cv::Rect2d& area);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_CLIP_H_
