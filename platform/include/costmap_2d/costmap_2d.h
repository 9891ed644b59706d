#ifndef CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COSTMAP_2D_H_
#define CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COSTMAP_2D_H_

// The plain name of "controller_base/platform/costmap_2d.h"; it says what holds beside another header of this name.
#if defined(CONTROLLER_BASE_HIDE_PLAIN_NAMES)
#include_next <costmap_2d/costmap_2d.h>
#elif __has_include_next(<costmap_2d/costmap_2d.h>)
#error Another <costmap_2d/costmap_2d.h> lies behind that of controller_base. \
Include <controller_base/platform/costmap_2d.h> for that of controller_base. \
For the other put its folder first, or define CONTROLLER_BASE_HIDE_PLAIN_NAMES.
#include_next <costmap_2d/costmap_2d.h>  // so that this is the only error
#else
#include "controller_base/platform/costmap_2d.h"
#endif

#endif  // CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COSTMAP_2D_H_
