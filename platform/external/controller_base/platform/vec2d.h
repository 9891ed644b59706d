#ifndef CONTROLLER_BASE_PLATFORM_VEC2D_H_
#define CONTROLLER_BASE_PLATFORM_VEC2D_H_

#include <nav_core/math/vec2d.h>  // the robot's

#endif  // CONTROLLER_BASE_PLATFORM_VEC2D_H_
