#ifndef CONTROLLER_BASE_FOLLOWER_POSE2D_H_
#define CONTROLLER_BASE_FOLLOWER_POSE2D_H_

namespace controller_base::follower {

// Where the robot stands and looks: metres, and radians counter-clockwise from the x axis.
struct Pose2d {
  double x = 0.0;
  double y = 0.0;
  double yaw = 0.0;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_POSE2D_H_
