# Defines controller_base::ros: roscpp, rosconsole and the three message packages. What is missing is added to the list
# controller_base_MISSING.
#
# The message packages are headers only, and their own package files pull in the message generator, which needs a Python with
# ROS's modules. Their headers are therefore looked up directly: neither this project nor its users need Python to configure.
# Used by the project's own build and by its installed package file.

if(TARGET controller_base::ros)
  return()
endif()

set(_controller_base_ros_include_dirs "")
set(_controller_base_ros_libraries "")
foreach(_package roscpp rosconsole)
  find_package(${_package} QUIET)
  if(${_package}_FOUND)
    list(APPEND _controller_base_ros_include_dirs ${${_package}_INCLUDE_DIRS})
    list(APPEND _controller_base_ros_libraries ${${_package}_LIBRARIES})
  else()
    list(APPEND controller_base_MISSING "the ROS package ${_package}")
  endif()
endforeach()

foreach(_header geometry_msgs/PoseStamped.h nav_msgs/Path.h visualization_msgs/Marker.h)
  get_filename_component(_package ${_header} DIRECTORY)
  set(_variable CONTROLLER_BASE_${_package}_INCLUDE_DIR)
  find_path(${_variable} ${_header} HINTS ${roscpp_INCLUDE_DIRS})
  mark_as_advanced(${_variable})
  if(${_variable})
    list(APPEND _controller_base_ros_include_dirs ${${_variable}})
  else()
    list(APPEND controller_base_MISSING "the ROS package ${_package} (its header ${_header})")
  endif()
endforeach()

list(REMOVE_DUPLICATES _controller_base_ros_include_dirs)
list(REMOVE_DUPLICATES _controller_base_ros_libraries)

add_library(controller_base::ros INTERFACE IMPORTED)
set_target_properties(controller_base::ros PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${_controller_base_ros_include_dirs}"
  INTERFACE_LINK_LIBRARIES "${_controller_base_ros_libraries}")
