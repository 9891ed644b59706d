#include "follower/path_tracker.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "controller_base/path_interpolation.h"
#include "follower/path_geometry.h"

namespace controller_base::follower {
namespace {

constexpr double kSamePath = 0.1;  // m; paths that lie closer together lead the same way
constexpr std::ptrdiff_t kMatchedAhead =
    3;  // poses; where the next pose of a path that leads the same way is looked for

using Poses = std::vector<geometry_msgs::PoseStamped>;

// The pose of [first, last) that is nearest to `point`; of equals the earlier.
Poses::const_iterator Nearest(Poses::const_iterator first, Poses::const_iterator last,
                              const geometry_msgs::Point& point) {
  return std::min_element(first, last, [&](const auto& a, const auto& b) {
    return Distance(a.pose.position, point) < Distance(b.pose.position, point);
  });
}

// The poses of `path` from its beginning that lead along `driven`, as far as that goes.
std::ptrdiff_t SharedPoses(const Poses& path, const Poses& driven) {
  auto place = Nearest(driven.begin(), driven.end(), path.front().pose.position);
  auto pose = path.begin();
  while (pose != path.end() && place + 1 != driven.end() &&
         Distance(place->pose.position, pose->pose.position) < kSamePath) {
    ++pose;
    const auto end = place + std::min(kMatchedAhead, driven.end() - place);
    place = pose == path.end() ? place : Nearest(place, end, pose->pose.position);
  }
  return pose - path.begin();
}

}  // namespace

void PathTracker::Start(const nav_msgs::Path& path) {
  nav_msgs::Path tracked = path;
  if (tracked.poses.size() == 1) {
    tracked.poses.push_back(tracked.poses.front());  // so that there is a segment
  }
  analyzer_.InitializePath(tracked);
  path_ = nav_core::math::LinearInterpolation(tracked, kTrackingSpacing);
  goal_ = path.poses.back().pose.position;
}

void PathTracker::Continue(const nav_msgs::Path& path) {
  Poses driven = std::move(path_.poses);
  driven.resize(std::min<std::size_t>(index() + 2, driven.size()));  // both ends of the segment at which the robot is
  Start(path);
  const std::ptrdiff_t shared = SharedPoses(path_.poses, driven);
  std::for_each(path_.poses.begin(), path_.poses.begin() + shared,
                [this](const geometry_msgs::PoseStamped& pose) { analyzer_.UpdateIndex(pose); });
}

bool PathTracker::LeadsPast(const geometry_msgs::Point& point, double distance) const {
  const auto rest = path_.poses.begin() + static_cast<std::ptrdiff_t>(index());
  return std::any_of(rest, path_.poses.end(),
                     [&](const auto& pose) { return Distance(pose.pose.position, point) < distance; });
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
  const std::ptrdiff_t here = IndexOf(stretch, path_.poses[index()]);
  auto pose = stretch.poses.begin();
  if (here < static_cast<std::ptrdiff_t>(stretch.poses.size())) {
    pose += here;  // what lies behind would only lead the index back
  }
  for (; pose != stretch.poses.end(); ++pose) {
    analyzer_.UpdateIndex(*pose);
    if (Distance(pose->pose.position, end) < cell) {
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
