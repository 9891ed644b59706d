#ifndef CONTROLLER_BASE_LOCAL_MAP_OBSTACLE_H_
#define CONTROLLER_BASE_LOCAL_MAP_OBSTACLE_H_

#include <geometry_msgs/Point.h>
#include <ros/publisher.h>

#include <cstddef>
#include <vector>

#include "controller_base/platform/box2d.h"

namespace nav_controller {

// Small virtual box obstacles that the grid map does not hold: 0.2 m along their heading, 0.1 m across it.
//
// The list only grows until Reset; there is no cap and no test for duplicates. Nothing is drawn unless
// VisualizeAllObstacles is called. Markers go to "/nav_controller/local_map_obstacles" in frame "map" (queue 10, not
// latched) and live for 10 s. Constructing needs a ROS master. One thread only.
class LocalMapObstacle {
 public:
  LocalMapObstacle();

  // Removes every box. Drawn markers stay until the next VisualizeAllObstacles or the end of their lifetime.
  void Reset() { boxes_.clear(); }

  // Whether the point (metres; z is ignored) lies in at least one box. Looks at one box after the other.
  bool IsInObstacle(const geometry_msgs::Point& point) const;

  std::size_t GetObstacleNum() const { return boxes_.size(); }

  // Every box, in order of creation; for drawing them and for callers that test many cells. CreateNewBox and Reset
  // invalidate references to its elements.
  const std::vector<nav_core::math::Box2d>& GetBoxes() const { return boxes_; }

  // Appends a box centred on `center` (metres; z is ignored), its 0.2 m side along `heading` (radians,
  // counter-clockwise from x).
  void CreateNewBox(const geometry_msgs::Point& center, double heading);

  // Publishes the closed outline of `box` as a red line strip with the given marker id.
  void PublishBox2dMarker(const nav_core::math::Box2d& box, int id) const;

  // Publishes a marker that deletes all others, then every box's outline; a box's id is its index in order of creation.
  void VisualizeAllObstacles() const;

 private:
  std::vector<nav_core::math::Box2d> boxes_;  // in order of creation
  ros::Publisher publisher_;
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_LOCAL_MAP_OBSTACLE_H_
