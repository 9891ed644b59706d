#include "follower/detour_in_use.h"

#include <cmath>

#include "follower/format.h"
#include "follower/path_geometry.h"

namespace controller_base::follower {
namespace {

constexpr double kHeadway = 0.1;  // m; commands that lead so far are more than a turn
constexpr double kPauses = 2.0;   // s; to speed a turn up and down, and to wait for noise in the map to pass

void TellOfRepair(const Reporter& reporter, const geometry_msgs::Point& goal, const geometry_msgs::Point& end) {
  reporter.Tell(EventKind::kRepair, end,
                Format("the local goal (%.2f, %.2f) is occupied: falls back to (%.2f, %.2f) on the path", goal.x,
                       goal.y, end.x, end.y));
}

}  // namespace

void DetourInUse::Start(const DetourReport& detour) {
  report_ = std::make_shared<DetourReport>(detour);
  blocked_since_.reset();
  gets_nowhere_ = false;
  last_cycle_ = ros::Time::now();
  last_yaw_ = detour.robot.yaw;
  RestartHeadway();
  tracker_.Start(detour.detour);
  const geometry_msgs::Point& end = detour.detour.poses.back().pose.position;
  if (detour.goal_repaired) {
    TellOfRepair(reporter_, detour.path.poses.back().pose.position, end);
  }
  reporter_.Tell(EventKind::kDetour, detour.detour.poses.front().pose.position,
                 Format("detour of %.2f m over %zu poses, %s, back on the path at (%.2f, %.2f)",
                        PathLength(detour.detour), detour.detour.poses.size(),
                        detour.smoothed ? "smoothed and checked" : "unsmoothed: a shortcut was blocked", end.x, end.y));
  reporter_.Tell(detour);
}

bool DetourInUse::IsDone(const Pose2d& robot, const nav_msgs::Path& ahead) const {
  return ahead.poses.empty() || Distance(robot, end()) < parameters_.rejoin_distance;
}

bool DetourInUse::IsBlockedForLong(const nav_msgs::Path& blocked) {
  if (blocked.poses.empty()) {
    blocked_since_.reset();
    return false;
  }
  if (!blocked_since_) {
    blocked_since_ = ros::Time::now();
  }
  return ros::Time::now() - *blocked_since_ >= ros::Duration(parameters_.blockage_timeout);
}

bool DetourInUse::GetsNowhere(const Pose2d& robot, const Command& command) {
  const ros::Time now = ros::Time::now();
  const ros::Duration time_to_turn(2.0 * kPi / parameters_.max_turn_rate + kPauses);
  headway_ += command.speed * (now - last_cycle_).toSec();
  turned_ += std::abs(NormalizeAngle(robot.yaw - last_yaw_));
  last_cycle_ = now;
  last_yaw_ = robot.yaw;
  if (headway_ > kHeadway) {
    gets_nowhere_ = false;
    RestartHeadway();
  } else if (now - headway_since_ >= time_to_turn) {
    gets_nowhere_ = turned_ >= kPi;
    RestartHeadway();
  }
  return gets_nowhere_;
}

void DetourInUse::RestartHeadway() {
  headway_since_ = ros::Time::now();
  headway_ = 0.0;
  turned_ = 0.0;
}

}  // namespace controller_base::follower
