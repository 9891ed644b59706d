#ifndef BENCHMARK_BOXES_H_
#define BENCHMARK_BOXES_H_

#include <costmap_2d/costmap_2d.h>
#include <geometry_msgs/Point.h>
#include <nav_core/math/box2d.h>

#include <vector>

#include "benchmark/random_source.h"
#include "controller_base/local_map_obstacle.h"

namespace controller_base_benchmark {

struct BoxPlace {
  geometry_msgs::Point center;  // metres
  double heading = 0.0;         // radians
};

// A place somewhere on `costmap`, with some heading.
inline BoxPlace RandomPlace(const costmap_2d::Costmap2D& costmap, RandomSource& random) {
  constexpr double kDegree = 3.14159265358979323846 / 180;
  BoxPlace place;
  costmap.mapToWorld(static_cast<unsigned int>(random.Between(0, static_cast<int>(costmap.getSizeInCellsX()) - 1)),
                     static_cast<unsigned int>(random.Between(0, static_cast<int>(costmap.getSizeInCellsY()) - 1)),
                     place.center.x, place.center.y);
  place.heading = random.Between(0, 359) * kDegree;
  return place;
}

// The box that LocalMapObstacle makes at `place`.
inline nav_core::math::Box2d BoxAt(const BoxPlace& place) {
  constexpr double kLength = 0.2;  // metres, along the heading
  constexpr double kWidth = 0.1;   // metres
  return {nav_core::math::Vec2d(place.center.x, place.center.y), place.heading, kLength, kWidth};
}

// The same boxes as the library's store and as a plain list.
class Boxes {
 public:
  void Add(const BoxPlace& place) {
    store_.CreateNewBox(place.center, place.heading);
    list_.push_back(BoxAt(place));
  }

  // Adds `count` boxes somewhere on `costmap`.
  void Scatter(int count, const costmap_2d::Costmap2D& costmap, RandomSource& random) {
    for (int i = 0; i < count; ++i) {
      Add(RandomPlace(costmap, random));
    }
  }

  const nav_controller::LocalMapObstacle& Store() const { return store_; }
  const std::vector<nav_core::math::Box2d>& List() const { return list_; }

 private:
  nav_controller::LocalMapObstacle store_;
  std::vector<nav_core::math::Box2d> list_;
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_BOXES_H_
