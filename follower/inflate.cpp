#include "controller_base/follower/inflate.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "costmap_2d/cost_values.h"
#include "follower/inflation.h"

namespace controller_base::follower {
namespace {

void Check(const LocalMapData& map) {
  const std::size_t cells = static_cast<std::size_t>(map.size_x) * map.size_y;
  if (cells == 0 || map.costs.size() != cells || !(map.resolution > 0.0 && map.resolution < HUGE_VAL)) {
    throw std::invalid_argument("Inflate: no cells, another number of costs, or a resolution that is not usable");
  }
}

}  // namespace

void Inflate(LocalMapData* map, double robot_radius) {
  Check(*map);
  const Inflation inflation(map->resolution, robot_radius);
  const cv::Mat costs(static_cast<int>(map->size_y), static_cast<int>(map->size_x), CV_8UC1, map->costs.data());
  const cv::Mat distances =
      DistanceToObstacles(costs == costmap_2d::LETHAL_OBSTACLE, map->resolution, inflation.radius());
  auto distance = distances.begin<float>();
  for (std::uint8_t& byte : map->costs) {
    const unsigned char cost = inflation.CostAt(static_cast<double>(*distance++));
    const bool stays_unknown = byte == costmap_2d::NO_INFORMATION && cost < Inflation::kLowestRingCost;
    byte = stays_unknown ? byte : cost;
  }
}

}  // namespace controller_base::follower
