#ifndef CONTROLLER_BASE_ROBOT_LASER_MARKS_H_
#define CONTROLLER_BASE_ROBOT_LASER_MARKS_H_

#include <geometry_msgs/Pose.h>
#include <sensor_msgs/LaserScan.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "robot/grid.h"

namespace controller_base::robot {

// The cells in which the laser sees something.
//
// Each scan first looks along its rays and then marks where they end. A mark that rays pass without hitting its cell
// fades, and is gone after kScansToFade such scans: noise of the ranges, which moves hits from one cell to the next and
// back, does not make marks flicker, and at 10 Hz what went away is forgotten within a second. What no ray passes
// stays.
//
// A range is a hit when it lies within range_min and below range_max. Infinity and range_max say that nothing is there
// as far as range_max. Everything else (NaN, less than range_min, more than range_max, minus infinity) says nothing.
class LaserMarks {
 public:
  static constexpr std::uint8_t kScansToFade = 10;

  // Nothing is marked. Hits off the grid are dropped; rays end at its edge.
  explicit LaserMarks(const Grid& grid) : marks_{grid, std::vector<std::uint8_t>(grid.cells(), 0)} {}

  // `laser` is where the scan's frame was when the scan was taken, in the frame of the grid: x and y, and all of the
  // orientation, so that a laser may hang upside down. A scan whose angles or whose pose are not numbers, and one taken
  // off the grid, is passed over.
  void Add(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser);

  void Clear();

  // Not 0 where marked.
  const GridBytes& marks() const { return marks_; }

 private:
  // The step along x and y of one metre along a ray.
  struct Direction {
    double x;
    double y;
  };

  static Direction DirectionOf(const geometry_msgs::Quaternion& laser, double angle);
  void LookAlong(const geometry_msgs::Pose& laser, const Direction& direction, double length, bool hits);
  void FadePassed();

  GridBytes marks_;                  // the scans that a mark still lives while rays pass it; 0: no mark
  std::vector<std::size_t> passed_;  // marked cells that rays of the current scan pass; some of them repeatedly
  std::vector<std::size_t> hits_;    // cells in which rays of the current scan end
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_LASER_MARKS_H_
