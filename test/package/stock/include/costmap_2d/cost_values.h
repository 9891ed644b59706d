#ifndef COSTMAP_2D_COST_VALUES_H_
#define COSTMAP_2D_COST_VALUES_H_

namespace costmap_2d {

static const unsigned char FREE_SPACE = 0;
static const unsigned char LETHAL_OBSTACLE = 254;

}  // namespace costmap_2d

#endif  // COSTMAP_2D_COST_VALUES_H_
