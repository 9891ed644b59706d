#include "robot/laser_marks.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "follower/ray_walk.h"

namespace controller_base::robot {

using follower::RayWalk;

namespace {

// The meaning of a range: the ray is free for `length` metres, and hits something there or not.
struct Ray {
  double length;
  bool hits;
};

std::optional<Ray> ReadRange(const sensor_msgs::LaserScan& scan, float range) {
  if (range >= scan.range_min && range < scan.range_max) {
    return Ray{range, true};
  }
  const bool saw_nothing = range == scan.range_max || (std::isinf(range) && range > 0.0F);
  if (saw_nothing && std::isfinite(scan.range_max)) {
    return Ray{scan.range_max, false};
  }
  return std::nullopt;
}

bool IsUsable(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
  const geometry_msgs::Quaternion& q = laser.orientation;
  const double length = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
  return std::isfinite(scan.angle_min) && std::isfinite(scan.angle_increment) && std::isfinite(length) && length > 0.0;
}

}  // namespace

void LaserMarks::Add(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
  if (!IsUsable(scan, laser) || !marks_.grid.IndexAt(laser.position.x, laser.position.y)) {
    return;
  }
  passed_.clear();
  hits_.clear();
  for (std::size_t i = 0; i < scan.ranges.size(); ++i) {
    if (const std::optional<Ray> ray = ReadRange(scan, scan.ranges[i])) {
      const double angle = double{scan.angle_min} + static_cast<double>(i) * double{scan.angle_increment};
      LookAlong(laser, DirectionOf(laser.orientation, angle), ray->length, ray->hits);
    }
  }
  FadePassed();
  for (const std::size_t cell : hits_) {
    marks_.bytes[cell] = kScansToFade;
  }
}

void LaserMarks::Clear() { std::fill(marks_.bytes.begin(), marks_.bytes.end(), std::uint8_t{0}); }

// Columns and rows x and y of the rotation matrix of `q`, whose length does not matter.
LaserMarks::Direction LaserMarks::DirectionOf(const geometry_msgs::Quaternion& q, double angle) {
  const double scale = 2.0 / (q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return {(1.0 - scale * (q.y * q.y + q.z * q.z)) * c + scale * (q.x * q.y - q.z * q.w) * s,
          scale * (q.x * q.y + q.z * q.w) * c + (1.0 - scale * (q.x * q.x + q.z * q.z)) * s};
}

void LaserMarks::LookAlong(const geometry_msgs::Pose& laser, const Direction& direction, double length, bool hits) {
  const Grid& grid = marks_.grid;
  const double reach = length * std::hypot(direction.x, direction.y);
  const std::optional<std::size_t> end =
      hits ? grid.IndexAt(laser.position.x + length * direction.x, laser.position.y + length * direction.y)
           : std::nullopt;
  RayWalk walk(grid.origin_x, grid.origin_y, grid.resolution,
               {laser.position.x, laser.position.y, std::atan2(direction.y, direction.x)});
  for (; walk.distance() < reach && grid.Contains(walk.mx(), walk.my()); walk.Step()) {
    const std::size_t cell = grid.Index(walk.mx(), walk.my());
    if (cell == end) {
      break;
    }
    if (marks_.bytes[cell] != 0) {
      passed_.push_back(cell);
    }
  }
  if (end) {
    hits_.push_back(*end);
  }
}

void LaserMarks::FadePassed() {
  std::sort(passed_.begin(), passed_.end());
  const auto end = std::unique(passed_.begin(), passed_.end());
  std::for_each(passed_.begin(), end, [this](std::size_t cell) { --marks_.bytes[cell]; });
}

}  // namespace controller_base::robot
