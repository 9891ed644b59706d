#include "follower/detour_in_use.h"

#include "follower/format.h"
#include "follower/path_geometry.h"

namespace controller_base::follower {
namespace {

void TellOfRepair(const Reporter& reporter, const geometry_msgs::Point& goal, const geometry_msgs::Point& end) {
  reporter.Tell(EventKind::kRepair, end,
                Format("the local goal (%.2f, %.2f) is occupied: falls back to (%.2f, %.2f) on the path", goal.x,
                       goal.y, end.x, end.y));
}

}  // namespace

void DetourInUse::Start(const DetourReport& detour) {
  report_ = std::make_shared<DetourReport>(detour);
  blocked_since_.reset();
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

}  // namespace controller_base::follower
