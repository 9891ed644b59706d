#ifndef CONTROLLER_BASE_PATH_MAP_FILLER_H_
#define CONTROLLER_BASE_PATH_MAP_FILLER_H_

#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Path.h>
#include <ros/publisher.h>

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "controller_base/platform/costmap_2d.h"

namespace nav_controller {

// The corridor around the followed path, on the cells of the grid map: a detour has to stay inside it.
//
// An image of the map's size; row my, column mx is cell (mx, my), row 0 the map's lowest, no flip. A cell equal to 1
// lies in the corridor, any other value outside. Every rebuild is published on "/DWB/limit_map" (queue 1, latched): 0
// inside, 100 outside. Constructing needs a ROS master. One thread only: prepare replaces what IsLethalObstacle reads.
class PathMapFiller {
 public:
  // `path_width` in cells; each prepare replaces it.
  explicit PathMapFiller(int path_width);

  // A copy has the same corridor, in memory of its own, and publishes on the same topic. What was moved from has no
  // corridor until its next prepare.
  PathMapFiller(const PathMapFiller& other);
  PathMapFiller& operator=(const PathMapFiller& other);
  PathMapFiller(PathMapFiller&&) = default;
  PathMapFiller& operator=(PathMapFiller&&) = default;
  ~PathMapFiller() = default;

  // Rebuilds the corridor for `path` (metres, in the map's frame) on the cells of `costmap` and publishes it.
  //
  // `width` in cells is both the thickness of the stroke and the size of the disc that then widens it, so the corridor
  // reaches about `width` cells to either side of the path (three for width 3). It must be at least 1; OpenCV's
  // exception for a width that it rejects passes through and leaves an empty corridor. Poses off the map are skipped
  // and their neighbours joined by a straight line. Fewer than two poses on the map make no corridor at all.
  void prepare(int width, const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path);

  // Marks the cells around the open polyline through `points` (x = mx, y = my; in order) in `grid` (CV_8UC1) with 1 and
  // leaves the others alone. `width` as in prepare.
  void FillPathWidth(cv::Mat& grid, const std::vector<cv::Point>& points, int width) const;

  // Whether the cell lies outside the corridor. No bounds check: needs a prepared corridor, and a cell on the map it
  // was made for.
  bool IsLethalObstacle(unsigned int mx, unsigned int my) const {
    return grid_.ptr<std::uint8_t>(static_cast<int>(my))[mx] != corridor_value_;
  }

  // The corridor in frame "map", stamped with the current time, size from the corridor (0 x 0 before the first
  // prepare), resolution and origin from `costmap`. The origin's orientation is deliberately all zero.
  nav_msgs::OccupancyGrid getOccupancyGrid(const costmap_2d::Costmap2D* costmap) const;

  // Publishes getOccupancyGrid(costmap).
  void PublishGridMap(const costmap_2d::Costmap2D* costmap);

 private:
  void ClearGrid(const cv::Size& size);

  cv::Mat grid_;    // CV_8UC1, empty until prepare
  int path_width_;  // cells, of the last prepare
  ros::Publisher publisher_;
  std::uint8_t corridor_value_ = 1;
  cv::Rect marked_;  // the part of grid_ outside which every cell is 0
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_PATH_MAP_FILLER_H_
