#ifndef CONTROLLER_BASE_COMMON_PLANAR_DISTANCE_H_
#define CONTROLLER_BASE_COMMON_PLANAR_DISTANCE_H_

#include <geometry_msgs/Point.h>

#include <cmath>

namespace nav_controller::internal {

// Metres; z is ignored.
inline double PlanarDistance(const geometry_msgs::Point& a, const geometry_msgs::Point& b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  return std::sqrt(dx * dx + dy * dy);
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_COMMON_PLANAR_DISTANCE_H_
