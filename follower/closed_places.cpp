#include "follower/closed_places.h"

#include <algorithm>
#include <cmath>

#include "costmap_2d/cost_values.h"
#include "follower/inflation.h"

namespace controller_base::follower {
namespace {

constexpr double kSamePlace = 0.25;  // m; noise and another direction move a blockage no farther
constexpr double kClosed = 0.1;      // m; more than half the width of a gap that noise can close
constexpr double kRing = 0.2;        // m
constexpr int kTries = 2;
constexpr double kMemory = 30.0;  // s; longer than a robot that gets nowhere goes on

bool IsRecent(const ros::Time& last) {
  const ros::Duration age = ros::Time::now() - last;
  return age >= ros::Duration(0.0) && age <= ros::Duration(kMemory);
}

unsigned char CostAt(double distance, unsigned char cost) {
  if (distance <= kClosed) {
    return costmap_2d::LETHAL_OBSTACLE;
  }
  return distance <= kRing && cost < Inflation::kHighestCost ? static_cast<unsigned char>(Inflation::kHighestCost)
                                                             : cost;
}

void CloseAround(const geometry_msgs::Point& place, costmap_2d::Costmap2D* costs) {
  const double cell = costs->getResolution();
  const int reach = static_cast<int>(std::ceil(kRing / cell));
  unsigned int place_mx = 0;
  unsigned int place_my = 0;
  if (!costs->worldToMap(place.x, place.y, place_mx, place_my)) {
    return;
  }
  for (int my = static_cast<int>(place_my) - reach; my <= static_cast<int>(place_my) + reach; ++my) {
    for (int mx = static_cast<int>(place_mx) - reach; mx <= static_cast<int>(place_mx) + reach; ++mx) {
      if (!costs->IsInmap(mx, my)) {
        continue;
      }
      const auto x = static_cast<unsigned int>(mx);
      const auto y = static_cast<unsigned int>(my);
      geometry_msgs::Point center;
      costs->mapToWorld(x, y, center.x, center.y);
      costs->setCost(x, y, CostAt(Distance(center, place), costs->getCost(x, y)));
    }
  }
}

}  // namespace

void ClosedPlaces::Note(const geometry_msgs::Point& place) {
  places_.erase(std::remove_if(places_.begin(), places_.end(), [](const Place& old) { return !IsRecent(old.last); }),
                places_.end());
  const auto known = std::find_if(places_.begin(), places_.end(),
                                  [&](const Place& old) { return Distance(old.point, place) <= kSamePlace; });
  const bool was_last = known != places_.end() && known + 1 == places_.end();
  const int times = known == places_.end() ? 1 : was_last ? known->times : known->times + 1;
  if (known != places_.end()) {
    places_.erase(known);
  }
  places_.push_back({place, times, ros::Time::now()});
}

void ClosedPlaces::CloseOn(const Pose2d& robot, costmap_2d::Costmap2D* costs) const {
  for (const Place& place : places_) {
    if (place.times >= kTries && IsRecent(place.last) && Distance(robot, place.point) > kRing) {
      CloseAround(place.point, costs);
    }
  }
}

}  // namespace controller_base::follower
