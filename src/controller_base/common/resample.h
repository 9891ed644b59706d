#ifndef CONTROLLER_BASE_COMMON_RESAMPLE_H_
#define CONTROLLER_BASE_COMMON_RESAMPLE_H_

#include <nav_msgs/Path.h>

namespace nav_controller::internal {

enum class Orientations {
  kAsGiven,
  kUpright,  // the w of every given one is taken as 1
};

// What nav_core::math::LinearInterpolation does.
nav_msgs::Path Resample(const nav_msgs::Path& path, double spacing, Orientations orientations);

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_COMMON_RESAMPLE_H_
