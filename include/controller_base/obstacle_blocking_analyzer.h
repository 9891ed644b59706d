#ifndef CONTROLLER_BASE_OBSTACLE_BLOCKING_ANALYZER_H_
#define CONTROLLER_BASE_OBSTACLE_BLOCKING_ANALYZER_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <utility>

#include "controller_base/platform/costmap_2d.h"

namespace nav_controller {

// Questions about a path and the local grid map: is it blocked, where, and on both sides?
//   lethal cell   Costmap2D::IsLethalObstacle holds; "inflate obstacle" in the names below
//   laser cell    Costmap2D::IsLaserObstacle holds, whatever the cost says
// Points are metres in the map's frame; z and orientations are ignored. The map is only read; locking it is the
// caller's. A point off the map does not block, except for the side points of IsBilateralObstacle, which then count as
// closed. A null map is answered with false by the two IsBlockingPath functions; the others require a map.
//   if (IsBlockingPathInflateObstacle(&map, ahead) && IsBilateralObstacle(&map, ahead)) { /* no way round close by */ }

// Whether any pose lies on a lethal cell. The cells between poses are not looked at.
bool IsBlockingPathInflateObstacle(const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path);

// Whether some pose but the first lies on a lethal cell and the straight line to it from the pose before crosses a
// laser cell.
bool IsBlockingPathLaserObstacle(const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path);

// Whether the grid line from start to end, both end cells included, crosses a laser cell; false when an end is off the
// map. At DEBUG it logs the costs on its way, read as signed bytes: 254 prints as -2.
bool IsBlockingLaserBetweenPoints(const costmap_2d::Costmap2D* costmap, const geometry_msgs::Point& start,
                                  const geometry_msgs::Point& end);

// Whether the grid line from start to end, both end cells included, crosses a lethal cell; false when an end is off the
// map.
bool IsBlockingBetweenPoints(const costmap_2d::Costmap2D* costmap, const geometry_msgs::Point& start,
                             const geometry_msgs::Point& end);

// The first run of consecutive poses on lethal cells, with the path's header; no poses when there is none. A pose off
// the map is not lethal.
nav_msgs::Path FindObstacleSegment(const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path);

// The two points beside the middle of start-end. Logs at INFO on every call.
//
//            first            each `distance` metres from the middle of start-end, z = 0;
//   start -----+-----> end    `first` lies left of the way from start to end (counter-clockwise).
//            second           start == end: both are that point.
std::pair<geometry_msgs::Point, geometry_msgs::Point> CalculatePerpendicularPoints(
    const geometry_msgs::PoseStamped& start, const geometry_msgs::PoseStamped& end, double distance);

// Whether the first blocked run of the path is closed 0.2 m to both sides of its middle: each side point is lethal or
// off the map. A run of fewer than two poses is not.
bool IsBilateralObstacle(const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path);

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_OBSTACLE_BLOCKING_ANALYZER_H_
