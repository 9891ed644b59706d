#ifndef CONTROLLER_BASE_DEMO_MESSAGES_MARKERS_H_
#define CONTROLLER_BASE_DEMO_MESSAGES_MARKERS_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>
#include <std_msgs/ColorRGBA.h>
#include <visualization_msgs/Marker.h>

#include <string>
#include <vector>

#include "controller_base/follower/report.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::demo {

// Markers that RViz takes without a complaint. Each has a namespace of its own and the number 0, so it replaces the one
// of the cycle before; one that has nothing to show removes it. In frame kMapFrame, unless said otherwise; heights
// above the floor are what hides what, seen from above.

using Points = std::vector<geometry_msgs::Point>;

// On the floor.
geometry_msgs::Point ToPoint(const nav_core::math::Vec2d& place);
Points ToPoints(const std::vector<nav_core::math::Vec2d>& places);

// 0..1 each.
std_msgs::ColorRGBA Rgb(double red, double green, double blue, double opacity = 1.0);

// What a marker is drawn with.
struct MarkerLook {
  std_msgs::ColorRGBA color;
  double width;   // m: of lines, dots and the squares around points
  double height;  // m above the floor
};

// A line through all the points; nothing for fewer than two.
visualization_msgs::Marker LineMarker(const std::string& name, const Points& points, const MarkerLook& look,
                                      const ros::Time& stamp);
// A ball at every point.
visualization_msgs::Marker DotsMarker(const std::string& name, const Points& points, const MarkerLook& look,
                                      const ros::Time& stamp);
// The outlines of virtual boxes.
visualization_msgs::Marker BoxesMarker(const std::string& name, const std::vector<follower::VirtualBox>& boxes,
                                       const MarkerLook& look, const ros::Time& stamp);
// What stands in the world `time` seconds into the drive: what the laser sees, or what is too low for it.
visualization_msgs::Marker ObstaclesMarker(const std::string& name, const std::vector<simulation::Obstacle>& obstacles,
                                           double time, bool low, const MarkerLook& look, const ros::Time& stamp);
// A circle; nothing without a radius.
visualization_msgs::Marker CircleMarker(const std::string& name, const follower::Pose2d& center, double radius,
                                        const MarkerLook& look, const ros::Time& stamp);
// Letters of `look.width` at a place, upright to whoever looks; nothing for an empty text.
visualization_msgs::Marker TextMarker(const std::string& name, const geometry_msgs::Point& place,
                                      const std::string& text, const MarkerLook& look, const ros::Time& stamp);
// The robot's body and the way it looks, in frame kRobotFrame.
visualization_msgs::Marker BodyMarker(const MarkerLook& look, const ros::Time& stamp);
visualization_msgs::Marker NoseMarker(const MarkerLook& look, const ros::Time& stamp);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_MESSAGES_MARKERS_H_
