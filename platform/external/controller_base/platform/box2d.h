#ifndef CONTROLLER_BASE_PLATFORM_BOX2D_H_
#define CONTROLLER_BASE_PLATFORM_BOX2D_H_

#include <nav_core/math/box2d.h>  // the robot's

#endif  // CONTROLLER_BASE_PLATFORM_BOX2D_H_
