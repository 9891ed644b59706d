#ifndef CONTROLLER_BASE_PLATFORM_VEC2D_H_
#define CONTROLLER_BASE_PLATFORM_VEC2D_H_

namespace nav_core::math {
inline namespace controller_base_platform {

// A point or a difference of points in the plane, metres.
struct Vec2d {
  constexpr Vec2d() = default;
  constexpr Vec2d(double x_in, double y_in) : x(x_in), y(y_in) {}

  double x = 0.0;
  double y = 0.0;
};

}  // namespace controller_base_platform
}  // namespace nav_core::math

#endif  // CONTROLLER_BASE_PLATFORM_VEC2D_H_
