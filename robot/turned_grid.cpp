#include "robot/turned_grid.h"

#include <cmath>
#include <cstddef>
#include <optional>

namespace controller_base::robot {
namespace {

struct Point {
  double x;
  double y;
};

// `point` turned by `yaw`.
Point Turned(const Point& point, double yaw) {
  return {std::cos(yaw) * point.x - std::sin(yaw) * point.y, std::sin(yaw) * point.x + std::cos(yaw) * point.y};
}

Point MiddleOf(const Grid& grid) {
  return {grid.origin_x + 0.5 * grid.size_x * grid.resolution, grid.origin_y + 0.5 * grid.size_y * grid.resolution};
}

// The heading of the frame's x axis.
double YawOf(const geometry_msgs::Quaternion& q) {
  return std::atan2(2.0 * (q.w * q.z + q.x * q.y), 1.0 - 2.0 * (q.y * q.y + q.z * q.z));
}

Point CenterOf(const Grid& grid, int mx, int my) {
  return {grid.origin_x + (mx + 0.5) * grid.resolution, grid.origin_y + (my + 0.5) * grid.resolution};
}

// Where `point` is in `to`, which has the middle of `from` and is turned by `yaw` against it.
Point Moved(const Point& point, const Grid& from, const Grid& to, double yaw) {
  const Point middle = MiddleOf(from);
  const Point turned = Turned({point.x - middle.x, point.y - middle.y}, yaw);
  return {MiddleOf(to).x + turned.x, MiddleOf(to).y + turned.y};
}

void Sample(const GridBytes& source, double yaw, std::uint8_t outside, GridBytes* result) {
  auto byte = result->bytes.begin();
  for (int my = 0; my < result->grid.size_y; ++my) {
    for (int mx = 0; mx < result->grid.size_x; ++mx, ++byte) {
      const Point place = Moved(CenterOf(result->grid, mx, my), result->grid, source.grid, -yaw);
      const std::optional<std::size_t> cell = source.grid.IndexAt(place.x, place.y);
      *byte = cell ? source.bytes[*cell] : outside;
    }
  }
}

// A single cell may lie between all sampled places.
void Keep(const GridBytes& source, double yaw, std::uint8_t kept, GridBytes* result) {
  auto byte = source.bytes.begin();
  for (int my = 0; my < source.grid.size_y; ++my) {
    for (int mx = 0; mx < source.grid.size_x; ++mx, ++byte) {
      if (*byte == kept) {
        const Point place = Moved(CenterOf(source.grid, mx, my), source.grid, result->grid, yaw);
        if (const std::optional<std::size_t> cell = result->grid.IndexAt(place.x, place.y)) {
          result->bytes[*cell] = kept;
        }
      }
    }
  }
}

}  // namespace

GridBytes InOtherFrame(const GridBytes& source, const geometry_msgs::Pose& frame, std::uint8_t outside,
                       std::uint8_t kept) {
  const double yaw = YawOf(frame.orientation);
  const Point middle = MiddleOf(source.grid);
  const Point turned = Turned(middle, yaw);
  GridBytes result = source;
  result.grid.origin_x += frame.position.x + turned.x - middle.x;
  result.grid.origin_y += frame.position.y + turned.y - middle.y;
  if (std::abs(yaw) >= kNoTurn) {
    Sample(source, yaw, outside, &result);
    Keep(source, yaw, kept, &result);
  }
  return result;
}

}  // namespace controller_base::robot
