#ifndef CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_
#define CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_

#include <costmap_2d/costmap_2d.h>  // the robot's

#endif  // CONTROLLER_BASE_PLATFORM_COSTMAP_2D_H_
