#ifndef CONTROLLER_BASE_SIMULATION_MAP_FILE_H_
#define CONTROLLER_BASE_SIMULATION_MAP_FILE_H_

#include <cstdint>
#include <stdexcept>
#include <string>

#include "costmap_2d/costmap_2d.h"
#include "simulation/progress.h"

namespace controller_base::simulation {

// A map file that is missing or broken; what() is one line that names the file and what is wrong with it.
class MapError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a map may have: the side is what the grid search can address, and so many cells take about 1.5 GB to drive on.
constexpr std::int64_t kMostMapSide = 65'535;
constexpr std::int64_t kMostMapCells = 100'000'000;

// Reads a map in the map_server format: a YAML file with the keys image (a path relative to the YAML file), resolution,
// origin [x, y, yaw], occupied_thresh, free_thresh, and optionally negate (0 or 1) and mode (trinary or scale), beside
// an image (PNG, PNM, BMP or JPEG) whose first row is the top of the map, its largest y.
//
// With p = (255 - grey) / 255 (grey / 255 when negated), a cell is LETHAL_OBSTACLE when p > occupied_thresh, FREE_SPACE
// when p < free_thresh, and NO_INFORMATION in between. Colours count with the mean of their channels.
//
// Throws MapError. A turned origin (yaw other than 0), the mode "raw", an origin farther than 1e7 m from zero, and maps
// of more cells than above are refused. Where `progress` ends the reading, a thread may go on decoding the image: the
// process should not return from main() then, but end at once.
costmap_2d::Costmap2D LoadMap(const std::string& yaml_file, const Progress& progress = {});

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_MAP_FILE_H_
