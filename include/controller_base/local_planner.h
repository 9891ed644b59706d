#ifndef CONTROLLER_BASE_LOCAL_PLANNER_H_
#define CONTROLLER_BASE_LOCAL_PLANNER_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>
#include <ros/publisher.h>

#include <memory>
#include <optional>

#include "controller_base/local_map_obstacle.h"
#include "controller_base/path_map_filler.h"
#include "controller_base/platform/astar.h"
#include "controller_base/platform/costmap_2d.h"

namespace nav_controller {

// Plans a short detour on the local grid map, around its lethal cells and the virtual boxes, inside a corridor if one
// is given.
//
//   LocalPlanner planner(true);
//   auto corridor = std::make_shared<PathMapFiller>(20);
//   corridor->prepare(20, &local_map, ahead);
//   if (auto detour = planner.CreatePlan(&local_map, corridor, robot_pose, ahead, true)) { /* follow *detour */ }
//
// Maps reach 65535 cells a side; on a larger one no path is found. Constructing needs a ROS master. One thread only.
class LocalPlanner {
 public:
  // With `publish`, planned paths go to "/DWB/local_plan" (queue 1, not latched); otherwise that topic is not
  // advertised.
  explicit LocalPlanner(bool publish);

  // Virtual boxes; see LocalMapObstacle. They block later searches and smoothing until cleared.
  void CreateBoxObstacle(const geometry_msgs::Point& center, double heading);
  void ClearAllBoxObstacle() { obstacles_.Reset(); }
  void VisualizeAllObstacles() { obstacles_.VisualizeAllObstacles(); }
  const LocalMapObstacle& GetLocalMapObstacle() const { return obstacles_; }

  // The cell of the last pose of `path` that is on the map and not lethal there; boxes and corridor are not asked.
  std::optional<AStar::Vec2> GetValidGoal(const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path) const;

  // Publishes `path` if the planner was built to.
  void PublishPath(const nav_msgs::Path& path);

  // One search from cell to cell, as cell centres in frame "map" from start to goal; no poses when there is no path.
  // Never logs. `filler` may be empty; else it must be prepared for `costmap`. With `smooth` the path is thinned by
  // LocalPathSmoother, which sees lethal cells only through the costs around them.
  //
  // Deliberately odd: the poses' headers are empty and their orientations the zero quaternion; no heading is computed.
  nav_msgs::Path Plan(const costmap_2d::Costmap2D* costmap, const std::shared_ptr<PathMapFiller>& filler,
                      const AStar::Vec2& start, const AStar::Vec2& goal, bool smooth);

  // Plans from the robot's pose to the last pose of `path` (or, where that is occupied, to the last usable pose before
  // it, if that is more than 30 cells away by Manhattan distance), publishes the result and returns it. No value, and
  // at most one or two WARN lines, when start or goal is off the map, the start is occupied, the fallback goal is too
  // near (only the line about the occupied goal), no path exists, or `path` is empty (no line).
  std::optional<nav_msgs::Path> CreatePlan(const costmap_2d::Costmap2D* costmap,
                                           const std::shared_ptr<PathMapFiller>& filler,
                                           const geometry_msgs::PoseStamped& start, const nav_msgs::Path& path,
                                           bool smooth);

 private:
  AStar::Params params_;  // of the last search; its callbacks must not be called once Plan has returned
  LocalMapObstacle obstacles_;
  bool publish_;
  ros::Publisher path_publisher_;
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_LOCAL_PLANNER_H_
