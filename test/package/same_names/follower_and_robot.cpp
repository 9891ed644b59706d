// Uses the robot's map and the follower, whose headers show no map class.
#include <controller_base/follower/inflate.h>
#include <controller_base/follower/path_follower.h>
// Then the robot's:
#include <costmap_2d/costmap_2d_ros.h>

#include <type_traits>

static_assert(std::is_polymorphic_v<costmap_2d::Costmap2D>);

const controller_base::follower::Outcome& OutcomeOf(const controller_base::follower::PathFollower& follower) {
  return follower.outcome();
}
