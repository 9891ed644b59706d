#ifndef CONTROLLER_BASE_PLAIN_NAME_NAV_CORE_MATH_VEC2D_H_
#define CONTROLLER_BASE_PLAIN_NAME_NAV_CORE_MATH_VEC2D_H_

// The plain name of "controller_base/platform/vec2d.h"; "controller_base/platform/costmap_2d.h" says what holds beside
// another header of this name.
#if defined(CONTROLLER_BASE_HIDE_PLAIN_NAMES)
#include_next <nav_core/math/vec2d.h>
#elif __has_include_next(<nav_core/math/vec2d.h>)
#error Another <nav_core/math/vec2d.h> lies behind that of controller_base. \
Include <controller_base/platform/vec2d.h> for that of controller_base. \
For the other put its folder first, or define CONTROLLER_BASE_HIDE_PLAIN_NAMES.
#include_next <nav_core/math/vec2d.h>  // so that this is the only error
#else
#include "controller_base/platform/vec2d.h"
#endif

#endif  // CONTROLLER_BASE_PLAIN_NAME_NAV_CORE_MATH_VEC2D_H_
