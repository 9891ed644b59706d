#include "controller_base/local_map_obstacle.h"

#include <ros/node_handle.h>
#include <ros/time.h>
#include <visualization_msgs/Marker.h>

#include <algorithm>
#include <cstdint>

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

bool LocalMapObstacle::IsInObstacle(const geometry_msgs::Point& point) const {
  return std::any_of(boxes_.begin(), boxes_.end(),
                     [&](const Box2d& box) { return box.IsPointIn(Vec2d(point.x, point.y)); });
}

void LocalMapObstacle::CreateNewBox(const geometry_msgs::Point& center, double heading) {
  boxes_.emplace_back(Vec2d(center.x, center.y), heading, kBoxLength, kBoxWidth);
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
