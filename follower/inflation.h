#ifndef CONTROLLER_BASE_FOLLOWER_INFLATION_H_
#define CONTROLLER_BASE_FOLLOWER_INFLATION_H_

#include <opencv2/core.hpp>

namespace controller_base::follower {

constexpr double kRobotRadius = 0.17;  // m

// What a cell with an obstacle stands for.
enum class ObstacleCell {
  kSolid,    // all of it, as a wall of a map
  kSurface,  // a point of a surface, as a laser's mark; it lies on either side of the cell's centre
};

// The cost byte of a cell from its distance to the nearest obstacle cell, both measured at the cells' centres:
//
//   obstacle | 253 | 127 ... 94 | 93 ... 1 | 0
//            0   inscribed     ring     radius        distance
//
// Within the inscribed distance the robot, centred on the cell, would touch or nearly touch. The library compares cost
// bytes as signed numbers, so outside of it nothing may exceed 127; and its shortcut smoother sees an obstacle only
// through the bytes 94..127, so the ring of those is wide enough that no line of cells, diagonal steps included,
// reaches a lethal cell without touching the ring.
class Inflation {
 public:
  static constexpr int kHighestCost = 127;    // the largest byte that stays positive when read as signed
  static constexpr int kLowestRingCost = 94;  // the lowest byte that the shortcut smoother does not cross

  // `resolution` in metres per cell, `robot_radius` in metres.
  explicit Inflation(double resolution, double robot_radius = kRobotRadius, ObstacleCell cell = ObstacleCell::kSolid);

  // `distance` in metres, 0 for the obstacle cell itself.
  unsigned char CostAt(double distance) const;

  double inscribed_distance() const { return inscribed_distance_; }
  // From here on, cells cost nothing.
  double radius() const { return radius_; }

 private:
  double inscribed_distance_;
  double ring_distance_;
  double radius_;
};

// Distances in metres (CV_32FC1) from every cell to the nearest one that is not zero in `obstacles` (CV_8UC1); at least
// `nothing_near` where there is none at all.
cv::Mat DistanceToObstacles(const cv::Mat& obstacles, double resolution, double nothing_near);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_INFLATION_H_
