#ifndef CONTROLLER_BASE_DEMO_PICTURES_MAP_CELLS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_MAP_CELLS_H_

#include <opencv2/core.hpp>

#include "costmap_2d/costmap_2d.h"
#include "demo/pictures/canvas.h"

namespace controller_base::demo {

// What the map covers.
Area AreaOf(const costmap_2d::Costmap2D& map);

// Square blocks of a map's cells, in one byte each.
struct MapBlocks {
  cv::Mat costs;  // CV_8UC1, the highest y on top
  Area area;      // that they cover: no less than what was asked for, as far as the map goes
};

// The part of `map` within `area`, in blocks of `side` x `side` cells. A block is LETHAL_OBSTACLE where one of its
// cells is, else NO_INFORMATION where one of them is, else FREE_SPACE.
MapBlocks BlocksOf(const costmap_2d::Costmap2D& map, const Area& area, int side);

// `color_of(column, row)` for every pixel of a picture of `size`.
template <typename ColorOf>
cv::Mat Painted(const cv::Size& size, const ColorOf& color_of) {
  cv::Mat colors(size, CV_8UC3);
  for (int row = 0; row < size.height; ++row) {
    for (int column = 0; column < size.width; ++column) {
      const cv::Scalar color = color_of(column, row);
      colors.at<cv::Vec3b>(row, column) =
          cv::Vec3b(cv::saturate_cast<unsigned char>(color[0]), cv::saturate_cast<unsigned char>(color[1]),
                    cv::saturate_cast<unsigned char>(color[2]));
    }
  }
  return colors;
}

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_MAP_CELLS_H_
