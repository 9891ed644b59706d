#include "controller_base/platform/box2d.h"

#include <cmath>

namespace nav_core::math {
inline namespace controller_base_platform {
namespace {

constexpr double kEdgeTolerance = 1e-9;  // metres

}  // namespace

Box2d::Box2d(const Vec2d& center, double heading, double length, double width)
    : center_(center),
      cos_heading_(std::cos(heading)),
      sin_heading_(std::sin(heading)),
      half_length_(length * 0.5),
      half_width_(width * 0.5) {
  const auto corner = [this](double along, double across) {
    return Vec2d(center_.x + along * cos_heading_ - across * sin_heading_,
                 center_.y + along * sin_heading_ + across * cos_heading_);
  };
  corners_ = {corner(-half_length_, -half_width_), corner(half_length_, -half_width_),
              corner(half_length_, half_width_), corner(-half_length_, half_width_)};
}

bool Box2d::IsPointIn(const Vec2d& point) const {
  const double dx = point.x - center_.x;
  const double dy = point.y - center_.y;
  const double along = dx * cos_heading_ + dy * sin_heading_;
  const double across = dy * cos_heading_ - dx * sin_heading_;
  return std::abs(along) <= half_length_ + kEdgeTolerance && std::abs(across) <= half_width_ + kEdgeTolerance;
}

}  // namespace controller_base_platform
}  // namespace nav_core::math
