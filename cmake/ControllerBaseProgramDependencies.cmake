# What the programs need beyond the library's own dependencies. Imported targets belong to the folder that finds them, so
# this file is included where all programs and tests lie below.
include(ControllerBaseSimulationDependencies)
# cairo::cairo: the package has no CMake file.
find_path(CONTROLLER_BASE_CAIRO_INCLUDE_DIR cairo/cairo.h)
find_library(CONTROLLER_BASE_CAIRO cairo)
mark_as_advanced(CONTROLLER_BASE_CAIRO_INCLUDE_DIR CONTROLLER_BASE_CAIRO)
if(CONTROLLER_BASE_CAIRO AND CONTROLLER_BASE_CAIRO_INCLUDE_DIR)
  if(NOT TARGET cairo::cairo)
    add_library(cairo::cairo UNKNOWN IMPORTED)
    set_target_properties(cairo::cairo PROPERTIES
      IMPORTED_LOCATION ${CONTROLLER_BASE_CAIRO}
      INTERFACE_INCLUDE_DIRECTORIES ${CONTROLLER_BASE_CAIRO_INCLUDE_DIR})
  endif()
else()
  list(APPEND controller_base_MISSING "cairo")
endif()
# rosbag::rosbag_storage: its package file pulls in the build tools of a plug-in loader, which need a Python of their
# own; so its headers, and those that they include, are looked up directly.
set(_rosbag_include_dirs "")
foreach(_header rosbag/bag.h pluginlib/class_loader.hpp class_loader/class_loader.hpp rcpputils/shared_library.hpp
    rcutils/shared_library.h ament_index_cpp/get_package_prefix.hpp)
  get_filename_component(_package ${_header} DIRECTORY)
  set(_variable CONTROLLER_BASE_${_package}_INCLUDE_DIR)
  find_path(${_variable} ${_header} HINTS ${roscpp_INCLUDE_DIRS} PATH_SUFFIXES ${_package})
  mark_as_advanced(${_variable})
  list(APPEND _rosbag_include_dirs ${${_variable}})
endforeach()
find_library(CONTROLLER_BASE_ROSBAG_STORAGE rosbag_storage)
find_library(CONTROLLER_BASE_CONSOLE_BRIDGE console_bridge)
mark_as_advanced(CONTROLLER_BASE_ROSBAG_STORAGE CONTROLLER_BASE_CONSOLE_BRIDGE)
if("${_rosbag_include_dirs};${CONTROLLER_BASE_ROSBAG_STORAGE};${CONTROLLER_BASE_CONSOLE_BRIDGE}" MATCHES "NOTFOUND")
  list(APPEND controller_base_MISSING "rosbag_storage")
elseif(NOT TARGET rosbag::rosbag_storage)
  list(REMOVE_DUPLICATES _rosbag_include_dirs)
  add_library(rosbag::rosbag_storage UNKNOWN IMPORTED)
  set_target_properties(rosbag::rosbag_storage PROPERTIES
    IMPORTED_LOCATION ${CONTROLLER_BASE_ROSBAG_STORAGE}
    INTERFACE_INCLUDE_DIRECTORIES "${_rosbag_include_dirs}"
    INTERFACE_LINK_LIBRARIES "${CONTROLLER_BASE_CONSOLE_BRIDGE}")
endif()
if(controller_base_MISSING)
  list(JOIN controller_base_MISSING ", " _missing)
  message(FATAL_ERROR "controller_base: the demo needs ${_missing} (run scripts/setup).")
endif()
