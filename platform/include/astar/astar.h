#ifndef CONTROLLER_BASE_PLAIN_NAME_ASTAR_ASTAR_H_
#define CONTROLLER_BASE_PLAIN_NAME_ASTAR_ASTAR_H_

// The plain name of "controller_base/platform/astar.h"; "controller_base/platform/costmap_2d.h" says what holds beside
// another header of this name.
#if defined(CONTROLLER_BASE_HIDE_PLAIN_NAMES)
#include_next <astar/astar.h>
#elif __has_include_next(<astar/astar.h>)
#error Another <astar/astar.h> lies behind that of controller_base. \
Include <controller_base/platform/astar.h> for that of controller_base. \
For the other put its folder first, or define CONTROLLER_BASE_HIDE_PLAIN_NAMES.
#include_next <astar/astar.h>  // so that this is the only error
#else
#include "controller_base/platform/astar.h"
#endif

#endif  // CONTROLLER_BASE_PLAIN_NAME_ASTAR_ASTAR_H_
