# Defines controller_base::platform from the robot's own libraries. What is missing is added to the list controller_base_MISSING.
#
#   PIECE        header                    package
#   COSTMAP_2D   costmap_2d/costmap_2d.h   costmap_2d
#   NAV_CORE     nav_core/math/box2d.h     nav_core
#   ASTAR        astar/astar.h             astar
#
# Each piece comes from its CMake package: from the package's target <package>::<package>, or from its variables
# <package>_INCLUDE_DIRS and <package>_LIBRARIES. CONTROLLER_BASE_<PIECE>_PACKAGE names another package.
# CONTROLLER_BASE_<PIECE>_INCLUDE_DIRS and CONTROLLER_BASE_<PIECE>_LIBRARIES name folders and library files instead of a package.
# Used by the project's own build and, with what was named there as the default, by its installed package file.

if(TARGET controller_base::platform)
  return()
endif()

set(CONTROLLER_BASE_COSTMAP_2D_PACKAGE costmap_2d CACHE STRING "CMake package of the robot's costmap_2d/costmap_2d.h")
set(CONTROLLER_BASE_NAV_CORE_PACKAGE nav_core CACHE STRING "CMake package of the robot's nav_core/math/box2d.h")
set(CONTROLLER_BASE_ASTAR_PACKAGE astar CACHE STRING "CMake package of the robot's astar/astar.h")

# _controller_base_find_in_package(PACKAGE): sets the caller's include_dirs and libraries.
macro(_controller_base_find_in_package package)
  find_package(${package} QUIET)
  if(TARGET ${package}::${package})
    get_target_property(include_dirs ${package}::${package} INTERFACE_INCLUDE_DIRECTORIES)
    set(libraries ${package}::${package})
  elseif(${package}_FOUND)
    set(include_dirs ${${package}_INCLUDE_DIRS} ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    set(libraries ${${package}_LIBRARIES})
  endif()
endmacro()

# _controller_base_find_named(PIECE): the same from the paths that the user named.
macro(_controller_base_find_named piece)
  set(include_dirs ${CONTROLLER_BASE_${piece}_INCLUDE_DIRS})
  set(libraries ${CONTROLLER_BASE_${piece}_LIBRARIES})
  if(NOT libraries)
    list(APPEND controller_base_MISSING "the robot's library in CONTROLLER_BASE_${piece}_LIBRARIES")
  endif()
  foreach(library ${libraries})
    if(NOT EXISTS ${library})
      list(APPEND controller_base_MISSING "the robot's library ${library}")
    endif()
  endforeach()
endmacro()

# _controller_base_add_piece(PIECE HEADER): adds it to controller_base::platform.
function(_controller_base_add_piece piece header)
  set(CONTROLLER_BASE_${piece}_INCLUDE_DIRS "" CACHE STRING "Folders with the robot's ${header}, instead of a package")
  set(CONTROLLER_BASE_${piece}_LIBRARIES "" CACHE STRING "Library files behind the robot's ${header}, instead of a package")
  if(CONTROLLER_BASE_${piece}_INCLUDE_DIRS OR CONTROLLER_BASE_${piece}_LIBRARIES)
    _controller_base_find_named(${piece})
  else()
    _controller_base_find_in_package(${CONTROLLER_BASE_${piece}_PACKAGE})
  endif()

  find_file(header_file ${header} PATHS ${include_dirs} NO_DEFAULT_PATH)
  if(NOT header_file)
    list(APPEND controller_base_MISSING "the robot's ${header} (name its package in CONTROLLER_BASE_${piece}_PACKAGE or its \
folder and library in CONTROLLER_BASE_${piece}_INCLUDE_DIRS and CONTROLLER_BASE_${piece}_LIBRARIES)")
  endif()
  unset(header_file CACHE)

  set_property(TARGET controller_base::platform APPEND PROPERTY INTERFACE_INCLUDE_DIRECTORIES ${include_dirs})
  set_property(TARGET controller_base::platform APPEND PROPERTY INTERFACE_LINK_LIBRARIES ${libraries})
  set(controller_base_MISSING ${controller_base_MISSING} PARENT_SCOPE)
endfunction()

add_library(controller_base::platform INTERFACE IMPORTED)
_controller_base_add_piece(COSTMAP_2D costmap_2d/costmap_2d.h)
_controller_base_add_piece(NAV_CORE nav_core/math/box2d.h)
_controller_base_add_piece(ASTAR astar/astar.h)
