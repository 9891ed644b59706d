#ifndef TEST_LOCAL_PLAN_GRID_PATHS_H_
#define TEST_LOCAL_PLAN_GRID_PATHS_H_

#include <costmap_2d/costmap_2d.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <utility>
#include <vector>

#include "test/support/paths.h"

namespace controller_base_test {

using Cell = std::pair<int, int>;  // column, row; may lie off the map

// A pose in the middle of a cell, off the map too.
inline geometry_msgs::PoseStamped PoseInCell(const costmap_2d::Costmap2D& map, const Cell& cell) {
  return PoseAt(map.getOriginX() + (cell.first + 0.5) * map.getResolution(),
                map.getOriginY() + (cell.second + 0.5) * map.getResolution());
}

inline nav_msgs::Path PathThrough(const costmap_2d::Costmap2D& map, const std::vector<Cell>& cells) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (const Cell& cell : cells) {
    path.poses.push_back(PoseInCell(map, cell));
  }
  return path;
}

// The cells that the poses lie in; {-1, -1} for one off the map.
inline std::vector<Cell> CellsOf(const costmap_2d::Costmap2D& map, const nav_msgs::Path& path) {
  std::vector<Cell> cells;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    unsigned int mx = 0;
    unsigned int my = 0;
    const bool on_map = map.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my);
    cells.push_back(on_map ? Cell{static_cast<int>(mx), static_cast<int>(my)} : Cell{-1, -1});
  }
  return cells;
}

}  // namespace controller_base_test

#endif  // TEST_LOCAL_PLAN_GRID_PATHS_H_
