#ifndef NAV_CORE_MATH_VEC2D_H_
#define NAV_CORE_MATH_VEC2D_H_

namespace nav_core::math {

struct Vec2d {
  float x;
  float y;
};

}  // namespace nav_core::math

#endif  // NAV_CORE_MATH_VEC2D_H_
