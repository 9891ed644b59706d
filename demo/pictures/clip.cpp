#include "demo/pictures/clip.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace controller_base::demo {
namespace {

using Points = std::vector<cv::Point2d>;
using Segment = std::pair<cv::Point2d, cv::Point2d>;

bool IsFinite(const cv::Point2d& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

// One side of a rectangle.
struct Side {
  double cv::Point2d::*coordinate;
  double bound;
  double inwards;  // 1 where the rectangle's points have larger coordinates than the bound, else -1

  double DepthOf(const cv::Point2d& point) const { return inwards * (point.*coordinate - bound); }
  bool Contains(const cv::Point2d& point) const { return DepthOf(point) >= 0.0; }

  // Where the line between two points crosses the side. Starts from the point inside: the other one may be so far away
  // that nothing but its direction counts.
  cv::Point2d Crossing(const cv::Point2d& inside, const cv::Point2d& outside) const {
    const double depth = DepthOf(inside);
    cv::Point2d crossing = inside + depth / (depth - DepthOf(outside)) * (outside - inside);
    crossing.*coordinate = bound;
    return crossing;
  }
};

std::array<Side, 4> SidesOf(const cv::Rect2d& area) {
  return {Side{&cv::Point2d::x, area.x, 1.0}, Side{&cv::Point2d::x, area.x + area.width, -1.0},
          Side{&cv::Point2d::y, area.y, 1.0}, Side{&cv::Point2d::y, area.y + area.height, -1.0}};
}

std::optional<Segment> PartWithin(const cv::Rect2d& area, Segment segment) {
  auto& [a, b] = segment;
  if (!IsFinite(a) || !IsFinite(b)) {
    return std::nullopt;
  }
  for (const Side& side : SidesOf(area)) {
    const bool has_a = side.Contains(a);
    const bool has_b = side.Contains(b);
    if (!has_a && !has_b) {
      return std::nullopt;
    }
    a = has_a ? a : side.Crossing(b, a);
    b = has_b ? b : side.Crossing(a, b);
  }
  return segment;
}

Points CutOff(const Points& corners, const Side& side) {
  Points inside;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const cv::Point2d& here = corners[i];
    const cv::Point2d& before = corners[(i + corners.size() - 1) % corners.size()];
    const bool has_here = side.Contains(here);
    if (has_here != side.Contains(before)) {
      inside.push_back(has_here ? side.Crossing(here, before) : side.Crossing(before, here));
    }
    if (has_here) {
      inside.push_back(here);
    }
  }
  return inside;
}

}  // namespace

std::vector<Points> ClipLine(const Points& points, const cv::Rect2d& area) {
  std::vector<Points> parts;
  bool goes_on = false;  // whether the last part ends where the next segment begins
  for (std::size_t i = 1; i < points.size(); ++i) {
    const std::optional<Segment> part = PartWithin(area, {points[i - 1], points[i]});
    if (part && !goes_on) {
      parts.push_back({part->first});
    }
    if (part) {
      parts.back().push_back(part->second);
    }
    goes_on = part && part->second == points[i];
  }
  return parts;
}

// As I. Sutherland and G. Hodgman clip a polygon ("Reentrant Polygon Clipping", 1974).
Points ClipPolygon(const Points& corners, const cv::Rect2d& area) {
  if (!std::all_of(corners.begin(), corners.end(), IsFinite)) {
    return {};
  }
  Points rest = corners;
  for (const Side& side : SidesOf(area)) {
    rest = CutOff(rest, side);
  }
  return rest;
}

}  // namespace controller_base::demo
