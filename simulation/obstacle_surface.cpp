#include "simulation/obstacle_surface.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace controller_base::simulation {
namespace {

using nav_core::math::Vec2d;

constexpr double kMissed = std::numeric_limits<double>::infinity();

// As the obstacle sees it: its centre is the origin, and the x axis looks along its yaw.
follower::Pose2d InFrameOf(const Obstacle& obstacle, const follower::Pose2d& pose, double time) {
  const Vec2d center = obstacle.CenterAt(time);
  const double x = pose.x - center.x;
  const double y = pose.y - center.y;
  const double c = std::cos(obstacle.yaw);
  const double s = std::sin(obstacle.yaw);
  return {c * x + s * y, c * y - s * x, pose.yaw - obstacle.yaw};
}

// Where along the ray one coordinate lies within `half` of 0: from, until.
std::pair<double, double> Within(double half, double start, double slope) {
  if (slope == 0.0) {
    return std::abs(start) <= half ? std::pair(-kMissed, kMissed) : std::pair(kMissed, -kMissed);
  }
  const double a = (-half - start) / slope;
  const double b = (half - start) / slope;
  return {std::min(a, b), std::max(a, b)};
}

double FirstWithin(double from, double until) { return from > until || until < 0.0 ? kMissed : std::max(from, 0.0); }

double RangeToDisc(double radius, const follower::Pose2d& ray) {
  const double along = -ray.x * std::cos(ray.yaw) - ray.y * std::sin(ray.yaw);  // to the point nearest to the centre
  const double aside = ray.x * std::sin(ray.yaw) - ray.y * std::cos(ray.yaw);
  if (std::abs(aside) > radius) {
    return kMissed;
  }
  const double half_chord = std::sqrt(radius * radius - aside * aside);
  return FirstWithin(along - half_chord, along + half_chord);
}

double RangeToBox(const Obstacle& box, const follower::Pose2d& ray) {
  const auto x = Within(0.5 * box.length, ray.x, std::cos(ray.yaw));
  const auto y = Within(0.5 * box.width, ray.y, std::sin(ray.yaw));
  return FirstWithin(std::max(x.first, y.first), std::min(x.second, y.second));
}

Vec2d NearestOfDisc(const Vec2d& center, double radius, const Vec2d& point) {
  const double distance = follower::Distance(center, point);
  if (distance <= radius) {
    return point;
  }
  const double share = radius / distance;
  return {center.x + share * (point.x - center.x), center.y + share * (point.y - center.y)};
}

}  // namespace

Vec2d NearestPointOf(const Obstacle& obstacle, const Vec2d& point, double time) {
  const Vec2d center = obstacle.CenterAt(time);
  if (obstacle.radius > 0.0) {
    return NearestOfDisc(center, obstacle.radius, point);
  }
  const follower::Pose2d own = InFrameOf(obstacle, {point.x, point.y, 0.0}, time);
  const double x = std::clamp(own.x, -0.5 * obstacle.length, 0.5 * obstacle.length);
  const double y = std::clamp(own.y, -0.5 * obstacle.width, 0.5 * obstacle.width);
  if (x == own.x && y == own.y) {
    return point;
  }
  const double c = std::cos(obstacle.yaw);
  const double s = std::sin(obstacle.yaw);
  return {center.x + c * x - s * y, center.y + s * x + c * y};
}

double RangeTo(const Obstacle& obstacle, const follower::Pose2d& ray, double time) {
  const follower::Pose2d own = InFrameOf(obstacle, ray, time);
  return obstacle.radius > 0.0 ? RangeToDisc(obstacle.radius, own) : RangeToBox(obstacle, own);
}

}  // namespace controller_base::simulation
