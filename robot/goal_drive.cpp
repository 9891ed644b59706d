#include "robot/goal_drive.h"

#include <algorithm>

#include "follower/format.h"
#include "follower/path_geometry.h"
#include "nav_core/math/vec2d.h"

namespace controller_base::robot {
namespace {

using follower::EventKind;
using follower::Format;
using nav_core::math::Vec2d;

constexpr double kSameBox = 1e-6;  // m between the centres

Vec2d PlaceOf(const geometry_msgs::PoseStamped& pose) { return {pose.pose.position.x, pose.pose.position.y}; }

bool IsAt(const geometry_msgs::Pose& pose, const geometry_msgs::Pose& place) {
  return pose.position.x == place.position.x && pose.position.y == place.position.y;
}

}  // namespace

void GoalDrive::Follow(const nav_msgs::Path& path) {
  goal_.reset();
  learned_.clear();
  is_active_ = true;
  drive_.Follow(path);
}

void GoalDrive::GoTo(const geometry_msgs::PoseStamped& goal) {
  goal_ = goal;
  is_active_ = true;
  has_path_ = false;
  plans_ = 0;
}

void GoalDrive::Stop() {
  is_active_ = false;
  goal_.reset();
  learned_.clear();
  drive_.Stop();
}

bool GoalDrive::WantsPlan(const ros::Time& now) const {
  if (!is_active_ || !goal_) {
    return false;
  }
  if (!has_path_ || drive_.state() == DriveState::kFailed) {
    return true;
  }
  return plans_ < kMostPlans && drive_.state() == DriveState::kBlocked &&
         (now - drive_.blocked_since()).toSec() > options_.blocked_timeout &&
         (now - last_plan_).toSec() > options_.replan_pause;
}

void GoalDrive::Plan(const geometry_msgs::PoseStamped& robot, const RobotMap& map, const ros::Time& now) {
  Learn();
  last_plan_ = now;
  ++plans_;
  nav_msgs::Path path = plans_ <= kMostPlans ? Search(robot, map) : nav_msgs::Path();
  if (path.poses.empty()) {
    if (!has_path_ || drive_.state() == DriveState::kFailed) {
      EndWithoutPath();
    }
    return;
  }
  if (IsAt(path.poses.back().pose, goal_->pose)) {
    path.poses.back().pose.orientation = goal_->pose.orientation;
  }
  path.header = robot.header;
  has_path_ = true;
  drive_.Follow(path);
}

// What the laser sees may move away: the first path may lead through it.
nav_msgs::Path GoalDrive::Search(const geometry_msgs::PoseStamped& robot, const RobotMap& map) const {
  nav_msgs::Path path = map.SearchPathAround(learned_, PlaceOf(robot), PlaceOf(*goal_));
  return path.poses.empty() && !has_path_ ? map.SearchPath(PlaceOf(robot), PlaceOf(*goal_)) : path;
}

// The follower forgets its boxes when no path is left around them, and with a path to another goal.
void GoalDrive::Learn() {
  for (const follower::VirtualBox& box : drive_.boxes()) {
    const auto is_same = [&](const follower::VirtualBox& known) {
      return std::abs(known.center.x - box.center.x) < kSameBox && std::abs(known.center.y - box.center.y) < kSameBox;
    };
    if (std::none_of(learned_.begin(), learned_.end(), is_same)) {
      learned_.push_back(box);
    }
  }
}

// A follower that gave up has told why.
void GoalDrive::EndWithoutPath() {
  is_active_ = false;
  const std::string text = Format("no path to the goal (%.2f, %.2f)", goal_->pose.position.x, goal_->pose.position.y);
  drive_.Tell(EventKind::kNoPath, text);
  if (!has_path_) {
    drive_.Stop();
    drive_.Show("no path", text);
  }
}

geometry_msgs::Twist GoalDrive::Cycle(const geometry_msgs::PoseStamped& robot, RobotMap* map) {
  if (!is_active_ || (goal_ && !has_path_)) {
    return {};
  }
  const RobotMap::Local& local = map->LocalAround(robot.pose.position.x, robot.pose.position.y);
  const geometry_msgs::Twist command = drive_.Cycle(robot, local.costs, local.marks);
  const DriveState state = drive_.state();
  if (state == DriveState::kReached || (state == DriveState::kFailed && !goal_)) {
    is_active_ = false;
  }
  return command;
}

}  // namespace controller_base::robot
