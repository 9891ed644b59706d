#ifndef COSTMAP_2D_COSTMAP_2D_ROS_H_
#define COSTMAP_2D_COSTMAP_2D_ROS_H_

#include <costmap_2d/cost_values.h>
#include <costmap_2d/costmap_2d.h>

namespace costmap_2d {

class Costmap2DROS {
 public:
  Costmap2D* getCostmap() { return &costmap_; }

 private:
  Costmap2D costmap_{40, 20, 0.05, -0.5, -0.5};
};

}  // namespace costmap_2d

#endif  // COSTMAP_2D_COSTMAP_2D_ROS_H_
