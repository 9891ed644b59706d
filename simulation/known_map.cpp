#include "simulation/known_map.h"

#include <cmath>

#include "costmap_2d/cost_values.h"

namespace controller_base_demo {

KnownMap::KnownMap(const costmap_2d::Costmap2D& map)
    : map_(map),
      seen_(cv::Mat::zeros(static_cast<int>(map.getSizeInCellsY()), static_cast<int>(map.getSizeInCellsX()), CV_8UC1)),
      inflation_(map.getResolution()) {}

bool KnownMap::IsObstacle(int mx, int my) const {
  return !map_.IsInmap(mx, my) || seen_.at<unsigned char>(my, mx) != 0 ||
         map_.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) == costmap_2d::LETHAL_OBSTACLE;
}

costmap_2d::Costmap2D KnownMap::LocalMapAround(const nav_core::math::Vec2d& center) const {
  const int side = static_cast<int>(std::lround(kLocalMapSide / map_.getResolution()));
  const int mx = static_cast<int>(std::floor((center.x - map_.getOriginX()) / map_.getResolution()));
  const int my = static_cast<int>(std::floor((center.y - map_.getOriginY()) / map_.getResolution()));
  return Inflated(mx - side / 2, my - side / 2, side, side);
}

costmap_2d::Costmap2D KnownMap::WholeMap() const { return Inflated(0, 0, seen_.cols, seen_.rows); }

bool KnownMap::IsUnknown(int mx, int my) const {
  return map_.IsInmap(mx, my) && !IsSeen(mx, my) &&
         map_.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) == costmap_2d::NO_INFORMATION;
}

// Below the ring, not knowing a cell says more than the obstacle near it.
unsigned char KnownMap::CostAt(int mx, int my, double distance) const {
  const unsigned char cost = inflation_.CostAt(distance);
  return cost < Inflation::kLowestRingCost && IsUnknown(mx, my) ? costmap_2d::NO_INFORMATION : cost;
}

costmap_2d::Costmap2D KnownMap::Inflated(int first_mx, int first_my, int size_x, int size_y) const {
  const double resolution = map_.getResolution();
  const int margin = static_cast<int>(std::ceil(inflation_.radius() / resolution));  // obstacles outside cost inside
  cv::Mat obstacles(size_y + 2 * margin, size_x + 2 * margin, CV_8UC1);
  for (int row = 0; row < obstacles.rows; ++row) {
    for (int column = 0; column < obstacles.cols; ++column) {
      obstacles.at<unsigned char>(row, column) =
          IsObstacle(first_mx + column - margin, first_my + row - margin) ? 1 : 0;
    }
  }
  const cv::Mat distances = DistanceToObstacles(obstacles, resolution, inflation_.radius());

  costmap_2d::Costmap2D result(static_cast<unsigned int>(size_x), static_cast<unsigned int>(size_y), resolution,
                               map_.getOriginX() + first_mx * resolution, map_.getOriginY() + first_my * resolution);
  for (int row = 0; row < size_y; ++row) {
    for (int column = 0; column < size_x; ++column) {
      const int mx = first_mx + column;
      const int my = first_my + row;
      const auto result_mx = static_cast<unsigned int>(column);
      const auto result_my = static_cast<unsigned int>(row);
      result.setCost(result_mx, result_my, CostAt(mx, my, distances.at<float>(row + margin, column + margin)));
      result.SetLaserObstacle(result_mx, result_my, IsSeen(mx, my));
    }
  }
  return result;
}

}  // namespace controller_base_demo
