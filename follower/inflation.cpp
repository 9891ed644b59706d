#include "follower/inflation.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "costmap_2d/cost_values.h"

namespace controller_base::follower {
namespace {

constexpr double kTrackingMargin = 0.02;  // m; how far the robot strays from the line that it follows
constexpr double kInflationRadius = 0.8;  // m beyond the inscribed distance: the middle of a hall is its cheapest line

// Falls from `high` at `from` to `low` at `to`.
unsigned char Fall(double distance, double from, double to, int high, int low) {
  const double share = std::clamp((distance - from) / (to - from), 0.0, 1.0);
  return static_cast<unsigned char>(std::lround(high - share * (high - low)));
}

}  // namespace

// Half a cell: a solid one reaches that far from its centre. The ring spans a diagonal step of cells.
Inflation::Inflation(double resolution, double robot_radius, ObstacleCell cell)
    : inscribed_distance_(robot_radius + (cell == ObstacleCell::kSolid ? 0.5 * resolution : 0.0) + kTrackingMargin),
      ring_distance_(inscribed_distance_ + 1.5 * resolution),
      radius_(inscribed_distance_ + std::max(kInflationRadius, 2.0 * resolution)) {}

unsigned char Inflation::CostAt(double distance) const {
  if (distance <= 0.0) {
    return costmap_2d::LETHAL_OBSTACLE;
  }
  if (distance <= inscribed_distance_) {
    return costmap_2d::INSCRIBED_INFLATED_OBSTACLE;
  }
  if (distance <= ring_distance_) {
    return Fall(distance, inscribed_distance_, ring_distance_, kHighestCost, kLowestRingCost);
  }
  if (distance < radius_) {
    return Fall(distance, ring_distance_, radius_, kLowestRingCost - 1, 1);
  }
  return costmap_2d::FREE_SPACE;
}

cv::Mat DistanceToObstacles(const cv::Mat& obstacles, double resolution, double nothing_near) {
  if (cv::countNonZero(obstacles) == 0) {
    return {obstacles.size(), CV_32FC1, cv::Scalar(nothing_near)};
  }
  cv::Mat cells;
  cv::distanceTransform(obstacles == 0, cells, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  return cells * resolution;
}

}  // namespace controller_base::follower
