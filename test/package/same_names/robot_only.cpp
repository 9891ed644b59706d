// Includes the robot's headers alone, so every plain name is the robot's.
#include <costmap_2d/costmap_2d_ros.h>

#include <type_traits>

static_assert(std::is_polymorphic_v<costmap_2d::Costmap2D>);

costmap_2d::Costmap2D* MapOf(costmap_2d::Costmap2DROS& robot) { return robot.getCostmap(); }
