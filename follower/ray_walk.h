#ifndef CONTROLLER_BASE_FOLLOWER_RAY_WALK_H_
#define CONTROLLER_BASE_FOLLOWER_RAY_WALK_H_

#include <cmath>
#include <limits>

#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// The cells of a grid along a ray, each one that the ray passes, as J. Amanatides and A. Woo walk them ("A Fast Voxel
// Traversal Algorithm for Ray Tracing", 1987): always over the cell border that the ray reaches first.
class RayWalk {
 public:
  // Cell (0, 0) begins at the origin; cells are `resolution` wide. Metres.
  RayWalk(double origin_x, double origin_y, double resolution, const Pose2d& from)
      : x_(origin_x, resolution, from.x, std::cos(from.yaw)), y_(origin_y, resolution, from.y, std::sin(from.yaw)) {}
  RayWalk(const costmap_2d::Costmap2D& grid, const Pose2d& from)
      : RayWalk(grid.getOriginX(), grid.getOriginY(), grid.getResolution(), from) {}

  int mx() const { return x_.cell; }
  int my() const { return y_.cell; }
  // How far from the ray's start the current cell is entered, metres.
  double distance() const { return distance_; }

  void Step() {
    Axis& next = x_.next_border < y_.next_border ? x_ : y_;
    distance_ = next.next_border;
    next.cell += next.step;
    next.next_border += next.border_spacing;
  }

 private:
  struct Axis {
    Axis(double origin, double resolution, double from, double slope)
        : cell(static_cast<int>(std::floor((from - origin) / resolution))), step(slope > 0.0 ? 1 : -1) {
      const double border = origin + (cell + (slope > 0.0 ? 1 : 0)) * resolution;
      next_border = slope != 0.0 ? (border - from) / slope : std::numeric_limits<double>::infinity();
      border_spacing = slope != 0.0 ? resolution / std::abs(slope) : 0.0;
    }

    int cell;
    int step;
    double next_border;     // along the ray, metres
    double border_spacing;  // along the ray, metres
  };

  Axis x_;
  Axis y_;
  double distance_ = 0.0;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_RAY_WALK_H_
