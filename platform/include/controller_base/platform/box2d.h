#ifndef CONTROLLER_BASE_PLATFORM_BOX2D_H_
#define CONTROLLER_BASE_PLATFORM_BOX2D_H_

#include <vector>

#include "controller_base/platform/vec2d.h"

namespace nav_core::math {
inline namespace controller_base_platform {

// An oriented rectangle.
//
//     corner 3 ---------------- corner 2      the length lies along the heading,
//        |    width  (+)--> heading |         the width across it
//     corner 0 ---------------- corner 1
class Box2d {
 public:
  // `heading` in radians, counter-clockwise from the x axis; `length` and `width` in metres, not negative.
  // A box with a coordinate that is not finite contains no point.
  Box2d(const Vec2d& center, double heading, double length, double width);

  // The four corners, counter-clockwise, beginning behind and to the right of the centre.
  const std::vector<Vec2d>& GetAllCorners() const { return corners_; }

  // Whether `point` lies in the rectangle. The edge counts as inside, and so does whatever is within 1e-9 m of it.
  bool IsPointIn(const Vec2d& point) const;

 private:
  Vec2d center_;
  double cos_heading_;
  double sin_heading_;
  double half_length_;
  double half_width_;
  std::vector<Vec2d> corners_;
};

}  // namespace controller_base_platform
}  // namespace nav_core::math

#endif  // CONTROLLER_BASE_PLATFORM_BOX2D_H_
