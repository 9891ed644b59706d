#ifndef CONTROLLER_BASE_FOLLOWER_PLANNER_VIEW_H_
#define CONTROLLER_BASE_FOLLOWER_PLANNER_VIEW_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/Path.h>

#include <optional>

#include "controller_base/local_map_obstacle.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// What LocalPlanner would say of a place. A cell is blocked when it is lethal on the map or its centre lies in a
// virtual box; a place off the map is not blocked. Holds references and no state: make one whenever it is needed.
class PlannerView {
 public:
  PlannerView(const costmap_2d::Costmap2D& map, const nav_controller::LocalMapObstacle& boxes)
      : map_(map), boxes_(boxes) {}

  const costmap_2d::Costmap2D& map() const { return map_; }

  // Whether the point itself, not its cell's centre, lies in a virtual box.
  bool IsInBox(const geometry_msgs::Point& point) const { return boxes_.IsInObstacle(point); }

  bool IsBlocked(const geometry_msgs::Point& point) const;

  // The centre of the cell that holds the place, which must be on the map.
  nav_core::math::Vec2d CellCenterAt(const Pose2d& place) const;

  // Whether the line's cells are blocked: on the map by the grid line and by every cell that it enters, in the boxes
  // every half cell.
  bool IsLineBlocked(const geometry_msgs::Point& from, const geometry_msgs::Point& to) const;

  // Whether the line enters a lethal cell, be it by a corner that the grid line leaves out.
  bool CutsCorner(const geometry_msgs::Point& from, const geometry_msgs::Point& to) const;

  // Whether the line, moved by `clearance` metres to either side, enters a lethal cell.
  bool PassesClose(const geometry_msgs::Point& from, const geometry_msgs::Point& to, double clearance) const;

  // Whether a lethal cell comes nearer to the point than `margin` metres.
  bool IsWithinMargin(const geometry_msgs::Point& point, double margin) const;

  // The first run of consecutive poses that are blocked; no poses when none is.
  nav_msgs::Path BlockedRun(const nav_msgs::Path& path) const;

  // The path without the blocked poses at its beginning, unless they reach 0.15 m or farther. A robot that stands too
  // near to an obstacle, as at a start beside a wall, need not turn away from a path that leads out of there at once.
  nav_msgs::Path WithoutBlockedStart(nav_msgs::Path path) const;

  // The centre of the free cell nearest to `from`, nearer than `reach` metres.
  std::optional<geometry_msgs::Point> NearestFreeCell(const Pose2d& from, double reach) const;

  // The centre of that one of the four cells beside the cell of `from` which is free and nearest to `to`.
  std::optional<geometry_msgs::Point> FreeNeighbour(const Pose2d& from, const geometry_msgs::Point& to) const;

 private:
  const costmap_2d::Costmap2D& map_;
  const nav_controller::LocalMapObstacle& boxes_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PLANNER_VIEW_H_
