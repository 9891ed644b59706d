#ifndef CONTROLLER_BASE_FOLLOWER_STEERING_H_
#define CONTROLLER_BASE_FOLLOWER_STEERING_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/Path.h>

#include "controller_base/follower/command.h"
#include "controller_base/follower/parameters.h"
#include "follower/geometry.h"
#include "follower/planner_view.h"

namespace controller_base::follower {

// The bounds within which PurePursuit steers.
struct PursuitLimits {
  double room;          // m; the distance after which the robot must stand: it brakes in time
  double speed;         // m/s, positive
  double turn_on_spot;  // rad; a target farther to the side is faced first, on the spot
};

// The control law: steers the robot on the arc that leaves in its heading and leads through `target`. See R. C.
// Coulter, "Implementation of the Pure Pursuit Path Tracking Algorithm", CMU-RI-TR-92-01, 1992. No room: stands still.
Command PurePursuit(const Parameters& parameters, const Pose2d& robot, const geometry_msgs::Point& target,
                    const PursuitLimits& limits);

// The commands of the wheels: the control law, and its limits near obstacles. No state but the measured speed.
class Steering {
 public:
  // `parameters` must outlive the steering.
  explicit Steering(const Parameters& parameters) : parameters_(parameters) {}

  // m/s, as the poses tell; the stopping distance depends on it.
  void SetMeasuredSpeed(double speed) { speed_ = speed; }

  // Along `path`, which has a pose and begins at the robot, with `room` metres until the robot must stand. Targets the
  // farthest pose on a free straight line; a shorter look-ahead drives slower.
  Command DriveAlong(const PlannerView& view, const Pose2d& robot, const nav_msgs::Path& path, double room) const;

  // The robot stands too near to an obstacle: slowly and straight to the nearest free cell. Free cells so far away that
  // they lie behind something the robot does not touch yet are not looked for; where there is none it stands still.
  Command LeaveObstacle(const PlannerView& view, const Pose2d& robot) const;

  // On the spot by `angle` radians.
  static Command TurnBy(double angle);

 private:
  struct Target {
    geometry_msgs::Point point;
    double lookahead;  // m
    bool turns_back;   // it lies where the path turns back
  };

  double SpeedTo(const Target& target) const;
  double SpeedOn(const PlannerView& view, const Pose2d& robot, const nav_msgs::Path& path) const;
  double TurnOnSpot(const PlannerView& view, const Pose2d& robot, const geometry_msgs::Point& target) const;
  Target FarthestFreeTarget(const PlannerView& view, const Pose2d& robot, const nav_msgs::Path& path) const;
  geometry_msgs::Point BesideCorner(const PlannerView& view, const Pose2d& robot,
                                    const geometry_msgs::Point& target) const;
  Command StopBeforeObstacles(const PlannerView& view, const Pose2d& robot, const Command& command,
                              const geometry_msgs::Point& target) const;

  const Parameters& parameters_;
  double speed_ = 0.0;  // m/s
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_STEERING_H_
