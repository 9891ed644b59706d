#ifndef CONTROLLER_BASE_PLATFORM_ASTAR_H_
#define CONTROLLER_BASE_PLATFORM_ASTAR_H_

#include <astar/astar.h>  // the robot's

#endif  // CONTROLLER_BASE_PLATFORM_ASTAR_H_
