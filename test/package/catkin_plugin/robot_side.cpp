#include <costmap_2d/costmap_2d_ros.h>

#include "sides.h"

bool IsRobotBlocked(bool with_wall) {
  costmap_2d::Costmap2DROS robot;
  costmap_2d::Costmap2D& map = *robot.getCostmap();
  for (unsigned int my = 0; with_wall && my < 20; ++my) {
    map.setCost(20, my, costmap_2d::LETHAL_OBSTACLE);
  }
  return IsBlocked({map.getCharMap(), 40, 20, 0.05, -0.5, -0.5});
}
