#include "follower/path_follower.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "controller_base/control_progress.h"
#include "controller_base/obstacle_blocking_analyzer.h"
#include "controller_base/path_interpolation.h"
#include "costmap_2d/cost_values.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "follower/pure_pursuit.h"
#include "follower/ray_walk.h"
#include "follower/refusal.h"
#include "nav_core/math/box2d.h"

namespace controller_base_demo {
namespace {

using nav_controller::CollisionHistory;
using nav_controller::EventDirection;

constexpr double kCruiseSpeed = 0.45;      // m/s
constexpr double kArrivalDistance = 0.05;  // m from the goal

// Blocked farther ahead than this, the path is still followed: things may move away, and the laser sees more from
// nearby. Not less, because LocalPlanner falls back from an occupied goal only to a cell more than 30 cells away: 1.5 m
// on a map of 0.05 m.
constexpr double kDetourHorizon = 1.8;  // m

// How far the corridor reaches to each side of the path. Each refused search is tried again with the next width.
constexpr double kCorridorWidths[] = {0.6, 1.0, kWidestCorridor};  // m
const ros::Duration kSearchPause(1.0);                             // between two searches
constexpr double kSidePoint = 0.2;                                 // m from the path; where IsBilateralObstacle looks
constexpr double kWaitingDistance = 0.3;                           // m to the blockage, while no detour is found
constexpr double kBlockedStart = 0.15;    // m; so short a way past an obstacle does not touch it
constexpr double kRejoinDistance = 0.15;  // m from the detour's end

constexpr double kLookahead = 0.4;                 // m
constexpr double kShortestLookahead = 0.07;        // m; more than the spacing of poses, or one that is passed would do
constexpr double kTurnBack = 120 * kPi / 180;      // rad; a path that turns by more leads back beside itself
constexpr double kTurnBackHorizon = 0.6;           // m
constexpr double kTurnBackLookahead = 0.15;        // m along the path
constexpr double kHair = 0.02;                     // m
constexpr double kSpeedNearObstacles = 0.2;        // m/s, in the ring around obstacles
constexpr double kArcStep = 0.01;                  // m
constexpr double kStanding = 0.03;                 // m/s, or less
constexpr double kFacing = 0.01;                   // rad, or less
constexpr double kBraking = 0.8;                   // m/s^2; the wheels give that much at least
constexpr double kReaction = 0.1;                  // s; until they begin
constexpr double kTurnOnSpotNearObstacles = 0.15;  // rad; there is no room for arcs there

constexpr double kBackOffDistance = 0.2;  // m
constexpr double kRoomBehind = 0.1;       // m; it needs that much to go on
constexpr double kBackOffSpeed = 0.15;    // m/s
const ros::Duration kLongestBackOff(3.0);
constexpr double kTurnGain = 2.0;        // 1/s
constexpr double kTurnTolerance = 0.05;  // rad
const ros::Duration kLongestTurn(5.0);
constexpr double kSideContact = 50.0 * kPi / 180;  // rad; where a contact of the left or right bumper is taken to be

const ros::Duration kLongestCycle(1.0);  // a longer one is a jump of the clock
constexpr double kLongestStep = 0.3;     // m in one cycle; a longer one is a jump of the pose
constexpr int kStillCycles = 20;         // with the same time: the clock stands still; a second at 20 Hz
constexpr int kLastStillCycle = 600;     // half a minute at 20 Hz

constexpr double kFreshContact = 20.0;  // s; one that long ago does not explain a stall
const ros::Duration kProgressPause(5.0);
constexpr double kBudgetFactor = 3.0;  // ControllerProgressChecker allows that many times the path's length and time
constexpr double kDeviation = 0.3;     // m; the distance at which TrajectoryAnalyzer warns as well

Pose2d ToPose2d(const geometry_msgs::Pose& pose) {
  return {pose.position.x, pose.position.y, 2.0 * std::atan2(pose.orientation.z, pose.orientation.w)};
}

geometry_msgs::Point PointAt(const Pose2d& pose, double direction, double distance) {
  geometry_msgs::Point point;
  point.x = pose.x + distance * std::cos(direction);
  point.y = pose.y + distance * std::sin(direction);
  return point;
}

// The poses up to the one at which the way along the path exceeds `length`, without it.
nav_msgs::Path Beginning(const nav_msgs::Path& path, double length) {
  nav_msgs::Path beginning;
  beginning.header = path.header;
  double way = 0.0;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    if (!beginning.poses.empty()) {
      way += Distance(beginning.poses.back().pose.position, pose.pose.position);
    }
    if (way > length) {
      break;
    }
    beginning.poses.push_back(pose);
  }
  return beginning;
}

// The first pose that is at least `distance` from the robot, or the last one. The robot has passed the very first.
geometry_msgs::Point TargetOn(const nav_msgs::Path& way, const Pose2d& robot, double distance) {
  const auto is_far = [&](const geometry_msgs::PoseStamped& pose) {
    return Distance(robot, pose.pose.position) >= distance;
  };
  const auto second = way.poses.begin() + (way.poses.size() > 1 ? 1 : 0);
  const auto target = std::find_if(second, way.poses.end(), is_far);
  return (target != way.poses.end() ? *target : way.poses.back()).pose.position;
}

// The first pose at which the way along the path reaches `distance`, or the last one.
geometry_msgs::Point TargetAlong(const nav_msgs::Path& way, double distance) {
  const nav_msgs::Path nearer = Beginning(way, distance);
  return way.poses[std::min(nearer.poses.size(), way.poses.size() - 1)].pose.position;
}

// Whether the path turns back on itself soon.
bool TurnsBack(const nav_msgs::Path& way) {
  constexpr std::size_t kArm = 3;  // poses before and after the turn
  const nav_msgs::Path near = Beginning(way, kTurnBackHorizon);
  for (std::size_t i = kArm; i + kArm < near.poses.size(); ++i) {
    const double before = Direction(near.poses[i - kArm + 1].pose.position, near.poses[i].pose.position);
    const double after = Direction(near.poses[i].pose.position, near.poses[i + kArm].pose.position);
    if (std::abs(NormalizeAngle(after - before)) > kTurnBack) {
      return true;
    }
  }
  return false;
}

// Where on the path a pose stands that was copied from it.
std::ptrdiff_t IndexOf(const nav_msgs::Path& path, const geometry_msgs::PoseStamped& pose) {
  const auto is_same = [&](const geometry_msgs::PoseStamped& other) {
    return Distance(pose.pose.position, other.pose.position) == 0.0;
  };
  return std::find_if(path.poses.begin(), path.poses.end(), is_same) - path.poses.begin();
}

// From the robot straight to the stretch and along it, in poses as close as the stretch's own. No poses: no stretch.
nav_msgs::Path WayBack(const geometry_msgs::PoseStamped& robot, const nav_msgs::Path& stretch) {
  nav_msgs::Path way = stretch;
  if (!stretch.poses.empty()) {
    way.poses.insert(way.poses.begin(), robot);
  }
  return nav_core::math::LinearInterpolation(way, kTrackingSpacing);
}

// Whether the line enters an obstacle of the map, be it by the corner of a cell that a line of cells leaves out.
bool CutsCorner(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& from, const geometry_msgs::Point& to) {
  const double length = Distance(from, to);
  for (RayWalk walk(map, {from.x, from.y, Direction(from, to)}); walk.distance() <= length; walk.Step()) {
    if (map.IsInmap(walk.mx(), walk.my()) &&
        map.IsLethalObstacle(static_cast<unsigned int>(walk.mx()), static_cast<unsigned int>(walk.my()))) {
      return true;
    }
  }
  return false;
}

// Whether an obstacle of the map is a hair beside the line, or on it.
bool PassesClose(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& from, const geometry_msgs::Point& to) {
  const double aside = Direction(from, to) + 0.5 * kPi;
  const auto cuts_corner = [&](double distance) {
    return CutsCorner(map, PointAt({from.x, from.y, 0.0}, aside, distance),
                      PointAt({to.x, to.y, 0.0}, aside, distance));
  };
  return cuts_corner(kHair) || cuts_corner(-kHair);
}

int CellsFor(double metres, const costmap_2d::Costmap2D& map) {
  return static_cast<int>(std::lround(metres / map.getResolution()));
}

const char* Name(EventDirection direction) {
  switch (direction) {
    case EventDirection::Left:
      return "left";
    case EventDirection::Right:
      return "right";
    case EventDirection::Center:
      return "front";
    case EventDirection::None:
      break;
  }
  return "unknown side";
}

// Where on the robot the bumper was pressed, as well as its three switches tell.
double Bearing(EventDirection direction) {
  switch (direction) {
    case EventDirection::Left:
      return kSideContact;
    case EventDirection::Right:
      return -kSideContact;
    case EventDirection::Center:
    case EventDirection::None:
      break;
  }
  return 0.0;
}

}  // namespace

PathFollower::PathFollower(FollowerObserver* observer)
    : observer_(observer),
      tracker_(nav_msgs::Path()),
      planner_(true),
      corridor_(std::make_shared<nav_controller::PathMapFiller>(1)),
      detour_tracker_(nav_msgs::Path()) {}

void PathFollower::SetPath(const nav_msgs::Path& path) {
  tracker_.InitializePath(path);
  budget_ = nav_controller::ControlProgress();
  tracker_.GenerateControllProgress(&budget_);
  progress_.Reset(budget_);
  last_sample_ = geometry_msgs::PoseStamped();
  contacts_.Reset();
  last_contact_ = -kFreshContact;
  planner_.ClearAllBoxObstacle();
  if (!boxes_.empty()) {
    boxes_.clear();
    planner_.VisualizeAllObstacles();
  }
  boxes_closed_the_way_ = false;
  blockage_.reset();
  last_clock_ = ros::Time::now();
  still_cycles_ = 0;

  goal_ = path.poses.back().pose.position;
  outcome_ = Outcome::kDriving;
  reason_.clear();
  ForgetRefusals();
  next_search_ = ros::Time::now();
  next_progress_ = ros::Time::now() + kProgressPause;
  is_deviated_ = false;
  SwitchTo(Mode::kFollowPath, ToPose2d(path.poses.front().pose));
  Tell("path", path.poses.front().pose.position,
       Format("new path: %.2f m in %zu poses, resampled to %zu; at most %.1f m and %.0f s, three times its budget",
              budget_.total_distance, path.poses.size(), static_cast<std::size_t>(tracker_.GetPathSize()),
              kBudgetFactor * budget_.total_distance, kBudgetFactor * budget_.total_time));
}

Command PathFollower::Cycle(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
  if (outcome_ != Outcome::kDriving || !WatchClock(robot)) {
    return {};
  }
  WatchPose(robot);
  const Situation now = Observe(robot, map);
  if (outcome_ != Outcome::kDriving) {
    return {};
  }
  ReactToContact(now);
  switch (mode_) {
    case Mode::kBackOff:
      return BackOff(now);
    case Mode::kTurn:
      return Turn(now);
    case Mode::kFollowDetour:
    case Mode::kFollowPath:
      break;
  }
  if (IsLost(now)) {
    return {};
  }
  return mode_ == Mode::kFollowDetour ? FollowDetour(now) : FollowPath(now);
}

const char* PathFollower::state() const {
  if (still_cycles_ >= kStillCycles) {
    return "clock";
  }
  switch (mode_) {
    case Mode::kFollowPath:
      return refusal_.empty() ? "path" : "blocked";
    case Mode::kFollowDetour:
      return "detour";
    case Mode::kBackOff:
      return "back-off";
    case Mode::kTurn:
      return "turn";
  }
  return "";
}

// ---- Can I trust clock and pose? ----

// Whatever is measured by a clock that jumps is wrong, and with a clock that stands still nothing can be measured: the
// robot waits then. False while it does.
bool PathFollower::WatchClock(const geometry_msgs::PoseStamped& robot) {
  const ros::Duration step = ros::Time::now() - last_clock_;
  last_clock_ = ros::Time::now();
  if (step.isZero()) {
    ++still_cycles_;
    if (still_cycles_ == kStillCycles) {
      Tell("clock", robot.pose.position, "the clock stands still: waiting for it");
    } else if (still_cycles_ == kLastStillCycle) {
      Finish(Outcome::kNoProgress, robot, Format("the clock has stood still for %d cycles", still_cycles_));
    }
    return still_cycles_ < kStillCycles;
  }
  const bool has_stood_still = std::exchange(still_cycles_, 0) >= kStillCycles;
  if (has_stood_still || step < ros::Duration(0.0) || step > kLongestCycle) {
    Tell("clock", robot.pose.position,
         has_stood_still ? "the clock goes on: contacts and progress start over"
                         : Format("the clock jumped by %+.2f s: contacts and progress start over", step.toSec()));
    RestartTimers();
  }
  return true;
}

// No robot is so fast: the localisation has changed its mind. A detour from where the robot is not is of no use.
void PathFollower::WatchPose(const geometry_msgs::PoseStamped& robot) {
  if (last_sample_.header.frame_id.empty()) {
    return;
  }
  const double step = Distance(last_sample_.pose.position, robot.pose.position);
  if (step > kLongestStep) {
    Tell("pose", robot.pose.position, Format("the pose jumped by %.2f m: back to the path from there", step));
    RestartTimers();
    SwitchTo(Mode::kFollowPath, ToPose2d(robot.pose));
  }
}

// The way and the time so far still count.
void PathFollower::RestartTimers() {
  progress_.Reset(budget_);
  last_sample_ = geometry_msgs::PoseStamped();
  contacts_.Reset();
  mode_time_ = ros::Time::now();
  next_search_ = ros::Time::now();
  next_progress_ = ros::Time::now() + kProgressPause;
}

// ---- Where am I, and am I getting anywhere? ----

PathFollower::Situation PathFollower::Observe(const geometry_msgs::PoseStamped& robot,
                                              const costmap_2d::Costmap2D& map) {
  const nav_msgs::Path stretch = Track(robot, map);
  Situation now{robot, map, ToPose2d(robot.pose), WayBack(robot, stretch), 0};
  now.way_back = now.ahead.poses.size() - stretch.poses.size();
  ahead_ = now.ahead;
  AddProgress(now);
  TellProgress(now);
  std::string reason;
  if (!progress_.Check(robot, reason)) {
    Finish(Outcome::kNoProgress, robot, NoProgress(reason));
  } else if (HasArrived(now)) {
    Finish(Outcome::kReached, robot, Format("%.3f m from the path's end", Distance(now.pose, goal_)));
  }
  return now;
}

// The path's stretch ahead.
nav_msgs::Path PathFollower::Track(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
  tracker_.UpdateIndex(robot);
  const nav_msgs::Path stretch = tracker_.PathTransformToLocalMap(&map);
  if (stretch.poses.size() >= 2) {
    deviation_ = tracker_.DistanceToPathSegment(robot.pose.position, stretch.poses[0].pose, stretch.poses[1].pose);
  }
  return stretch;
}

// The checker keeps its sums to itself: the same ones, to be shown.
void PathFollower::AddProgress(const Situation& now) {
  geometry_msgs::PoseStamped sample = now.robot;
  sample.header.stamp = ros::Time::now();
  if (!last_sample_.header.frame_id.empty()) {
    const double seconds = (sample.header.stamp - last_sample_.header.stamp).toSec();
    speed_ = seconds > 0.0 ? Distance(last_sample_.pose.position, sample.pose.position) / seconds : 0.0;
    budget_.moved_distance += Distance(last_sample_.pose.position, sample.pose.position);
    budget_.elapsed_time += seconds;
    budget_.distance_ratio = budget_.moved_distance / budget_.total_distance;
    budget_.time_ratio = budget_.elapsed_time / budget_.total_time;
  }
  last_sample_ = sample;
}

// What happened, in words, before the checker's own.
std::string PathFollower::NoProgress(const std::string& reason) const {
  std::string what;
  if (!refusal_.empty()) {
    what = refusal_ + "; ";
  } else if (budget_.elapsed_time - last_contact_ < kFreshContact) {
    what = Format("something touched %.1f s before; ", budget_.elapsed_time - last_contact_);
  }
  if (reason.find("CheckBaseLine") != std::string::npos) {
    what += "stalled, less than 0.2 m in 20 s: ";
  } else if (budget_.distance_ratio >= kBudgetFactor) {
    what += "the path's budget is used up, three times its length driven: ";
  } else {
    what += "the path's budget is used up, three times its time: ";
  }
  return what + reason;
}

void PathFollower::TellProgress(const Situation& now) {
  if ((deviation_ > kDeviation) != is_deviated_) {
    is_deviated_ = !is_deviated_;
    Tell("deviation", now.robot.pose.position,
         Format(is_deviated_ ? "%.2f m off the path: farther than %.1f m" : "%.2f m off the path: within %.1f m again",
                deviation_, kDeviation));
  }
  if (ros::Time::now() >= next_progress_) {
    next_progress_ += kProgressPause;
    Tell("progress", now.robot.pose.position,
         Format("index %zu of %zu, %.2f m off the path, state: %s", static_cast<std::size_t>(index()),
                static_cast<std::size_t>(tracker_.GetPathSize()), deviation_, state()));
  }
}

// The goal may be near while the path still leads around elsewhere: the path's rest must be short as well.
bool PathFollower::HasArrived(const Situation& now) const {
  return Distance(now.pose, goal_) < kArrivalDistance && !now.ahead.poses.empty() &&
         Distance(now.ahead.poses.back().pose.position, goal_) < kArrivalDistance && PathLength(now.ahead) < kLookahead;
}

// ---- Something was touched: back off, turn, remember the place as boxes. ----

void PathFollower::ReactToContact(const Situation& now) {
  const EventDirection direction = contacts_.GetEventDirection();
  int signed_count = 0;
  if (!contacts_.FetchCollision() || !contacts_.ProcessNewEvent(turn_angle_)) {
    return;
  }
  contacts_.ProcessNewCollision(signed_count);
  contact_direction_ = now.pose.yaw + Bearing(direction);
  contact_point_ = PointAt(now.pose, contact_direction_, kRobotRadius);
  Tell("contact", contact_point_,
       Format("bumper: %s, contact %d since the last free stretch", Name(direction), std::abs(signed_count)));
  if (contacts_.ShouldAbort()) {
    Finish(Outcome::kAborted, now.robot, Format("%d contacts without getting away", std::abs(signed_count)));
    return;
  }
  last_contact_ = budget_.elapsed_time;
  SwitchTo(Mode::kBackOff, now.pose);
}

Command PathFollower::BackOff(const Situation& now) {
  const geometry_msgs::Point behind = PointAt(now.pose, now.pose.yaw + kPi, kRoomBehind);
  const bool has_room = !nav_controller::IsBlockingBetweenPoints(&now.map, now.robot.pose.position, behind);
  const bool is_over =
      Distance(mode_pose_, now.pose) >= kBackOffDistance || ros::Time::now() - mode_time_ > kLongestBackOff;
  if (has_room && !is_over) {
    return {-kBackOffSpeed, 0.0};
  }
  Tell("turn", now.robot.pose.position,
       Format("backed off %.2f m, turning %+.0f degrees", Distance(mode_pose_, now.pose), turn_angle_ * 180 / kPi));
  SwitchTo(Mode::kTurn, now.pose);
  return {};
}

Command PathFollower::Turn(const Situation& now) {
  const double left = NormalizeAngle(mode_pose_.yaw + turn_angle_ - now.pose.yaw);
  if (std::abs(left) > kTurnTolerance && ros::Time::now() - mode_time_ < kLongestTurn) {
    return {0.0, kTurnGain * left};
  }
  DropBoxes(now);
  next_search_ = ros::Time::now();
  SwitchTo(Mode::kFollowPath, now.pose);
  return {};
}

// The planner moves a point between boxes of 0.2 m x 0.1 m, but the robot is a disc: a wall of boxes keeps its centre a
// radius away from the contact. Where such walls closed the way, which may be narrow and open, a column of boxes has to
// do: the robot feels its way. None is dropped on the robot's own cell, where every search would end before it begins.
void PathFollower::DropBoxes(const Situation& now) {
  unsigned int mx = 0;
  unsigned int my = 0;
  nav_core::math::Vec2d own_cell;
  if (!now.map.worldToMap(now.pose.x, now.pose.y, mx, my)) {
    return;
  }
  now.map.mapToWorld(mx, my, own_cell.x, own_cell.y);
  const double heading = contact_direction_ + 0.5 * kPi;
  std::size_t dropped = 0;
  for (const double along : {-0.15, -0.05, 0.05, 0.15}) {
    for (const double across : boxes_closed_the_way_ ? std::vector<double>{0.0} : std::vector<double>{-0.2, 0.0, 0.2}) {
      geometry_msgs::Point center = contact_point_;
      center.x += along * std::cos(contact_direction_) + across * std::cos(heading);
      center.y += along * std::sin(contact_direction_) + across * std::sin(heading);
      if (nav_core::math::Box2d({center.x, center.y}, heading, 0.2, 0.1).IsPointIn(own_cell)) {
        continue;
      }
      planner_.CreateBoxObstacle(center, heading);
      boxes_.push_back({center, heading});
      ++dropped;
    }
  }
  planner_.VisualizeAllObstacles();
  Tell("box", contact_point_, Format("%zu virtual boxes around the contact, %zu in all", dropped, boxes_.size()));
}

// ---- The path: follow it, and ask whether it is blocked. ----

// Where the local map shows nothing of the robot or of its path, no step is safe: the robot waits, and unless the
// localisation finds back, the progress checker ends this.
bool PathFollower::IsLost(const Situation& now) {
  std::string why;
  if (!now.map.IsInmap(now.pose.x, now.pose.y)) {
    why = "the robot is not on its local map";
  } else if (now.ahead.poses.empty()) {
    why = "the path ahead is not on the local map";
  }
  if (why.empty()) {
    return false;
  }
  if (why != refusal_) {
    Tell("lost", now.robot.pose.position, why + ": waiting");
    refusal_ = why;
  }
  SwitchTo(Mode::kFollowPath, now.pose);  // a detour from elsewhere is of no use
  return true;
}

Command PathFollower::FollowPath(const Situation& now) {
  const nav_msgs::Path near = WithoutBlockedStart(now.map, Beginning(now.ahead, kDetourHorizon));
  const nav_msgs::Path blocked = BlockedRun(now.map, near);
  if (blocked.poses.empty()) {
    if (!refusal_.empty()) {
      Tell("free", now.robot.pose.position, "the path is free again");
    }
    ForgetRefusals();
    blockage_.reset();
    const bool ends_here = Distance(now.ahead.poses.back().pose.position, goal_) < kArrivalDistance;
    return DriveAlong(now, now.ahead, ends_here ? PathLength(now.ahead) : kDetourHorizon);
  }
  if (ros::Time::now() >= next_search_ && SearchDetour(now)) {
    return FollowDetour(now);
  }
  if (IsBlocked(now.map, now.robot.pose.position)) {
    return LeaveObstacle(now);  // no search will start here
  }
  return DriveAlong(now, near, Distance(now.pose, blocked.poses.front().pose.position) - kWaitingDistance);
}

// As the planner sees a point: by its cell, which is closed when its centre lies in a box or when it is lethal.
bool PathFollower::IsBlocked(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& point) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!map.worldToMap(point.x, point.y, mx, my)) {
    return false;
  }
  geometry_msgs::Point center;
  map.mapToWorld(mx, my, center.x, center.y);
  return map.IsLethalObstacle(mx, my) || planner_.GetLocalMapObstacle().IsInObstacle(center);
}

// As the planner sees a line: on the map and, every half cell, in the boxes.
bool PathFollower::IsLineBlocked(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& from,
                                 const geometry_msgs::Point& to) const {
  const int steps = std::max(1, static_cast<int>(std::ceil(Distance(from, to) / (0.5 * map.getResolution()))));
  for (int step = 0; step <= steps; ++step) {
    geometry_msgs::Point point;
    point.x = from.x + (to.x - from.x) * step / steps;
    point.y = from.y + (to.y - from.y) * step / steps;
    if (IsBlocked(map, point)) {
      return true;
    }
  }
  return nav_controller::IsBlockingBetweenPoints(&map, from, to) || CutsCorner(map, from, to);
}

// The first run of the path's poses that lie in an obstacle of the map or in a box. The library's questions know the
// map; the boxes before the obstacle that it finds are asked about pose by pose.
nav_msgs::Path PathFollower::BlockedRun(const costmap_2d::Costmap2D& map, const nav_msgs::Path& path) const {
  nav_msgs::Path on_map;
  if (nav_controller::IsBlockingPathInflateObstacle(&map, path)) {
    on_map = nav_controller::FindObstacleSegment(&map, path);
  }
  const auto end = on_map.poses.empty() ? path.poses.end() : path.poses.begin() + IndexOf(path, on_map.poses.front());
  const auto is_blocked = [&](const geometry_msgs::PoseStamped& pose) { return IsBlocked(map, pose.pose.position); };
  nav_msgs::Path in_boxes;
  in_boxes.header = path.header;
  const auto first = std::find_if(path.poses.begin(), end, is_blocked);
  in_boxes.poses.assign(first, std::find_if_not(first, end, is_blocked));
  return in_boxes.poses.empty() ? on_map : in_boxes;
}

// A robot that stands too near to an obstacle, as at a start beside a wall, need not turn away from a path that leads
// out of there at once: blocked poses at its beginning do not count, if they are few.
nav_msgs::Path PathFollower::WithoutBlockedStart(const costmap_2d::Costmap2D& map, nav_msgs::Path path) const {
  const auto is_free = [&](const geometry_msgs::PoseStamped& pose) { return !IsBlocked(map, pose.pose.position); };
  const auto first_free = std::find_if(path.poses.begin(), path.poses.end(), is_free);
  if (first_free != path.poses.end() &&
      Distance(path.poses.front().pose.position, first_free->pose.position) < kBlockedStart) {
    path.poses.erase(path.poses.begin(), first_free);
  }
  return path;
}

// The robot stands too near to an obstacle: straight to the nearest free cell, slowly. Not so far as the free cells
// behind something that the robot does not touch yet.
Command PathFollower::LeaveObstacle(const Situation& now) const {
  constexpr double kSlow = 0.1;  // m/s
  const double farthest = kRobotRadius + Inflation(now.map.getResolution()).inscribed_distance();
  std::optional<geometry_msgs::Point> nearest;
  for (unsigned int my = 0; my < now.map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < now.map.getSizeInCellsX(); ++mx) {
      geometry_msgs::Point center;
      now.map.mapToWorld(mx, my, center.x, center.y);
      const double distance = Distance(now.pose, center);
      const bool is_nearer = distance < (nearest ? Distance(now.pose, *nearest) : farthest);
      if (is_nearer && !IsBlocked(now.map, center)) {
        nearest = center;
      }
    }
  }
  return nearest ? PurePursuit(now.pose, *nearest, Distance(now.pose, *nearest), kSlow) : Command();
}

// Where a pose lies around a corner so narrow that every line to it is cut: first to the middle of the free cell beside
// the robot's own that is nearest to the pose.
geometry_msgs::Point PathFollower::AroundCorner(const Situation& now, const geometry_msgs::Point& target) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  geometry_msgs::Point best = target;
  double nearest = std::numeric_limits<double>::infinity();
  for (const auto& [column, row] : {std::pair{1.0, 0.0}, {-1.0, 0.0}, {0.0, 1.0}, {0.0, -1.0}}) {
    if (!now.map.worldToMap(now.pose.x + column * now.map.getResolution(), now.pose.y + row * now.map.getResolution(),
                            mx, my)) {
      continue;
    }
    geometry_msgs::Point center;
    now.map.mapToWorld(mx, my, center.x, center.y);
    if (Distance(center, target) < nearest && !IsBlocked(now.map, center)) {
      nearest = Distance(center, target);
      best = center;
    }
  }
  return best;
}

// Even the way to the next pose may brush the corner of a blocked cell: then a little to the side of that pose, where
// it passes at a distance, or does not cut the corner at least.
geometry_msgs::Point PathFollower::BesideCorner(const Situation& now, const geometry_msgs::Point& target) const {
  const geometry_msgs::Point& from = now.robot.pose.position;
  const double aside = Direction(now.pose, target) + 0.5 * kPi;
  geometry_msgs::Point best = target;
  bool is_cut = CutsCorner(now.map, from, target);
  for (const double distance : {0.0, kHair, -kHair, 2 * kHair, -2 * kHair}) {
    const geometry_msgs::Point beside = PointAt({target.x, target.y, 0.0}, aside, distance);
    if (!IsLineBlocked(now.map, from, beside)) {
      if (!PassesClose(now.map, from, beside)) {
        return beside;
      }
      best = is_cut ? beside : best;
      is_cut = false;
    }
  }
  return is_cut ? AroundCorner(now, target) : best;
}

// The arc that the command leads along, as far as the robot needs to stop, may swing into an obstacle of the map
// although the straight line to the target is free: then it stops on it and faces the target.
Command PathFollower::StopBeforeObstacles(const Situation& now, const Command& command,
                                          const geometry_msgs::Point& target) const {
  const double speed = std::max(speed_, command.speed);
  const double bearing = NormalizeAngle(Direction(now.pose, target) - now.pose.yaw);
  const bool faces_target = speed_ <= kStanding && std::abs(bearing) < kFacing;  // the arc is the line
  if (command.speed <= 0.0 || faces_target || IsBlocked(now.map, now.robot.pose.position)) {
    return command;
  }
  const double curvature = command.turn_rate / command.speed;
  const double stopping_distance = kReaction * speed + 0.5 * speed * speed / kBraking;
  geometry_msgs::Point from = now.robot.pose.position;
  for (double way = 0.0; way < stopping_distance; way += kArcStep) {
    const geometry_msgs::Point to =
        PointAt({from.x, from.y, 0.0}, now.pose.yaw + curvature * (way + 0.5 * kArcStep), kArcStep);
    if (CutsCorner(now.map, from, to)) {
      return {0.0, speed_ > kStanding ? curvature * speed_ : kTurnGain * bearing};
    }
    from = to;
  }
  return command;
}

// As far ahead as the straight line is free, and the slower the shorter that is.
Command PathFollower::DriveAlong(const Situation& now, const nav_msgs::Path& way, double room) const {
  // Where the path turns back, the other leg is near: only a target just ahead leads to the turn and around it.
  const bool turns_back = TurnsBack(way);
  double lookahead = turns_back ? kTurnBackLookahead : kLookahead;
  geometry_msgs::Point target = turns_back ? TargetAlong(way, lookahead) : TargetOn(way, now.pose, lookahead);
  while (lookahead > kShortestLookahead && IsLineBlocked(now.map, now.robot.pose.position, target)) {
    lookahead = std::max(0.5 * lookahead, kShortestLookahead);
    target = TargetOn(way, now.pose, lookahead);
  }
  target = BesideCorner(now, target);
  unsigned int mx = 0;
  unsigned int my = 0;
  const bool is_in_ring = now.map.worldToMap(now.pose.x, now.pose.y, mx, my) &&
                          now.map.getCost(mx, my) >= Inflation::kLowestRingCost &&
                          now.map.getCost(mx, my) != costmap_2d::NO_INFORMATION;
  const bool is_tight = is_in_ring || PassesClose(now.map, now.robot.pose.position, target);
  const double speed = kCruiseSpeed * lookahead / kLookahead;
  const Command command =
      is_tight ? PurePursuit(now.pose, target, room, std::min(speed, kSpeedNearObstacles), kTurnOnSpotNearObstacles)
               : PurePursuit(now.pose, target, room, speed);
  return CutsCorner(now.map, now.robot.pose.position, target) ? command : StopBeforeObstacles(now, command, target);
}

// ---- The detour: ask for it, check it, drive it, rejoin the path. ----

bool PathFollower::SearchDetour(const Situation& now) {
  next_search_ = ros::Time::now() + kSearchPause;
  const nav_msgs::Path blocked = BlockedRun(now.map, now.ahead);
  const bool is_bilateral = nav_controller::IsBilateralObstacle(&now.map, now.ahead);
  const auto [left, right] =
      nav_controller::CalculatePerpendicularPoints(blocked.poses.front(), blocked.poses.back(), kSidePoint);
  blockage_ = std::make_shared<Blockage>(Blockage{blocked, left, right, is_bilateral});
  if (refusal_.empty()) {
    const bool is_seen = nav_controller::IsBlockingPathLaserObstacle(&now.map, now.ahead);
    const bool is_box = planner_.GetLocalMapObstacle().IsInObstacle(blocked.poses.front().pose.position);
    Tell("blocked", blocked.poses.front().pose.position,
         Format("path blocked %.2f m ahead over %.2f m %s, %s", Distance(now.pose, blocked.poses.front().pose.position),
                PathLength(blocked),
                is_box    ? "by virtual boxes"
                : is_seen ? "by a laser obstacle"
                          : "by an obstacle beside it",
                is_bilateral ? "closed on both sides (bilateral)" : "a side is open"));
  }

  const std::size_t last_width = std::size(kCorridorWidths) - 1;
  const int width = CellsFor(kCorridorWidths[std::min(attempts_ + (is_bilateral ? 1 : 0), last_width)], now.map);
  corridor_->prepare(width, &now.map, now.ahead);

  const nav_msgs::Path path = StretchToRejoin(now, blocked);
  bool smoothed = true;
  const std::optional<nav_msgs::Path> detour = CreateSafePlan(now, path, &smoothed);
  if (!detour) {
    Refused(now, path, width);
    return false;
  }
  Tell("corridor", now.robot.pose.position,
       Format("%d cells (%.2f m) to each side of the path", width, width * now.map.getResolution()));
  const bool is_repaired =
      Distance(detour->poses.back().pose.position, path.poses.back().pose.position) > now.map.getResolution();
  BeginDetour(now, {ros::Time::now(), now.pose, now.map, corridor_->getOccupancyGrid(&now.map), boxes_, path, blocked,
                    *detour, is_repaired, smoothed});
  return true;
}

// The shortcut smoother sees obstacles through the cost bytes 94..127 alone, and a line of cells that it found free may
// brush past others. So each segment is asked about again, and each pose that the detour will be tracked by; one that
// is blocked brings back the detour as it was searched, cell by cell.
std::optional<nav_msgs::Path> PathFollower::CreateSafePlan(const Situation& now, const nav_msgs::Path& path,
                                                           bool* smoothed) {
  const std::optional<nav_msgs::Path> detour = planner_.CreatePlan(&now.map, corridor_, now.robot, path, true);
  if (!detour) {
    return detour;
  }
  const auto is_blocked = [&](const geometry_msgs::PoseStamped& a, const geometry_msgs::PoseStamped& b) {
    return nav_controller::IsBlockingBetweenPoints(&now.map, a.pose.position, b.pose.position) ||
           PassesClose(now.map, a.pose.position, b.pose.position);
  };
  const auto first_blocked = std::adjacent_find(detour->poses.begin(), detour->poses.end(), is_blocked);
  const nav_msgs::Path tracked = nav_core::math::LinearInterpolation(*detour, kTrackingSpacing);
  *smoothed = first_blocked == detour->poses.end() && BlockedRun(now.map, tracked).poses.empty();
  return *smoothed ? detour : planner_.CreatePlan(&now.map, corridor_, now.robot, path, false);
}

// What the planner is to plan along: the path's stretch ahead, without an end that it could not reach. It ends on the
// local map, because the stretch ahead does. The way from the robot to its path is no place to fall back to. The
// planner repairs an end on the map's obstacles itself, unless the free place before it is near; it does not for an end
// in a box.
nav_msgs::Path PathFollower::StretchToRejoin(const Situation& now, const nav_msgs::Path& blocked) const {
  nav_msgs::Path stretch = now.ahead;
  const auto ends_badly = [&] {
    const geometry_msgs::Point& end = stretch.poses.back().pose.position;
    return attempts_ > 0 ? IsBlocked(now.map, end) : planner_.GetLocalMapObstacle().IsInObstacle(end);
  };
  while (stretch.poses.size() > 1 && ends_badly()) {
    stretch.poses.pop_back();
  }
  const auto first_blocked = static_cast<std::size_t>(IndexOf(now.ahead, blocked.poses.front()));
  if (stretch.poses.size() <= first_blocked + 1) {
    stretch = now.ahead;
  }
  if (stretch.poses.size() > now.way_back) {
    stretch.poses.erase(stretch.poses.begin(), stretch.poses.begin() + static_cast<std::ptrdiff_t>(now.way_back));
  }
  return stretch;
}

// Another try is made with a wider corridor, unless the robot stands too near to an obstacle: it has to leave that
// first. When the widest is too narrow as well, what the boxes remember may have gone meanwhile: the bumper
// will tell.
void PathFollower::Refused(const Situation& now, const nav_msgs::Path& path, int width) {
  const bool is_goal = Distance(path.poses.back().pose.position, goal_) < kArrivalDistance;
  const Refusal why = WhyRefused(planner_, now.map, now.robot, path);
  refusal_ = Explain(why, is_goal ? "the goal" : "the end of the stretch ahead", width * now.map.getResolution());
  Tell("refused", now.robot.pose.position, refusal_);
  if (why == Refusal::kStartOccupied) {
    return;
  }
  ++attempts_;
  if (attempts_ >= std::size(kCorridorWidths) && !boxes_.empty()) {
    ForgetBoxes(now);
  }
}

void PathFollower::ForgetRefusals() {
  attempts_ = 0;
  refusal_.clear();
}

void PathFollower::ForgetBoxes(const Situation& now) {
  Tell("forget", now.robot.pose.position,
       Format("%zu virtual boxes: no way is left around them, and they may stand for nothing", boxes_.size()));
  boxes_closed_the_way_ = true;
  planner_.ClearAllBoxObstacle();
  boxes_.clear();
  planner_.VisualizeAllObstacles();
}

void PathFollower::BeginDetour(const Situation& now, DetourReport report) {
  ForgetRefusals();
  detour_ = std::make_shared<DetourReport>(report);
  detour_end_ = report.detour.poses.back().pose.position;
  detour_tracker_.InitializePath(report.detour);
  if (report.goal_repaired) {
    Tell("repair", detour_end_,
         Format("the local goal (%.2f, %.2f) is occupied: falls back to (%.2f, %.2f) on the path",
                report.path.poses.back().pose.position.x, report.path.poses.back().pose.position.y, detour_end_.x,
                detour_end_.y));
  }
  Tell("detour", report.detour.poses.front().pose.position,
       Format("detour of %.2f m over %zu poses, %s, back on the path at (%.2f, %.2f)", PathLength(report.detour),
              report.detour.poses.size(),
              report.smoothed ? "smoothed and checked" : "unsmoothed: a shortcut was blocked", detour_end_.x,
              detour_end_.y));
  SwitchTo(Mode::kFollowDetour, now.pose);
  observer_->OnDetour(report);
}

Command PathFollower::FollowDetour(const Situation& now) {
  detour_tracker_.UpdateIndex(now.robot);
  const nav_msgs::Path ahead = detour_tracker_.PathTransformToLocalMap(&now.map);
  if (ahead.poses.empty() || Distance(now.pose, detour_end_) < kRejoinDistance) {
    EndDetour(now);
    return DriveAlong(now, now.ahead, kLookahead);
  }
  if (!BlockedRun(now.map, ahead).poses.empty()) {
    Tell("blocked", now.robot.pose.position, "the detour is blocked as well: another one is needed");
    SwitchTo(Mode::kFollowPath, now.pose);
    return {};
  }
  return DriveAlong(now, ahead, PathLength(ahead) + kLookahead);
}

// The index looks only a few poses ahead. Where a detour cuts off a bend it may have stayed behind, and would lead the
// robot back to the bend's beginning: so it is walked along the stretch that the detour replaced.
void PathFollower::EndDetour(const Situation& now) {
  for (const geometry_msgs::PoseStamped& pose : detour_->path.poses) {
    tracker_.UpdateIndex(pose);
    if (Distance(pose.pose.position, detour_end_) < now.map.getResolution()) {
      break;
    }
  }
  Track(now.robot, now.map);
  Tell("rejoined", now.robot.pose.position,
       Format("back on the path, %.2f m off it, index %zu", deviation_, static_cast<std::size_t>(index())));
  contacts_.Reset();
  boxes_closed_the_way_ = false;
  SwitchTo(Mode::kFollowPath, now.pose);
}

// ---- Small things ----

void PathFollower::SwitchTo(Mode mode, const Pose2d& pose) {
  if (mode != Mode::kFollowDetour) {
    detour_.reset();
  }
  mode_ = mode;
  mode_pose_ = pose;
  mode_time_ = ros::Time::now();
}

void PathFollower::Finish(Outcome outcome, const geometry_msgs::PoseStamped& robot, const std::string& reason) {
  detour_.reset();
  outcome_ = outcome;
  reason_ = reason;
  Tell(outcome == Outcome::kReached ? "arrival" : "stop", robot.pose.position, reason);
}

void PathFollower::Tell(const std::string& kind, const geometry_msgs::Point& position, const std::string& text) const {
  observer_->OnEvent({ros::Time::now(), kind, position, text});
}

}  // namespace controller_base_demo
