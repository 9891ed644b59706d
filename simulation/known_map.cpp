#include "simulation/known_map.h"

#include <algorithm>
#include <cmath>

#include "costmap_2d/cost_values.h"

namespace controller_base::simulation {

KnownMap::KnownMap(const costmap_2d::Costmap2D& map, follower::ObstacleCell marks)
    : map_(map),
      seen_(cv::Mat::zeros(static_cast<int>(map.getSizeInCellsY()), static_cast<int>(map.getSizeInCellsX()), CV_8UC1)),
      inflation_(map.getResolution()),
      marks_(marks),
      mark_inflation_(map.getResolution(), follower::kRobotRadius, marks) {}

bool KnownMap::IsObstacle(int mx, int my) const { return IsWall(mx, my) || IsSeen(mx, my); }

bool KnownMap::IsWall(int mx, int my) const {
  return !map_.IsInmap(mx, my) ||
         map_.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) == costmap_2d::LETHAL_OBSTACLE;
}

bool KnownMap::IsObstacleAround(int mx, int my) const {
  for (int y = my - 1; y <= my + 1; ++y) {
    for (int x = mx - 1; x <= mx + 1; ++x) {
      if (IsObstacle(x, y)) {
        return true;
      }
    }
  }
  return false;
}

// The index of the cell along one axis; far off the map it is clamped, so that sums with it do not overflow.
int KnownMap::CellAlong(double value, double origin) const {
  constexpr double kFarthest = 1e9;
  return static_cast<int>(std::clamp(std::floor((value - origin) / map_.getResolution()), -kFarthest, kFarthest));
}

costmap_2d::Costmap2D KnownMap::LocalMapAround(const nav_core::math::Vec2d& center) const {
  const double resolution = map_.getResolution();
  const int side = static_cast<int>(std::lround(kLocalMapSide / resolution));
  const cv::Rect cells(CellAlong(center.x, map_.getOriginX()) - side / 2,
                       CellAlong(center.y, map_.getOriginY()) - side / 2, side, side);
  costmap_2d::Costmap2D result(static_cast<unsigned int>(side), static_cast<unsigned int>(side), resolution,
                               map_.getOriginX() + cells.x * resolution, map_.getOriginY() + cells.y * resolution);
  Inflate(cells, cells.tl(), &result);
  return result;
}

// Stripe by stripe: the distances in a stripe need no more of the map than a margin around it, nor more memory.
costmap_2d::Costmap2D KnownMap::WholeMap(const Progress& progress) const {
  constexpr int kCellsAtATime = 2'000'000;
  const int stripe = std::max(4 * Margin(), kCellsAtATime / seen_.cols);
  costmap_2d::Costmap2D result(map_.getSizeInCellsX(), map_.getSizeInCellsY(), map_.getResolution(), map_.getOriginX(),
                               map_.getOriginY());
  for (int row = 0; row < seen_.rows; row += stripe) {
    if (progress) {
      progress(StepText("inflating the map", static_cast<double>(row) / seen_.rows));
    }
    Inflate({0, row, seen_.cols, std::min(stripe, seen_.rows - row)}, {0, 0}, &result);
  }
  return result;
}

bool KnownMap::IsUnknown(int mx, int my) const {
  return map_.IsInmap(mx, my) && !IsSeen(mx, my) &&
         map_.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) == costmap_2d::NO_INFORMATION;
}

// Outside the ring around obstacles an unknown cell is unknown, whatever its distance to them costs.
unsigned char KnownMap::WithUnknown(int mx, int my, unsigned char cost) const {
  return cost < follower::Inflation::kLowestRingCost && IsUnknown(mx, my) ? costmap_2d::NO_INFORMATION : cost;
}

// Obstacles this many cells away still cost something.
int KnownMap::Margin() const { return static_cast<int>(std::ceil(inflation_.radius() / map_.getResolution())); }

void KnownMap::Inflate(const cv::Rect& cells, const cv::Point& first, costmap_2d::Costmap2D* result) const {
  const int margin = Margin();
  const auto distances_to = [&](const auto& is_obstacle) {
    cv::Mat obstacles(cells.height + 2 * margin, cells.width + 2 * margin, CV_8UC1);
    for (int row = 0; row < obstacles.rows; ++row) {
      for (int column = 0; column < obstacles.cols; ++column) {
        obstacles.at<unsigned char>(row, column) =
            is_obstacle(cells.x + column - margin, cells.y + row - margin) ? 1 : 0;
      }
    }
    return follower::DistanceToObstacles(obstacles, map_.getResolution(), inflation_.radius());
  };
  const bool marks_are_solid = marks_ == follower::ObstacleCell::kSolid;
  const cv::Mat to_solid =
      distances_to([&](int mx, int my) { return IsWall(mx, my) || (marks_are_solid && IsSeen(mx, my)); });
  const cv::Mat to_surface = marks_are_solid ? to_solid : distances_to([&](int mx, int my) { return IsSeen(mx, my); });
  for (int row = 0; row < cells.height; ++row) {
    for (int column = 0; column < cells.width; ++column) {
      const cv::Point cell = cells.tl() + cv::Point(column, row);
      const auto mx = static_cast<unsigned int>(cell.x - first.x);
      const auto my = static_cast<unsigned int>(cell.y - first.y);
      const unsigned char cost = std::max(inflation_.CostAt(to_solid.at<float>(row + margin, column + margin)),
                                          mark_inflation_.CostAt(to_surface.at<float>(row + margin, column + margin)));
      result->setCost(mx, my, WithUnknown(cell.x, cell.y, cost));
      result->SetLaserObstacle(mx, my, IsSeen(cell.x, cell.y));
    }
  }
}

}  // namespace controller_base::simulation
