#include "demo/messages/markers.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "demo/messages/conversions.h"
#include "follower/inflation.h"
#include "nav_core/math/box2d.h"
#include "simulation/obstacle_outline.h"

namespace controller_base::demo {
namespace {

using nav_core::math::Box2d;
using visualization_msgs::Marker;

constexpr double kBoxLength = 0.2;  // m, along the heading: the planner's boxes
constexpr double kBoxWidth = 0.1;   // m, across it

Marker NewMarker(const std::string& name, int type, const MarkerLook& look, const ros::Time& stamp) {
  Marker marker;
  marker.header.frame_id = kMapFrame;
  marker.header.stamp = stamp;
  marker.ns = name;
  marker.type = type;
  marker.action = Marker::ADD;
  marker.pose.position.z = look.height;
  marker.pose.orientation.w = 1.0;
  marker.color = look.color;
  return marker;
}

Marker NoMarker(const std::string& name, const ros::Time& stamp) {
  Marker marker;
  marker.header.frame_id = kMapFrame;
  marker.header.stamp = stamp;
  marker.ns = name;
  marker.action = Marker::DELETE;
  return marker;
}

}  // namespace

geometry_msgs::Point ToPoint(const nav_core::math::Vec2d& place) {
  geometry_msgs::Point point;
  point.x = place.x;
  point.y = place.y;
  return point;
}

Points ToPoints(const std::vector<nav_core::math::Vec2d>& places) {
  Points points;
  std::transform(places.begin(), places.end(), std::back_inserter(points), ToPoint);
  return points;
}

std_msgs::ColorRGBA Rgb(double red, double green, double blue, double opacity) {
  std_msgs::ColorRGBA color;
  color.r = static_cast<float>(red);
  color.g = static_cast<float>(green);
  color.b = static_cast<float>(blue);
  color.a = static_cast<float>(opacity);
  return color;
}

Marker LineMarker(const std::string& name, const Points& points, const MarkerLook& look, const ros::Time& stamp) {
  if (points.size() < 2) {
    return NoMarker(name, stamp);
  }
  Marker marker = NewMarker(name, Marker::LINE_STRIP, look, stamp);
  marker.scale.x = look.width;
  marker.points = points;
  return marker;
}

Marker DotsMarker(const std::string& name, const Points& points, const MarkerLook& look, const ros::Time& stamp) {
  if (points.empty()) {
    return NoMarker(name, stamp);
  }
  Marker marker = NewMarker(name, Marker::SPHERE_LIST, look, stamp);
  marker.scale.x = marker.scale.y = marker.scale.z = look.width;
  marker.points = points;
  return marker;
}

Marker BoxesMarker(const std::string& name, const std::vector<follower::VirtualBox>& boxes, const MarkerLook& look,
                   const ros::Time& stamp) {
  if (boxes.empty()) {
    return NoMarker(name, stamp);
  }
  Marker marker = NewMarker(name, Marker::LINE_LIST, look, stamp);
  marker.scale.x = look.width;
  for (const follower::VirtualBox& box : boxes) {
    const Box2d outline({box.center.x, box.center.y}, box.heading, kBoxLength, kBoxWidth);
    const Points corners = ToPoints(outline.GetAllCorners());
    for (std::size_t i = 0; i < corners.size(); ++i) {
      marker.points.push_back(corners[i]);
      marker.points.push_back(corners[(i + 1) % corners.size()]);
    }
  }
  return marker;
}

Marker ObstaclesMarker(const std::string& name, const std::vector<simulation::Obstacle>& obstacles, double time,
                       bool low, const MarkerLook& look, const ros::Time& stamp) {
  Marker marker = NewMarker(name, Marker::TRIANGLE_LIST, look, stamp);
  marker.scale.x = marker.scale.y = marker.scale.z = 1.0;
  for (const simulation::Obstacle& obstacle : obstacles) {
    const Points corners = ToPoints(OutlineAt(obstacle, time));
    for (std::size_t i = 2; obstacle.low == low && i < corners.size(); ++i) {  // a fan of triangles
      marker.points.insert(marker.points.end(), {corners[0], corners[i - 1], corners[i]});
    }
  }
  return marker.points.empty() ? NoMarker(name, stamp) : marker;
}

Marker CircleMarker(const std::string& name, const follower::Pose2d& center, double radius, const MarkerLook& look,
                    const ros::Time& stamp) {
  constexpr int kCorners = 36;
  Points points;
  for (int corner = 0; radius > 0.0 && corner <= kCorners; ++corner) {
    const double direction = corner * 2.0 * follower::kPi / kCorners;
    points.emplace_back();
    points.back().x = center.x + radius * std::cos(direction);
    points.back().y = center.y + radius * std::sin(direction);
  }
  return LineMarker(name, points, look, stamp);
}

Marker TextMarker(const std::string& name, const geometry_msgs::Point& place, const std::string& text,
                  const MarkerLook& look, const ros::Time& stamp) {
  if (text.empty()) {
    return NoMarker(name, stamp);
  }
  Marker marker = NewMarker(name, Marker::TEXT_VIEW_FACING, look, stamp);
  marker.pose.position.x = place.x;
  marker.pose.position.y = place.y;
  marker.scale.z = look.width;
  marker.text = text;
  return marker;
}

Marker BodyMarker(const MarkerLook& look, const ros::Time& stamp) {
  Marker marker = NewMarker("robot", Marker::CYLINDER, look, stamp);
  marker.header.frame_id = kRobotFrame;
  marker.scale.x = marker.scale.y = 2.0 * follower::kRobotRadius;
  marker.scale.z = look.width;
  return marker;
}

Marker NoseMarker(const MarkerLook& look, const ros::Time& stamp) {
  Marker marker = NewMarker("robot's nose", Marker::ARROW, look, stamp);
  marker.header.frame_id = kRobotFrame;
  marker.scale.x = follower::kRobotRadius;
  marker.scale.y = marker.scale.z = look.width;
  return marker;
}

}  // namespace controller_base::demo
