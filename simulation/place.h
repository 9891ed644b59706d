#ifndef CONTROLLER_BASE_SIMULATION_PLACE_H_
#define CONTROLLER_BASE_SIMULATION_PLACE_H_

#include <cmath>
#include <string>

#include "follower/format.h"

namespace controller_base::simulation {

// m; what is nearer than that shows as 0.00 m, and counts as touching.
constexpr double kTouching = 0.005;

// A place on the map as messages show it. Far off any map, the digits of a place say nothing more.
inline std::string Place(double x, double y) {
  constexpr double kFar = 1e7;  // m
  return std::abs(x) < kFar && std::abs(y) < kFar ? follower::Format("(%.2f, %.2f)", x, y)
                                                  : follower::Format("(%g, %g)", x, y);
}

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_PLACE_H_
