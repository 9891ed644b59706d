#include "demo/judge/run_judge.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "costmap_2d/cost_values.h"
#include "demo/judge/path_check.h"
#include "follower/geometry.h"
#include "simulation/obstacle_surface.h"

namespace controller_base::demo {
namespace {

constexpr double kHitTolerance = 0.05;  // m; ranges and poses err by less
constexpr double kNotYet = std::numeric_limits<double>::infinity();

std::vector<simulation::Obstacle> VisibleOnes(const std::vector<simulation::Obstacle>& obstacles) {
  std::vector<simulation::Obstacle> visible;
  std::remove_copy_if(obstacles.begin(), obstacles.end(), std::back_inserter(visible),
                      [](const simulation::Obstacle& obstacle) { return obstacle.low; });
  return visible;
}

}  // namespace

RunJudge::RunJudge(const costmap_2d::Costmap2D& map, const std::vector<simulation::Obstacle>& obstacles)
    : map_(map),
      visible_(VisibleOnes(obstacles)),
      seen_since_(visible_.size(), kNotYet),
      true_map_(TrueMap(map, visible_)) {}

void RunJudge::OnCycle(const simulation::CycleReport& cycle) {
  const auto was_avoidable = [&](const simulation::World::Overlap& touched) { return WasAvoidable(touched, cycle); };
  const bool touches = std::any_of(cycle.touched.begin(), cycle.touched.end(), was_avoidable);
  touches_ += touches && !was_touching_ ? 1 : 0;
  was_touching_ = touches;
  LookAt(cycle);
  if (cycle.world.shapes() == simulation::Shapes::kCells) {
    CountLethalCell(cycle.true_pose);
  }
}

bool RunJudge::WasAvoidable(const simulation::World::Overlap& touched, const simulation::CycleReport& cycle) const {
  if (touched.obstacle >= 0) {
    const std::vector<simulation::Obstacle>& obstacles = cycle.world.obstacles();
    const auto obstacle = obstacles.begin() + touched.obstacle;
    const auto place =
        std::count_if(obstacles.begin(), obstacle, [](const simulation::Obstacle& other) { return !other.low; });
    return !obstacle->low && WasSeenInTime(static_cast<std::size_t>(place), cycle.time);
  }
  if (!map_.IsInmap(touched.mx, touched.my)) {
    return true;  // the map's edge is a known wall
  }
  const auto mx = static_cast<unsigned int>(touched.mx);
  const auto my = static_cast<unsigned int>(touched.my);
  nav_core::math::Vec2d center;
  map_.mapToWorld(mx, my, center.x, center.y);
  for (std::size_t i = 0; i < visible_.size(); ++i) {
    if (WasSeenInTime(i, cycle.time) && visible_[i].Covers(center, cycle.time)) {
      return true;
    }
  }
  return map_.getCost(mx, my) == costmap_2d::LETHAL_OBSTACLE;
}

// Obstacles that have not been seen before, among what the laser's rays end at.
void RunJudge::LookAt(const simulation::CycleReport& cycle) {
  for (std::size_t i = 0; i < visible_.size(); ++i) {
    const auto is_hit = [&](const nav_core::math::Vec2d& point) {
      return cycle.world.shapes() == simulation::Shapes::kCells
                 ? visible_[i].Covers(point, cycle.time)
                 : follower::Distance(point, simulation::NearestPointOf(visible_[i], point, cycle.time)) <=
                       kHitTolerance;
    };
    if (seen_since_[i] == kNotYet && std::any_of(cycle.laser.begin(), cycle.laser.end(), is_hit)) {
      seen_since_[i] = cycle.time;
    }
  }
}

void RunJudge::CountLethalCell(const follower::Pose2d& pose) {
  unsigned int mx = 0;
  unsigned int my = 0;
  const bool is_lethal = !true_map_.worldToMap(pose.x, pose.y, mx, my) || true_map_.IsLethalObstacle(mx, my);
  const bool is_other = mx != last_mx_ || my != last_my_;
  lethal_cells_ += is_lethal && is_other ? 1 : 0;
  last_mx_ = mx;
  last_my_ = my;
}

}  // namespace controller_base::demo
