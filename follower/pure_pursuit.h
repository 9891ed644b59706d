#ifndef CONTROLLER_BASE_FOLLOWER_PURE_PURSUIT_H_
#define CONTROLLER_BASE_FOLLOWER_PURE_PURSUIT_H_

#include <geometry_msgs/Point.h>

#include "follower/command.h"
#include "follower/geometry.h"

namespace controller_base_demo {

// The control law: steers the robot on the arc that leaves in the direction it looks and leads through `target`. See
// R. C. Coulter, "Implementation of the Pure Pursuit Path Tracking Algorithm", CMU-RI-TR-92-01, 1992. A target far to
// the side, or behind, is faced first, on the spot.
//
// `room` is the way in metres after which the robot must stand: it brakes in time. `max_speed` in m/s, positive. A
// target that is more than `turn_on_spot` radians to the side is faced first.
constexpr double kTurnOnSpot = 0.6;  // rad
Command PurePursuit(const Pose2d& robot, const geometry_msgs::Point& target, double room, double max_speed,
                    double turn_on_spot = kTurnOnSpot);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_PURE_PURSUIT_H_
