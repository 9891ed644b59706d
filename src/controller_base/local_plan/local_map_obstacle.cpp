#include "controller_base/local_map_obstacle.h"

#include <ros/node_handle.h>
#include <ros/time.h>
#include <visualization_msgs/Marker.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace nav_controller {
namespace {

using nav_core::math::Box2d;
using nav_core::math::Vec2d;
using visualization_msgs::Marker;

constexpr char kMarkerTopic[] = "/nav_controller/local_map_obstacles";
constexpr std::uint32_t kMarkerQueueSize = 10;
constexpr double kMarkerLifetime = 10.0;  // seconds
constexpr double kLineWidth = 0.01;       // metres
constexpr double kBoxLength = 0.2;        // metres, along the heading
constexpr double kBoxWidth = 0.1;         // metres, across the heading

constexpr double kBinSize = 0.5;     // metres, the side of a square; a box touches four at most
constexpr double kBinMargin = 0.01;  // metres around a box, far more than what a point on its edge may be off

// The number of the square along one axis. Points beyond what 32 bits number share the outermost square.
std::int32_t BinAlong(double coordinate) {
  constexpr double kLast = std::numeric_limits<std::int32_t>::max() - 1;  // leaves a loop room to step past it
  const double bin = coordinate / kBinSize;
  if (!(bin > -kLast)) {
    return static_cast<std::int32_t>(-kLast);
  }
  if (bin > kLast) {
    return static_cast<std::int32_t>(kLast);
  }
  const auto truncated = static_cast<std::int32_t>(bin);
  return truncated > bin ? truncated - 1 : truncated;
}

std::uint64_t KeyOf(std::int32_t bin_x, std::int32_t bin_y) {
  return std::uint64_t{static_cast<std::uint32_t>(bin_y)} << 32 | static_cast<std::uint32_t>(bin_x);
}

// Calls `visit(key)` for every square that the box touches; a box that is not finite contains no point and touches
// none.
template <typename Visit>
void ForEachBin(const Box2d& box, Visit&& visit) {
  Vec2d lowest(std::numeric_limits<double>::max(), std::numeric_limits<double>::max());
  Vec2d highest(-lowest.x, -lowest.y);
  for (const Vec2d& corner : box.GetAllCorners()) {
    if (!std::isfinite(corner.x) || !std::isfinite(corner.y)) {
      return;
    }
    lowest = Vec2d(std::min(lowest.x, corner.x), std::min(lowest.y, corner.y));
    highest = Vec2d(std::max(highest.x, corner.x), std::max(highest.y, corner.y));
  }
  for (std::int32_t y = BinAlong(lowest.y - kBinMargin); y <= BinAlong(highest.y + kBinMargin); ++y) {
    for (std::int32_t x = BinAlong(lowest.x - kBinMargin); x <= BinAlong(highest.x + kBinMargin); ++x) {
      visit(KeyOf(x, y));
    }
  }
}

Marker EmptyMarker(const ros::Time& now) {
  Marker marker;
  marker.header.frame_id = "map";
  marker.header.stamp = now;
  marker.ns = "obstacles";
  return marker;
}

Marker DeleteAllMarker(const ros::Time& now) {
  Marker marker = EmptyMarker(now);
  marker.action = Marker::DELETEALL;
  return marker;
}

geometry_msgs::Point ToPoint(const Vec2d& corner) {
  geometry_msgs::Point point;
  point.x = corner.x;
  point.y = corner.y;
  return point;
}

Marker OutlineMarker(const Box2d& box, int id, const ros::Time& now) {
  Marker marker = EmptyMarker(now);
  marker.id = id;
  marker.type = Marker::LINE_STRIP;
  marker.action = Marker::ADD;
  marker.pose.orientation.w = 1.0;
  marker.scale.x = kLineWidth;
  marker.color.r = 1.0F;
  marker.color.a = 1.0F;
  marker.lifetime = ros::Duration(kMarkerLifetime);
  for (const Vec2d& corner : box.GetAllCorners()) {
    marker.points.push_back(ToPoint(corner));
  }
  if (!marker.points.empty()) {
    marker.points.push_back(geometry_msgs::Point(marker.points.front()));  // closes the strip
  }
  return marker;
}

}  // namespace

LocalMapObstacle::LocalMapObstacle()
    : publisher_(ros::NodeHandle().advertise<Marker>(kMarkerTopic, kMarkerQueueSize)) {}

void LocalMapObstacle::Reset() {
  boxes_.clear();
  boxes_by_bin_.clear();
}

bool LocalMapObstacle::IsInObstacle(const geometry_msgs::Point& point) const {
  if (boxes_.empty()) {
    return false;
  }
  const auto bin = boxes_by_bin_.find(KeyOf(BinAlong(point.x), BinAlong(point.y)));
  return bin != boxes_by_bin_.end() && std::any_of(bin->second.begin(), bin->second.end(), [&](std::size_t index) {
           return boxes_[index].IsPointIn(Vec2d(point.x, point.y));
         });
}

void LocalMapObstacle::CreateNewBox(const geometry_msgs::Point& center, double heading) {
  const std::size_t index = boxes_.size();
  const Box2d& box = boxes_.emplace_back(Vec2d(center.x, center.y), heading, kBoxLength, kBoxWidth);
  ForEachBin(box, [&](BinKey key) { boxes_by_bin_[key].push_back(index); });
}

void LocalMapObstacle::PublishBox2dMarker(const Box2d& box, int id) const {
  publisher_.publish(OutlineMarker(box, id, ros::Time::now()));
}

void LocalMapObstacle::VisualizeAllObstacles() const {
  publisher_.publish(DeleteAllMarker(ros::Time::now()));
  int id = 0;
  for (const Box2d& box : boxes_) {
    PublishBox2dMarker(box, id++);
  }
}

}  // namespace nav_controller
