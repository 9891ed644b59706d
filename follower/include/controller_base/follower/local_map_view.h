#ifndef CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_VIEW_H_
#define CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_VIEW_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace controller_base::follower {

// A local grid map that somebody else owns: cost bytes and laser marks, size_x bytes a row, the row of the lowest y
// first. Cell (mx, my) covers [origin_x + mx * resolution, origin_x + (mx + 1) * resolution) in x, likewise in y.
//
// What a cost byte means: 254 an obstacle, 253 a cell that the robot's centre must not enter either, 255 unknown. Other
// costs must stay within 0 and 127, with a closed ring of 94 or more around every cell of 253 and 254, because the
// library reads cost bytes as signed numbers. Inflate, in inflate.h, makes such costs from obstacles.
struct LocalMapView {
  const std::uint8_t* costs = nullptr;        // size_x * size_y bytes
  const std::uint8_t* laser_marks = nullptr;  // as many, not 0 where the laser sees something; null: nowhere
  unsigned int size_x = 0;                    // cells
  unsigned int size_y = 0;                    // cells
  double resolution = 0.0;                    // m per cell
  double origin_x = 0.0;                      // m; the lower left corner of cell (0, 0)
  double origin_y = 0.0;                      // m
};

// Such a map that owns its bytes, for records.
struct LocalMapData {
  std::vector<std::uint8_t> costs;
  std::vector<std::uint8_t> laser_marks;  // as many as costs, or none at all: nothing is marked
  unsigned int size_x = 0;
  unsigned int size_y = 0;
  double resolution = 0.0;
  double origin_x = 0.0;
  double origin_y = 0.0;

  LocalMapData() = default;
  explicit LocalMapData(const LocalMapView& view);

  // Valid as long as this object is and its bytes are not replaced.
  LocalMapView View() const;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_LOCAL_MAP_VIEW_H_
