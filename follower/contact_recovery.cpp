#include "follower/contact_recovery.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "controller_base/obstacle_blocking_analyzer.h"
#include "follower/format.h"
#include "follower/steering.h"
#include "nav_core/math/box2d.h"

namespace controller_base::follower {
namespace {

using nav_controller::EventDirection;

constexpr double kBoxLength = 0.2;  // m along its heading, and
constexpr double kBoxWidth = 0.1;   // m across it; the sizes of LocalMapObstacle

// Where boxes stand around a contact.
constexpr double kBoxesAlong[] = {-0.15, -0.05, 0.05, 0.15};  // m, from the robot to the contact and beyond
constexpr double kBoxesAcross[] = {-0.2, 0.0, 0.2};           // m

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

}  // namespace

void ContactRecovery::Reset() {
  StartOver();
  contacts_.Reset();
  boxes_closed_the_way_ = false;
  if (!boxes_.empty()) {
    RemoveBoxes();
  }
}

void ContactRecovery::StartOver() {
  last_contact_ = -std::numeric_limits<double>::infinity();
  Abandon();
}

void ContactRecovery::RestartTimers() {
  contacts_.Reset();
  phase_time_ = ros::Time::now();
}

int ContactRecovery::React(const Pose2d& robot, double elapsed) {
  const EventDirection direction = contacts_.GetEventDirection();
  int signed_count = 0;
  if (!contacts_.FetchCollision() || !contacts_.ProcessNewEvent(turn_angle_)) {
    return 0;
  }
  contacts_.ProcessNewCollision(signed_count);
  const int count = std::abs(signed_count);
  contact_direction_ = robot.yaw + Side(direction) * parameters_.bumper_side_bearing;
  contact_point_ = PointAt(robot, contact_direction_, parameters_.robot_radius);
  reporter_.Tell(EventKind::kContact, contact_point_,
                 Format("bumper: %s, contact %d since the last free stretch", Name(direction), count));
  if (contacts_.ShouldAbort()) {
    return count;
  }
  last_contact_ = elapsed;
  Begin(Phase::kBackOff, robot);
  return 0;
}

Command ContactRecovery::Recover(const PlannerView& view, const Pose2d& robot) {
  return phase_ == Phase::kBackOff ? BackOff(view, robot) : Turn(view, robot);
}

Command ContactRecovery::BackOff(const PlannerView& view, const Pose2d& robot) {
  const geometry_msgs::Point behind = PointAt(robot, robot.yaw + kPi, parameters_.back_off_room);
  const bool has_room = !nav_controller::IsBlockingBetweenPoints(&view.map(), PositionOf(robot), behind);
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

Command ContactRecovery::Turn(const PlannerView& view, const Pose2d& robot) {
  const double left = NormalizeAngle(phase_pose_.yaw + turn_angle_ - robot.yaw);
  if (std::abs(left) > parameters_.turn_tolerance &&
      ros::Time::now() - phase_time_ < ros::Duration(parameters_.longest_turn)) {
    return Steering::TurnBy(left);
  }
  DropBoxes(view, robot);
  Abandon();
  return {};
}

// None is dropped on the robot's own cell, where every search would end before it begins.
void ContactRecovery::DropBoxes(const PlannerView& view, const Pose2d& robot) {
  unsigned int mx = 0;
  unsigned int my = 0;
  nav_core::math::Vec2d own_cell;
  if (!view.map().worldToMap(robot.x, robot.y, mx, my)) {
    return;
  }
  view.map().mapToWorld(mx, my, own_cell.x, own_cell.y);
  std::size_t dropped = 0;
  for (const VirtualBox& box : BoxesAroundContact()) {
    const nav_core::math::Vec2d center(box.center.x, box.center.y);
    if (!nav_core::math::Box2d(center, box.heading, kBoxLength, kBoxWidth).IsPointIn(own_cell)) {
      planner_->CreateBoxObstacle(box.center, box.heading);
      boxes_.push_back(box);
      ++dropped;
    }
  }
  planner_->VisualizeAllObstacles();
  reporter_.Tell(EventKind::kBox, contact_point_,
                 Format("%zu virtual boxes around the contact, %zu in all", dropped, boxes_.size()));
}

// The planner moves a point between boxes of 0.2 m x 0.1 m, but the robot is a disc: a wall of boxes keeps its centre a
// radius away from the contact. Where such walls closed the way, which may be narrow and open, a column of boxes has to
// do, and further contacts tell how wide the way is.
std::vector<VirtualBox> ContactRecovery::BoxesAroundContact() const {
  const double heading = contact_direction_ + 0.5 * kPi;
  std::vector<VirtualBox> boxes;
  for (const double along : kBoxesAlong) {
    for (const double across : kBoxesAcross) {
      if (boxes_closed_the_way_ && across != 0.0) {
        continue;
      }
      geometry_msgs::Point center = contact_point_;
      center.x += along * std::cos(contact_direction_) + across * std::cos(heading);
      center.y += along * std::sin(contact_direction_) + across * std::sin(heading);
      boxes.push_back({center, heading});
    }
  }
  return boxes;
}

void ContactRecovery::ForgetBoxes(const Pose2d& robot) {
  reporter_.Tell(
      EventKind::kForget, robot,
      Format("%zu virtual boxes: no way is left around them, and they may stand for nothing", boxes_.size()));
  boxes_closed_the_way_ = true;
  RemoveBoxes();
}

void ContactRecovery::RemoveBoxes() {
  boxes_.clear();
  planner_->ClearAllBoxObstacle();
  planner_->VisualizeAllObstacles();
}

void ContactRecovery::Rejoined() {
  contacts_.Reset();
  boxes_closed_the_way_ = false;
}

void ContactRecovery::Begin(Phase phase, const Pose2d& robot) {
  phase_ = phase;
  phase_pose_ = robot;
  phase_time_ = ros::Time::now();
}

}  // namespace controller_base::follower
