#include "robot/occupancy_map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace controller_base::robot {
namespace {

constexpr std::size_t kLongestSide = 65535;  // cells; what the library's search serves
constexpr double kLargestTurn = 1e-3;        // of the origin's quaternion; a map of 100 m strays by a cell or two

std::string WhatIsWrong(const nav_msgs::OccupancyGrid& map) {
  const nav_msgs::MapMetaData& info = map.info;
  if (info.width == 0 || info.height == 0 || info.width > kLongestSide || info.height > kLongestSide) {
    return "the map has " + std::to_string(info.width) + " x " + std::to_string(info.height) + " cells";
  }
  if (map.data.size() != static_cast<std::size_t>(info.width) * info.height) {
    return "the map brings " + std::to_string(map.data.size()) + " cells, its size says " + std::to_string(info.width) +
           " x " + std::to_string(info.height);
  }
  if (!std::isfinite(info.resolution) || info.resolution <= 0.0F) {
    return "the map's resolution is " + std::to_string(info.resolution);
  }
  if (!std::isfinite(info.origin.position.x) || !std::isfinite(info.origin.position.y)) {
    return "the map's origin is not a number";
  }
  const geometry_msgs::Quaternion& turn = info.origin.orientation;
  if (!(std::hypot(turn.x, turn.y) <= kLargestTurn && std::abs(turn.z) <= kLargestTurn)) {
    return "the map is turned in its frame; its rows must run along the x axis";
  }
  return "";
}

std::uint8_t ByteOf(std::int8_t occupancy) {
  if (occupancy < 0 || occupancy > 100) {
    return kUnknown;
  }
  return occupancy >= kOccupiedPercent ? kLethal : kFree;
}

}  // namespace

std::optional<GridBytes> ReadOccupancyGrid(const nav_msgs::OccupancyGrid& map, std::string* error) {
  *error = WhatIsWrong(map);
  if (!error->empty()) {
    return std::nullopt;
  }
  GridBytes result;
  result.grid = {static_cast<int>(map.info.width), static_cast<int>(map.info.height),
                 static_cast<double>(map.info.resolution), map.info.origin.position.x, map.info.origin.position.y};
  result.bytes.reserve(map.data.size());
  std::transform(map.data.begin(), map.data.end(), std::back_inserter(result.bytes), ByteOf);
  return result;
}

}  // namespace controller_base::robot
