#include "follower/steering.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "follower/inflation.h"
#include "follower/path_geometry.h"

namespace controller_base::follower {
namespace {

// Gains, 1/s: rad/s of turn rate for each rad that is left.
constexpr double kFaceGain = 2.5;  // to face a target
constexpr double kTurnGain = 2.0;  // to turn by an angle

constexpr double kCreepSpeed = 0.03;         // m/s; the least, so that the goal is reached in finite time
constexpr double kNearestTarget = 1e-3;      // m; a nearer one counts as that far
constexpr double kTurnBackLookahead = 0.15;  // m along the path
constexpr double kShorter = 0.75;            // each look-ahead of the one before, while the line is blocked
constexpr double kTimeAhead = 0.4;           // s; so far ahead a target does not make the robot swing from side to side
constexpr double kStraightOn = 0.3;          // m; how far the path is taken to lead on where it bends
constexpr double kArcStep = 0.01;            // m
constexpr double kLongestArc = 100.0;        // m; a speed measured over nanoseconds may be of any size
constexpr double kStanding = 0.03;           // m/s, or less
constexpr double kFacing = 0.01;             // rad, or less

double BearingOf(const geometry_msgs::Point& target, const Pose2d& robot) {
  return NormalizeAngle(Direction(robot, target) - robot.yaw);
}

// Whether the arc of `curvature` (1/m) that leaves in the robot's heading enters a lethal cell within `distance`
// metres.
bool ArcEntersObstacle(const PlannerView& view, const Pose2d& robot, double curvature, double distance) {
  geometry_msgs::Point from = PositionOf(robot);
  double along = 0.0;
  while (along < distance) {
    const geometry_msgs::Point to = PointAt(from, robot.yaw + curvature * (along + 0.5 * kArcStep), kArcStep);
    if (view.CutsCorner(from, to)) {
      return true;
    }
    from = to;
    along += kArcStep;
  }
  return false;
}

// Whether the path from `before` to `place`, straight on for another kStraightOn, enters a lethal cell.
bool LeadsIntoObstacle(const PlannerView& view, const geometry_msgs::Point& before, const geometry_msgs::Point& place) {
  return view.CutsCorner(place, PointAt(place, Direction(before, place), kStraightOn));
}

}  // namespace

Command PurePursuit(const Parameters& parameters, const Pose2d& robot, const geometry_msgs::Point& target,
                    const PursuitLimits& limits) {
  if (limits.room <= 0.0) {
    return {};
  }
  const double bearing = BearingOf(target, robot);
  if (std::abs(bearing) > limits.turn_on_spot) {
    return {0.0, kFaceGain * bearing};
  }
  const double curvature = 2.0 * std::sin(bearing) / std::max(Distance(robot, target), kNearestTarget);
  const double stopping_speed = std::sqrt(2.0 * parameters.deceleration * limits.room) - kCreepSpeed;
  double speed = std::min(limits.speed, std::max(stopping_speed, kCreepSpeed));
  if (std::abs(curvature) * speed > parameters.comfortable_turn_rate) {
    speed = parameters.comfortable_turn_rate / std::abs(curvature);
  }
  return {speed, speed * curvature};
}

Command Steering::TurnBy(double angle) { return {0.0, kTurnGain * angle}; }

Command Steering::DriveAlong(const PlannerView& view, const Pose2d& robot, const nav_msgs::Path& path,
                             double room) const {
  const Target farthest = FarthestFreeTarget(view, robot, path);
  const geometry_msgs::Point target = BesideCorner(view, robot, farthest.point);
  const double speed = std::min(SpeedOn(view, robot, path), SpeedTo(farthest));
  const Command command = PurePursuit(parameters_, robot, target, {room, speed, TurnOnSpot(view, robot, target)});
  return view.CutsCorner(PositionOf(robot), target) ? command : StopBeforeObstacles(view, robot, command, target);
}

// A shorter look-ahead drives slower, unless the target is far enough ahead for wheels that are late.
double Steering::SpeedTo(const Target& target) const {
  const double speed = parameters_.cruise_speed * target.lookahead / parameters_.lookahead;
  return target.turns_back ? speed : std::max(speed, target.lookahead / kTimeAhead);
}

// Slow where the path bends away from a lethal cell that is near, and before it no faster than lets it become
// slow in time. What the robot passes by does not matter, however near.
double Steering::SpeedOn(const PlannerView& view, const Pose2d& robot, const nav_msgs::Path& path) const {
  const double slow = std::min(parameters_.speed_near_obstacles, parameters_.cruise_speed);
  const double braking_distance =
      (parameters_.cruise_speed * parameters_.cruise_speed - slow * slow) / (2.0 * parameters_.deceleration);
  geometry_msgs::Point before = PointAt(robot, robot.yaw + kPi, kTrackingSpacing);
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    const geometry_msgs::Point& place = pose.pose.position;
    const double distance = Distance(robot, place);
    if (distance > braking_distance + parameters_.near_margin) {
      break;
    }
    if (view.IsWithinMargin(place, parameters_.near_margin) && LeadsIntoObstacle(view, before, place)) {
      const double to_brake = std::max(0.0, distance - parameters_.near_margin);
      return std::min(parameters_.cruise_speed, std::sqrt(slow * slow + 2.0 * parameters_.deceleration * to_brake));
    }
    before = place;
  }
  return parameters_.cruise_speed;
}

// Where the arc to the target would enter a lethal cell, there is no room to turn while driving.
double Steering::TurnOnSpot(const PlannerView& view, const Pose2d& robot, const geometry_msgs::Point& target) const {
  const double distance = Distance(robot, target);
  const double curvature = 2.0 * std::sin(BearingOf(target, robot)) / std::max(distance, kNearestTarget);
  return ArcEntersObstacle(view, robot, curvature, std::min(distance, kLongestArc))
             ? parameters_.turn_on_spot_near_obstacles
             : parameters_.turn_on_spot;
}

Command Steering::LeaveObstacle(const PlannerView& view, const Pose2d& robot) const {
  const double reach =
      parameters_.robot_radius + Inflation(view.map().getResolution(), parameters_.robot_radius).inscribed_distance();
  const std::optional<geometry_msgs::Point> nearest = view.NearestFreeCell(robot, reach);
  return nearest ? PurePursuit(parameters_, robot, *nearest,
                               {Distance(robot, *nearest), parameters_.leaving_speed, parameters_.turn_on_spot})
                 : Command();
}

// Where the path turns back, the other leg is near: only a target just ahead, along the path, leads to the turn and
// around it.
Steering::Target Steering::FarthestFreeTarget(const PlannerView& view, const Pose2d& robot,
                                              const nav_msgs::Path& path) const {
  const bool turns_back = TurnsBack(path);
  double lookahead = turns_back ? std::min(kTurnBackLookahead, parameters_.lookahead) : parameters_.lookahead;
  geometry_msgs::Point target = turns_back ? TargetAlong(path, lookahead) : TargetOn(path, robot, lookahead);
  while (lookahead > parameters_.shortest_lookahead && view.IsLineBlocked(PositionOf(robot), target)) {
    lookahead = std::max(kShorter * lookahead, parameters_.shortest_lookahead);
    target = TargetOn(path, robot, lookahead);
  }
  return {target, lookahead, turns_back};
}

// Even the line to the next pose may cut the corner of a blocked cell. Then a point up to two clearances beside that
// pose is the target, if the line to it keeps its clearance, or cuts no corner at least. Where all of them cut one, it
// is the middle of the free cell beside the robot's own that is nearest to the pose.
geometry_msgs::Point Steering::BesideCorner(const PlannerView& view, const Pose2d& robot,
                                            const geometry_msgs::Point& target) const {
  const geometry_msgs::Point from = PositionOf(robot);
  const double aside = Direction(robot, target) + 0.5 * kPi;
  geometry_msgs::Point best = target;
  bool is_cut = view.CutsCorner(from, target);
  for (const double clearances : {0.0, 1.0, -1.0, 2.0, -2.0}) {
    const geometry_msgs::Point beside = PointAt(target, aside, clearances * parameters_.line_clearance);
    if (view.IsLineBlocked(from, beside)) {
      continue;
    }
    if (!view.PassesClose(from, beside, parameters_.line_clearance)) {
      return beside;
    }
    best = is_cut ? beside : best;
    is_cut = false;
  }
  return is_cut ? view.FreeNeighbour(robot, target).value_or(target) : best;
}

// The arc of the command may swing into a lethal cell although the straight line to the target is free. The robot then
// stops on the arc and faces the target.
Command Steering::StopBeforeObstacles(const PlannerView& view, const Pose2d& robot, const Command& command,
                                      const geometry_msgs::Point& target) const {
  const double bearing = BearingOf(target, robot);
  const bool is_straight = speed_ <= kStanding && std::abs(bearing) < kFacing;
  if (command.speed <= 0.0 || is_straight || view.IsBlocked(PositionOf(robot))) {
    return command;
  }
  const double speed = std::max(speed_, command.speed);
  const double curvature = command.turn_rate / command.speed;
  const double stopping_distance = parameters_.reaction_time * speed + 0.5 * speed * speed / parameters_.braking;
  if (!ArcEntersObstacle(view, robot, curvature, std::min(stopping_distance, kLongestArc))) {
    return command;
  }
  return speed_ > kStanding ? Command{0.0, curvature * speed_} : TurnBy(bearing);
}

}  // namespace controller_base::follower
