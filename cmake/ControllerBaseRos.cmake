# Defines controller_base::ros: roscpp, rosconsole and the three message packages.
#
# The message packages are headers only, and their own package files pull in the message generator, which wants a Python that
# has ROS's modules. Their headers are therefore looked up directly: neither this project nor its users need Python to configure.
# Used by the project's own build and by its installed package file.

if(TARGET controller_base::ros)
  return()
endif()

foreach(_package roscpp rosconsole)
  find_package(${_package} QUIET)
  if(NOT ${_package}_FOUND)
    message(FATAL_ERROR "controller_base: the ROS package '${_package}' is missing (run scripts/setup, or source your ROS setup file).")
  endif()
endforeach()

set(_ros_include_dirs ${roscpp_INCLUDE_DIRS} ${rosconsole_INCLUDE_DIRS})
foreach(_header geometry_msgs/PoseStamped.h nav_msgs/Path.h nav_msgs/OccupancyGrid.h visualization_msgs/Marker.h)
  string(MAKE_C_IDENTIFIER "CONTROLLER_BASE_${_header}_DIR" _variable)
  find_path(${_variable} ${_header} HINTS ${roscpp_INCLUDE_DIRS} ENV CMAKE_PREFIX_PATH PATH_SUFFIXES include)
  mark_as_advanced(${_variable})
  if(NOT ${_variable})
    get_filename_component(_package ${_header} DIRECTORY)
    message(FATAL_ERROR "controller_base: the header ${_header} of the ROS package '${_package}' is missing (run scripts/setup, or source your ROS setup file).")
  endif()
  list(APPEND _ros_include_dirs ${${_variable}})
endforeach()
list(REMOVE_DUPLICATES _ros_include_dirs)

set(_ros_libraries ${roscpp_LIBRARIES} ${rosconsole_LIBRARIES})
list(REMOVE_DUPLICATES _ros_libraries)

add_library(controller_base::ros INTERFACE IMPORTED)
set_target_properties(controller_base::ros PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${_ros_include_dirs}"
  INTERFACE_LINK_LIBRARIES "${_ros_libraries}")
if(NOT CMAKE_VERSION VERSION_LESS 3.18)
  set_property(TARGET controller_base::ros PROPERTY IMPORTED_GLOBAL TRUE)
endif()
