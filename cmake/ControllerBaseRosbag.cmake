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
