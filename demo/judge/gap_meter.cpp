#include "demo/judge/gap_meter.h"

#include <algorithm>
#include <cmath>

#include "follower/geometry.h"
#include "follower/inflation.h"

namespace controller_base::demo {
namespace {

constexpr double kStanding = 0.05;  // m/s, or less: a robot that turns on the spot passes nothing
constexpr double kNowhere = std::numeric_limits<double>::infinity();
constexpr double kAcrossCosine = 0.8660254037844387;  // of 30 degrees

}  // namespace

void GapMeter::OnCycle(const simulation::CycleReport& cycle) {
  if (std::abs(cycle.motion.speed) <= kStanding) {
    return;
  }
  const nav_core::math::Vec2d center(cycle.true_pose.x, cycle.true_pose.y);
  double left = kNowhere;
  double right = kNowhere;
  for (const simulation::World::Overlap& solid : cycle.world.Overlaps(center, kWidest - follower::kRobotRadius)) {
    const double distance = follower::Distance(center, solid.nearest);
    const double aside = std::cos(cycle.true_pose.yaw) * (solid.nearest.y - center.y) -
                         std::sin(cycle.true_pose.yaw) * (solid.nearest.x - center.x);
    if (std::abs(aside) >= kAcrossCosine * distance) {
      double& nearest = aside > 0.0 ? left : right;
      nearest = std::min(nearest, distance);
    }
  }
  if (left + right <= kWidest) {
    narrowest_ = std::min(narrowest_, left + right);
  }
}

}  // namespace controller_base::demo
