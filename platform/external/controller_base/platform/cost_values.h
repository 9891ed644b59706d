#ifndef CONTROLLER_BASE_PLATFORM_COST_VALUES_H_
#define CONTROLLER_BASE_PLATFORM_COST_VALUES_H_

#include <costmap_2d/cost_values.h>  // the robot's

#endif  // CONTROLLER_BASE_PLATFORM_COST_VALUES_H_
