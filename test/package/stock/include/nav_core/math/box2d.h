#ifndef NAV_CORE_MATH_BOX2D_H_
#define NAV_CORE_MATH_BOX2D_H_

namespace nav_core::math {

class Box2d {};

}  // namespace nav_core::math

#endif  // NAV_CORE_MATH_BOX2D_H_
