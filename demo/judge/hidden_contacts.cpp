#include "demo/judge/hidden_contacts.h"

#include <algorithm>
#include <numeric>

namespace controller_base::demo {
namespace {

bool IsTouched(std::size_t obstacle, const simulation::CycleReport& cycle) {
  const simulation::World& world = cycle.world;
  return std::any_of(cycle.touched.begin(), cycle.touched.end(), [&](const simulation::World::Overlap& overlap) {
    if (overlap.obstacle >= 0 || !world.map().IsInmap(overlap.mx, overlap.my)) {
      return overlap.obstacle == static_cast<int>(obstacle);
    }
    nav_core::math::Vec2d center;
    world.map().mapToWorld(static_cast<unsigned int>(overlap.mx), static_cast<unsigned int>(overlap.my), center.x,
                           center.y);
    return world.shapes() == simulation::Shapes::kCells && world.obstacles()[obstacle].Covers(center, cycle.time);
  });
}

}  // namespace

void HiddenContacts::OnCycle(const simulation::CycleReport& cycle) {
  const std::vector<simulation::Obstacle>& obstacles = cycle.world.obstacles();
  contacts_.resize(obstacles.size());
  is_touched_.resize(obstacles.size());
  for (std::size_t i = 0; i < obstacles.size(); ++i) {
    const bool is_touched = obstacles[i].low && IsTouched(i, cycle);
    contacts_[i] += is_touched && !is_touched_[i] ? 1 : 0;
    is_touched_[i] = is_touched;
  }
}

int HiddenContacts::contacts() const { return std::accumulate(contacts_.begin(), contacts_.end(), 0); }

int HiddenContacts::touched() const {
  return static_cast<int>(std::count_if(contacts_.begin(), contacts_.end(), [](int count) { return count > 0; }));
}

}  // namespace controller_base::demo
