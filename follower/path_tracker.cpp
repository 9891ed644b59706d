#include "follower/path_tracker.h"

#include "follower/path_geometry.h"

namespace controller_base::follower {

void PathTracker::Start(const nav_msgs::Path& path) {
  nav_msgs::Path tracked = path;
  if (tracked.poses.size() == 1) {
    tracked.poses.push_back(tracked.poses.front());  // a segment to be near to
  }
  analyzer_.InitializePath(tracked);
  goal_ = path.poses.back().pose.position;
}

nav_controller::ControlProgress PathTracker::Budget() {
  nav_controller::ControlProgress budget;
  analyzer_.GenerateControllProgress(&budget);
  return budget;
}

nav_msgs::Path PathTracker::Track(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
  analyzer_.UpdateIndex(robot);
  nav_msgs::Path stretch = analyzer_.PathTransformToLocalMap(&map);
  if (stretch.poses.size() >= 2) {
    deviation_ = analyzer_.DistanceToPathSegment(robot.pose.position, stretch.poses[0].pose, stretch.poses[1].pose);
  }
  return stretch;
}

void PathTracker::WalkAlong(const nav_msgs::Path& stretch, const geometry_msgs::Point& end, double cell) {
  for (const geometry_msgs::PoseStamped& pose : stretch.poses) {
    analyzer_.UpdateIndex(pose);
    if (Distance(pose.pose.position, end) < cell) {
      return;
    }
  }
}

bool PathTracker::HasArrived(const Pose2d& robot, const nav_msgs::Path& ahead) const {
  return Distance(robot, goal_) < parameters_.goal_tolerance && EndsAtGoal(ahead) &&
         PathLength(ahead) < parameters_.lookahead;
}

bool PathTracker::EndsAtGoal(const nav_msgs::Path& ahead) const {
  return !ahead.poses.empty() && Distance(ahead.poses.back().pose.position, goal_) < parameters_.goal_tolerance;
}

}  // namespace controller_base::follower
