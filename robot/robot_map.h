#ifndef CONTROLLER_BASE_ROBOT_ROBOT_MAP_H_
#define CONTROLLER_BASE_ROBOT_ROBOT_MAP_H_

#include <geometry_msgs/Pose.h>
#include <nav_msgs/Path.h>
#include <sensor_msgs/LaserScan.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "controller_base/follower/report.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/inflation.h"
#include "nav_core/math/vec2d.h"
#include "robot/grid.h"
#include "robot/laser_marks.h"

namespace controller_base::robot {

// What the robot knows of its place: the map, and what its laser sees. Off the map everything is an obstacle.
class RobotMap {
 public:
  // `map` as ReadOccupancyGrid gives it. Metres: the robot's radius, and the side of the local map.
  RobotMap(GridBytes map, double robot_radius, double local_map_side);

  // See LaserMarks::Add.
  void AddScan(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser);
  // What the laser saw.
  void Forget();

  bool Contains(double x, double y) const { return map_.grid.IndexAt(x, y).has_value(); }

  // The local map: cells of the map around a place, with costs as follower::Inflation makes them: of solid cells around
  // walls, of surfaces around what the laser sees. Unknown cells are
  // 255 unless they lie in the ring around an obstacle.
  struct Local {
    GridBytes costs;
    GridBytes marks;  // not 0 where the laser sees something
  };
  // Made anew after a scan, and when the place has come kLargestShift cells away from the middle. Valid until the next
  // call.
  const Local& LocalAround(double x, double y);

  // A path over the map. With `learned` over what the laser sees, too, and around the boxes, which keep the robot's
  // centre out. No poses: there is no path.
  nav_msgs::Path SearchPath(const nav_core::math::Vec2d& start, const nav_core::math::Vec2d& goal) const;
  nav_msgs::Path SearchPathAround(const std::vector<follower::VirtualBox>& learned, const nav_core::math::Vec2d& start,
                                  const nav_core::math::Vec2d& goal) const;

  static constexpr int kLargestShift = 5;

 private:
  using Marks = const std::vector<std::uint8_t>*;  // null: none

  // The bytes of these cells, on the map or off it.
  std::vector<std::uint8_t> Inflated(const cv::Rect& cells, Marks marks) const;
  // Likewise, around walls alone (no marks) or around marks alone.
  std::vector<std::uint8_t> InflatedAlone(const cv::Rect& cells, Marks marks) const;
  std::vector<std::uint8_t> CostsByDistance(follower::ObstacleCell cell) const;
  cv::Mat FreeCells(const cv::Rect& cells, Marks marks) const;
  bool IsUnknown(int mx, int my, Marks marks) const;
  void BuildLocal(const cv::Rect& cells);
  costmap_2d::Costmap2D WholeMap(Marks marks) const;
  nav_msgs::Path Search(const costmap_2d::Costmap2D& costs, Marks marks, const nav_core::math::Vec2d& start,
                        const nav_core::math::Vec2d& goal) const;

  GridBytes map_;
  LaserMarks laser_;
  double robot_radius_;
  int local_side_;  // cells
  // By the square of the distance in cells; farther away all is free.
  std::vector<std::uint8_t> cost_at_wall_;
  std::vector<std::uint8_t> cost_at_mark_;
  int margin_;  // cells beside the local map whose obstacles reach into it
  Local local_;
  std::optional<cv::Rect> local_cells_;  // of local_; none: it is out of date
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_ROBOT_MAP_H_
