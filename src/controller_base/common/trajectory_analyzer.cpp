#include "controller_base/trajectory_analyzer.h"

#include <ros/time.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "controller_base/common/planar_distance.h"
#include "controller_base/common/resample.h"
#include "controller_base/internal/logging.h"

namespace nav_controller {
namespace {

using internal::PlanarDistance;

constexpr double kResampleSpacing = 0.05;      // metres
constexpr double kPointSegmentLength = 1e-6;   // metres; a shorter segment is a point
constexpr double kBudgetSpeed = 0.12;          // metres per second
constexpr double kShortestBudgetLength = 1.0;  // metres; a shorter path gets the time of this length
constexpr double kLocalMapMargin = 0.15;       // metres beyond half the map's longer side
constexpr char kMapFrame[] = "map";

}  // namespace

TrajectoryAnalyzer::TrajectoryAnalyzer(const nav_msgs::Path& path) { InitializePath(path); }

void TrajectoryAnalyzer::InitializePath(const nav_msgs::Path& path) {
  if (path.poses.empty()) {
    return;
  }
  path_ = internal::Resample(path, kResampleSpacing, internal::Orientations::kUpright);
  current_index_ = 0;
  is_deviated_ = false;
}

void TrajectoryAnalyzer::UpdateIndex(const geometry_msgs::PoseStamped& robot_pose) {
  if (path_.poses.empty()) {
    return;
  }
  const std::uint64_t first = current_index_ > search_range_ ? current_index_ - search_range_ : 0;
  const std::uint64_t last = std::min<std::uint64_t>(current_index_ + search_range_, path_.poses.size() - 1);
  const NearestSegment nearest = Nearest(robot_pose.pose.position, first, last, current_index_);

  const bool deviated = !(nearest.distance <= deviation_threshold_);
  if (deviated && !is_deviated_) {
    NAV_CONTROLLER_WARN("Robot has deviated from path! Distance: %.2fm", nearest.distance);
  }
  is_deviated_ = deviated;
  current_index_ = nearest.index;
}

double TrajectoryAnalyzer::DistanceToPathSegment(const geometry_msgs::Point& p, const geometry_msgs::Pose& a,
                                                 const geometry_msgs::Pose& b) const {
  const double dx = b.position.x - a.position.x;
  const double dy = b.position.y - a.position.y;
  const double length = std::sqrt(dx * dx + dy * dy);
  if (length < kPointSegmentLength) {
    return PlanarDistance(a.position, p);
  }
  const double vx = p.x - a.position.x;
  const double vy = p.y - a.position.y;
  const double along = (vx * dx + vy * dy) / length;
  if (along < 0.0) {
    return PlanarDistance(a.position, p);
  }
  if (along > length) {
    return PlanarDistance(b.position, p);
  }
  const double across_x = vx - along * (dx / length);
  const double across_y = vy - along * (dy / length);
  return std::sqrt(across_x * across_x + across_y * across_y);
}

geometry_msgs::Point TrajectoryAnalyzer::QueryNearestPoint(const geometry_msgs::Point& p) const {
  return path_.poses[Nearest(p, 0, path_.poses.size() - 1, 0).index].pose.position;
}

geometry_msgs::Point TrajectoryAnalyzer::QueryNearestTarget(double, double, double) const { return {}; }

geometry_msgs::Point TrajectoryAnalyzer::QueryNearestTarget(const geometry_msgs::PoseStamped&, double) const {
  return {};
}

void TrajectoryAnalyzer::GenerateControllProgress(ControlProgress* progress) {
  progress->total_distance = 0.0;
  for (std::size_t i = 1; i < path_.poses.size(); ++i) {
    progress->total_distance += PlanarDistance(path_.poses[i - 1].pose.position, path_.poses[i].pose.position);
  }
  progress->total_time = std::max(progress->total_distance, kShortestBudgetLength) / kBudgetSpeed;
}

nav_msgs::Path TrajectoryAnalyzer::PathTransformToLocalMap(const LocalMap* map) const {
  if (path_.header.frame_id != kMapFrame) {
    NAV_CONTROLLER_ERROR("[TrajectoryAnalyzer] Path frame is not map");
    return {};
  }
  nav_msgs::Path ahead;
  ahead.header = path_.header;
  ahead.header.stamp = ros::Time::now();

  const double radius =
      std::max(map->getSizeInCellsX(), map->getSizeInCellsY()) * map->getResolution() * 0.5 + kLocalMapMargin;
  double arc_length = 0.0;
  for (std::size_t i = current_index_; i < path_.poses.size(); ++i) {
    const geometry_msgs::PoseStamped& pose = path_.poses[i];
    if (i > current_index_) {
      arc_length += PlanarDistance(path_.poses[i - 1].pose.position, pose.pose.position);
    }
    if (arc_length > radius) {
      break;
    }
    if (map->IsInmap(pose.pose.position.x, pose.pose.position.y)) {
      ahead.poses.push_back(pose);
    }
  }
  return ahead;
}

TrajectoryAnalyzer::NearestSegment TrajectoryAnalyzer::Nearest(const geometry_msgs::Point& p, std::uint64_t first,
                                                               std::uint64_t last, std::uint64_t otherwise) const {
  NearestSegment nearest{otherwise, std::numeric_limits<double>::max()};
  for (std::uint64_t i = first; i < last; ++i) {
    const double distance = DistanceToPathSegment(p, path_.poses[i].pose, path_.poses[i + 1].pose);
    if (distance < nearest.distance) {
      nearest = {i, distance};
    }
  }
  return nearest;
}

}  // namespace nav_controller
