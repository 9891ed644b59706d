#ifndef CONTROLLER_BASE_SIMULATION_KNOWN_MAP_H_
#define CONTROLLER_BASE_SIMULATION_KNOWN_MAP_H_

#include <opencv2/core.hpp>

#include "costmap_2d/costmap_2d.h"
#include "follower/inflation.h"
#include "nav_core/math/vec2d.h"
#include "simulation/progress.h"

namespace controller_base::simulation {

// Maps on which the robot can drive have cells of these widths.
constexpr double kFinestResolution = 0.005;  // m; the local map has 1200 x 1200 cells then
constexpr double kCoarsestResolution = 0.5;  // m; a door is two cells then

// What the robot knows of its world: the walls of the map, and what its laser has seen so far.
class KnownMap {
 public:
  static constexpr double kLocalMapSide = 6.0;  // m

  // `map` (LETHAL_OBSTACLE: a wall) must outlive this object. `marks` is what a cell stands for in which the laser sees
  // something.
  explicit KnownMap(const costmap_2d::Costmap2D& map, follower::ObstacleCell marks = follower::ObstacleCell::kSolid);

  // The laser sees an obstacle in the cell of the map, or sees through the cell.
  void MarkSeen(int mx, int my) { seen_.at<unsigned char>(my, mx) = 1; }
  void ClearSeen(int mx, int my) { seen_.at<unsigned char>(my, mx) = 0; }
  bool IsSeen(int mx, int my) const { return map_.IsInmap(mx, my) && seen_.at<unsigned char>(my, mx) != 0; }
  // A wall of the map, or seen. Everything off the map is an obstacle.
  bool IsObstacle(int mx, int my) const;

  // Whether the cell or one of the eight around it is an obstacle.
  bool IsObstacleAround(int mx, int my) const;

  // The map says nothing about the cell, and neither does the laser.
  bool IsUnknown(int mx, int my) const;

  // The local map: 6 m x 6 m around `center`, its cells being cells of the map, inflated, with the laser's marks. Cells
  // that the map does not know are NO_INFORMATION unless they lie in the ring around an obstacle.
  costmap_2d::Costmap2D LocalMapAround(const nav_core::math::Vec2d& center) const;

  // The whole map, made in the same way: for planning the path.
  costmap_2d::Costmap2D WholeMap(const Progress& progress = {}) const;

 private:
  bool IsWall(int mx, int my) const;
  unsigned char WithUnknown(int mx, int my, unsigned char cost) const;
  // Sets costs and marks of `result`, whose cell (0, 0) is cell `first` of the map, for these cells of the map, on it
  // or off it.
  void Inflate(const cv::Rect& cells, const cv::Point& first, costmap_2d::Costmap2D* result) const;
  int Margin() const;
  int CellAlong(double value, double origin) const;

  const costmap_2d::Costmap2D& map_;
  cv::Mat seen_;  // CV_8UC1; row my, column mx
  follower::Inflation inflation_;
  follower::ObstacleCell marks_;
  follower::Inflation mark_inflation_;
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_KNOWN_MAP_H_
