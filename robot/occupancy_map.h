#ifndef CONTROLLER_BASE_ROBOT_OCCUPANCY_MAP_H_
#define CONTROLLER_BASE_ROBOT_OCCUPANCY_MAP_H_

#include <nav_msgs/OccupancyGrid.h>

#include <cstdint>
#include <optional>
#include <string>

#include "robot/grid.h"

namespace controller_base::robot {

constexpr std::uint8_t kFree = 0;
constexpr std::uint8_t kLethal = 254;
constexpr std::uint8_t kUnknown = 255;

// From this occupancy on, percent, a cell is an obstacle.
constexpr int kOccupiedPercent = 65;

// The map as kFree, kLethal and kUnknown; nothing is inflated. Unknown is an occupancy of -1 and what is no percentage.
// No value, and why in `error`, for a map without cells, one whose cells are not as many as its size says, one whose
// resolution or origin is not a usable number, and one that is turned: rows must run along the x axis of its frame.
std::optional<GridBytes> ReadOccupancyGrid(const nav_msgs::OccupancyGrid& map, std::string* error);

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_OCCUPANCY_MAP_H_
