#ifndef CONTROLLER_BASE_PLAIN_NAME_ASTAR_BLOCK_ALLOCATOR_H_
#define CONTROLLER_BASE_PLAIN_NAME_ASTAR_BLOCK_ALLOCATOR_H_

// The plain name of "controller_base/platform/block_allocator.h"; "controller_base/platform/costmap_2d.h" says what
// holds beside another header of this name.
#if defined(CONTROLLER_BASE_HIDE_PLAIN_NAMES)
#include_next <astar/block_allocator.h>
#elif __has_include_next(<astar/block_allocator.h>)
#error Another <astar/block_allocator.h> lies behind that of controller_base. \
Include <controller_base/platform/block_allocator.h> for that of controller_base. \
For the other put its folder first, or define CONTROLLER_BASE_HIDE_PLAIN_NAMES.
#include_next <astar/block_allocator.h>  // so that this is the only error
#else
#include "controller_base/platform/block_allocator.h"
#endif

#endif  // CONTROLLER_BASE_PLAIN_NAME_ASTAR_BLOCK_ALLOCATOR_H_
