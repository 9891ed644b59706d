#include "follower/contact_recovery.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "controller_base/obstacle_blocking_analyzer.h"
#include "follower/format.h"
#include "follower/steering.h"
#include "nav_core/math/box2d.h"

namespace controller_base::follower {
namespace {

using nav_controller::EventDirection;

constexpr double kBoxLength = 0.2;  // m along its heading, and
constexpr double kBoxWidth = 0.1;   // m across it; the sizes of LocalMapObstacle

// Where boxes stand around a contact. The robot is a disc: its centre stays a radius away from what it touched.
constexpr double kBoxesAlong[] = {-0.15, -0.05, 0.05, 0.15};  // m, from the robot to the contact and beyond

// The robot still stands against what it touched behind: it must not be boxed in.
constexpr double kNearestBehind = -0.1;  // m

constexpr double kLongestGap = 0.2;    // s between two reports of one press
constexpr double kLongestPress = 0.7;  // s; longer than it takes to brake and to leave

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

// Where on the robot the bumper was pressed, as well as its three switches tell: -1 right, 0 in front, 1 left.
double Side(EventDirection direction) {
  return direction == EventDirection::Left ? 1.0 : direction == EventDirection::Right ? -1.0 : 0.0;
}

bool IsWithin(const ros::Time& stamp, const ros::Time& begin, double seconds) {
  return stamp >= begin && stamp <= begin + ros::Duration(seconds);
}

}  // namespace

void ContactRecovery::Reset() {
  StartOver();
  contacts_.Reset();
  closed_ = Closed::kWall;
  contacted_.clear();
  if (!boxes_.empty()) {
    RemoveBoxes();
  }
}

void ContactRecovery::StartOver() {
  last_contact_ = -std::numeric_limits<double>::infinity();
  TakeBackContact();
  Abandon();
}

void ContactRecovery::RestartTimers() {
  contacts_.Reset();
  phase_time_ = ros::Time::now();
}

void ContactRecovery::AddContact(const nav_controller::CollisionEvent& contact) {
  const std::lock_guard<std::mutex> lock(press_mutex_);
  const bool lasts =
      IsWithin(contact.stamp, last_report_, kLongestGap) && IsWithin(contact.stamp, press_began_, kLongestPress);
  last_report_ = contact.stamp;
  if (!lasts) {
    press_began_ = contact.stamp;
    contacts_.Add(contact);
  }
}

void ContactRecovery::AddBackContact(const ros::Time& stamp) {
  const std::lock_guard<std::mutex> lock(press_mutex_);
  if (!IsWithin(stamp, last_back_report_, kLongestGap)) {
    waiting_behind_ = stamp;
  }
  last_back_report_ = stamp;
}

// On the body's rim.
ContactRecovery::Contact ContactRecovery::ContactAt(const Pose2d& robot, double bearing) const {
  const double direction = robot.yaw + bearing;
  return {PointAt(robot, direction, parameters_.robot_radius), direction};
}

int ContactRecovery::React(const Pose2d& robot, double elapsed) {
  const EventDirection direction = contacts_.GetEventDirection();
  int signed_count = 0;
  if (!contacts_.FetchCollision() || !contacts_.ProcessNewEvent(turn_angle_)) {
    return 0;
  }
  contacts_.ProcessNewCollision(signed_count);
  const int count = std::abs(signed_count);
  contact_ = ContactAt(robot, Side(direction) * parameters_.bumper_side_bearing);
  reporter_.Tell(EventKind::kContact, contact_.point,
                 Format("bumper: %s, contact %d since the last free stretch", Name(direction), count));
  if (contacts_.ShouldAbort()) {
    return count;
  }
  last_contact_ = elapsed;
  Begin(Phase::kBackOff, robot);
  return 0;
}

void ContactRecovery::ReactBehind(const PlannerView& view, const Pose2d& robot, double elapsed) {
  const std::optional<ros::Time> stamp = TakeBackContact();
  if (!stamp || ros::Time::now() - *stamp > ros::Duration(kLongestGap)) {
    return;
  }
  Contact contact = ContactAt(robot, kPi);
  contact.is_behind = true;
  const bool backed_into = phase_ == Phase::kBackOff;
  reporter_.Tell(EventKind::kContact, contact.point,
                 backed_into ? "bumper: back, no farther back" : "bumper: back, driving on");
  DropBoxes(contact, view, robot);
  if (backed_into) {
    last_contact_ = elapsed;
    Begin(Phase::kTurn, robot);
  }
}

std::optional<ros::Time> ContactRecovery::TakeBackContact() {
  const std::lock_guard<std::mutex> lock(press_mutex_);
  return std::exchange(waiting_behind_, std::nullopt);
}

Command ContactRecovery::Recover(const PlannerView& view, const Pose2d& robot) {
  return phase_ == Phase::kBackOff ? BackOff(view, robot) : Turn(view, robot);
}

Command ContactRecovery::BackOff(const PlannerView& view, const Pose2d& robot) {
  const geometry_msgs::Point behind = PointAt(robot, robot.yaw + kPi, parameters_.back_off_room);
  const bool has_room =
      !nav_controller::IsBlockingBetweenPoints(&view.map(), PositionOf(robot), behind) && !IsTouchedBehind(robot);
  const bool is_over = Distance(phase_pose_, robot) >= parameters_.back_off_distance ||
                       ros::Time::now() - phase_time_ > ros::Duration(parameters_.longest_back_off);
  if (has_room && !is_over) {
    return {-parameters_.back_off_speed, 0.0};
  }
  reporter_.Tell(
      EventKind::kTurn, robot,
      Format("backed off %.2f m, turning %+.0f degrees", Distance(phase_pose_, robot), turn_angle_ * 180 / kPi));
  Begin(Phase::kTurn, robot);
  return {};
}

// Whether backing off would lead against what was touched behind.
bool ContactRecovery::IsTouchedBehind(const Pose2d& robot) const {
  const geometry_msgs::Point back = PointAt(robot, robot.yaw + kPi, parameters_.robot_radius);
  return std::any_of(contacted_.begin(), contacted_.end(), [&](const Contact& contact) {
    return contact.is_behind && Distance(back, contact.point) < parameters_.back_off_room;
  });
}

Command ContactRecovery::Turn(const PlannerView& view, const Pose2d& robot) {
  const double left = NormalizeAngle(phase_pose_.yaw + turn_angle_ - robot.yaw);
  if (std::abs(left) > parameters_.turn_tolerance &&
      ros::Time::now() - phase_time_ < ros::Duration(parameters_.longest_turn)) {
    return Steering::TurnBy(left);
  }
  DropBoxes(contact_, view, robot);
  Abandon();
  return {};
}

void ContactRecovery::DropBoxes(const Contact& contact, const PlannerView& view, const Pose2d& robot) {
  if (!view.map().IsInmap(robot.x, robot.y)) {
    return;
  }
  contacted_.push_back(contact);
  const std::size_t dropped = DropBoxesAround(contact, view, robot);
  planner_->VisualizeAllObstacles();
  reporter_.Tell(EventKind::kBox, contact.point,
                 Format("%zu virtual boxes around the contact, %zu in all", dropped, boxes_.size()));
}

// None is dropped on the robot's own cell, where every search would end before it begins.
std::size_t ContactRecovery::DropBoxesAround(const Contact& contact, const PlannerView& view, const Pose2d& robot) {
  const nav_core::math::Vec2d own_cell = view.CellCenterAt(robot);
  std::size_t dropped = 0;
  for (const VirtualBox& box : BoxesAround(contact, closed_)) {
    const nav_core::math::Vec2d center(box.center.x, box.center.y);
    if (!nav_core::math::Box2d(center, box.heading, kBoxLength, kBoxWidth).IsPointIn(own_cell)) {
      planner_->CreateBoxObstacle(box.center, box.heading);
      boxes_.push_back(box);
      ++dropped;
    }
  }
  return dropped;
}

// Metres across the direction of the contact.
std::vector<double> ContactRecovery::BoxesAcross(Closed closed) {
  switch (closed) {
    case Closed::kWall:
      return {-0.2, 0.0, 0.2};
    case Closed::kPlace:
      return {-0.1, 0.1};
    case Closed::kColumn:
      break;
  }
  return {0.0};
}

// The planner moves a point between boxes of 0.2 m x 0.1 m, but the robot is a disc: a wall of boxes keeps its centre a
// radius away from the contact and from what may lie beside it.
std::vector<VirtualBox> ContactRecovery::BoxesAround(const Contact& contact, Closed closed) {
  const double heading = contact.direction + 0.5 * kPi;
  std::vector<VirtualBox> boxes;
  for (const double along : kBoxesAlong) {
    if (contact.is_behind && along < kNearestBehind) {
      continue;
    }
    for (const double across : BoxesAcross(closed)) {
      boxes.push_back({PointAt(PointAt(contact.point, contact.direction, along), heading, across), heading});
    }
  }
  return boxes;
}

void ContactRecovery::GiveWay(const PlannerView& view, const Pose2d& robot) {
  const std::size_t held = boxes_.size();
  if (closed_ == Closed::kWall) {
    closed_ = Closed::kPlace;
    shrunk_at_ = ros::Time::now();
    RemoveBoxes();
    for (const Contact& contact : contacted_) {
      DropBoxesAround(contact, view, robot);
    }
    planner_->VisualizeAllObstacles();
    reporter_.Tell(EventKind::kForget, robot,
                   Format("%zu virtual boxes: no way is left around them; %zu stay where something was touched", held,
                          boxes_.size()));
  } else if (closed_ == Closed::kPlace && ros::Time::now() - shrunk_at_ >= ros::Duration(parameters_.forget_pause)) {
    closed_ = Closed::kColumn;
    contacted_.clear();
    RemoveBoxes();
    reporter_.Tell(EventKind::kForget, robot,
                   Format("%zu virtual boxes: no way is left around them, and what was touched may be gone", held));
  }
}

void ContactRecovery::RemoveBoxes() {
  boxes_.clear();
  planner_->ClearAllBoxObstacle();
  planner_->VisualizeAllObstacles();
}

void ContactRecovery::Rejoined() {
  contacts_.Reset();
  closed_ = Closed::kWall;
}

void ContactRecovery::Begin(Phase phase, const Pose2d& robot) {
  phase_ = phase;
  phase_pose_ = robot;
  phase_time_ = ros::Time::now();
}

}  // namespace controller_base::follower
