#ifndef CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COST_VALUES_H_
#define CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COST_VALUES_H_

// The plain name of "controller_base/platform/cost_values.h"; "controller_base/platform/costmap_2d.h" says what holds
// beside another header of this name.
#if defined(CONTROLLER_BASE_HIDE_PLAIN_NAMES)
#include_next <costmap_2d/cost_values.h>
#elif __has_include_next(<costmap_2d/cost_values.h>)
#error Another <costmap_2d/cost_values.h> lies behind that of controller_base. \
Include <controller_base/platform/cost_values.h> for that of controller_base. \
For the other put its folder first, or define CONTROLLER_BASE_HIDE_PLAIN_NAMES.
#include_next <costmap_2d/cost_values.h>  // so that this is the only error
#else
#include "controller_base/platform/cost_values.h"
#endif

#endif  // CONTROLLER_BASE_PLAIN_NAME_COSTMAP_2D_COST_VALUES_H_
