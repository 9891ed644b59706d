#ifndef CONTROLLER_BASE_PATH_INTERPOLATION_H_
#define CONTROLLER_BASE_PATH_INTERPOLATION_H_

#include <geometry_msgs/Quaternion.h>
#include <nav_msgs/Path.h>

namespace nav_core::math {

// Densifies a path: every segment of planar length d gets floor(d / spacing) new poses at even steps, so that wherever
// poses were inserted their distance stays below `spacing` (metres). A length of exactly two spacings therefore gets
// two new poses, not one. (The quotient is a double: where it comes out just below a whole number, as 0.15 / 0.05 does,
// the steps are exactly one spacing.)
//
// Every input pose is kept, in order, with its own header and orientation; duplicates too. A new pose carries the
// header of the pose before it, a linearly interpolated position (z included) and the blend of both orientations
// (InterpolateOrientation). The result has the input's header.
//
// Nothing is inserted into a segment whose count does not fit a signed 32-bit integer or whose length is not finite. A
// path of fewer than two poses, or a spacing that is not positive and finite, gives an exact copy of the path.
nav_msgs::Path LinearInterpolation(const nav_msgs::Path& path, double spacing);

// Normalised linear blend (1 - t) q0 + t q1, component by component; t = 0 is q0's direction, t = 1 is q1's.
//
// Deliberately plain: t is not clamped, and q1 is not flipped onto q0's hemisphere, so two quaternions of opposite
// signs blend through an arbitrary orientation. A blend of length zero is returned as the zero quaternion.
geometry_msgs::Quaternion InterpolateOrientation(const geometry_msgs::Quaternion& q0,
                                                 const geometry_msgs::Quaternion& q1, double t);

}  // namespace nav_core::math

#endif  // CONTROLLER_BASE_PATH_INTERPOLATION_H_
