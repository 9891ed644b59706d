#include "follower/planning_costs.h"

#include <algorithm>
#include <cmath>

#include "costmap_2d/cost_values.h"
#include "follower/inflation.h"

namespace controller_base::follower {
namespace {

constexpr int kLowestCharge = 95;    // two more steps for a cell at the edge of the clearance
constexpr int kHighestCharge = 110;  // and 32 beside a lethal one

cv::Mat LethalCells(const costmap_2d::Costmap2D& map) {
  cv::Mat cells(static_cast<int>(map.getSizeInCellsY()), static_cast<int>(map.getSizeInCellsX()), CV_8UC1);
  for (int my = 0; my < cells.rows; ++my) {
    for (int mx = 0; mx < cells.cols; ++mx) {
      cells.at<unsigned char>(my, mx) =
          map.IsLethalObstacle(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)) ? 1 : 0;
    }
  }
  return cells;
}

unsigned char Charge(double distance, double clearance) {
  const double share = std::clamp(distance / clearance, 0.0, 1.0);
  return static_cast<unsigned char>(std::lround(kHighestCharge - share * (kHighestCharge - kLowestCharge)));
}

unsigned char WithoutCharge(unsigned char cost) {
  const bool is_charged = cost >= Inflation::kLowestRingCost && cost <= Inflation::kHighestCost;
  return is_charged ? static_cast<unsigned char>(Inflation::kLowestRingCost - 1) : cost;
}

}  // namespace

costmap_2d::Costmap2D WithPlanningCosts(const costmap_2d::Costmap2D& map, double clearance) {
  const cv::Mat distances = DistanceToObstacles(LethalCells(map), map.getResolution(), clearance + map.getResolution());
  costmap_2d::Costmap2D costs = map;
  for (int my = 0; my < distances.rows; ++my) {
    for (int mx = 0; mx < distances.cols; ++mx) {
      const auto x = static_cast<unsigned int>(mx);
      const auto y = static_cast<unsigned int>(my);
      const double distance = double{distances.at<float>(my, mx)};
      if (distance > 0.0) {
        costs.setCost(x, y, distance <= clearance ? Charge(distance, clearance) : WithoutCharge(map.getCost(x, y)));
      }
    }
  }
  return costs;
}

}  // namespace controller_base::follower
