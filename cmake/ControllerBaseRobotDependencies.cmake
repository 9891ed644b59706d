# What the bridges need beyond the library's own dependencies: controller_base::tf2. Imported targets belong to the folder that
# finds them, so whoever links the bridges includes this file.
#
# Headers and libraries are looked up directly: the packages' own files pull in the message generator, which wants a Python that
# has ROS's modules.
set(_missing "")
find_path(CONTROLLER_BASE_TF2_INCLUDE_DIR tf2/buffer_core.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR tf2_msgs/TFMessage.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR sensor_msgs/LaserScan.h HINTS ${roscpp_INCLUDE_DIRS})
find_library(CONTROLLER_BASE_TF2 tf2 HINTS ${roscpp_LIBRARY_DIRS})
mark_as_advanced(CONTROLLER_BASE_TF2_INCLUDE_DIR CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR
  CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR CONTROLLER_BASE_TF2)
if(NOT CONTROLLER_BASE_TF2_INCLUDE_DIR OR NOT CONTROLLER_BASE_TF2)
  list(APPEND _missing "tf2")
endif()
if(NOT CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR)
  list(APPEND _missing "tf2_msgs")
endif()
if(NOT CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR)
  list(APPEND _missing "sensor_msgs")
endif()
if(_missing)
  list(JOIN _missing ", " _missing)
  message(FATAL_ERROR " controller_base: the bridges to a robot need ${_missing}. Run scripts/setup, source your ROS setup file, \
or leave them out with -DCONTROLLER_BASE_BUILD_ROBOT=OFF.")
endif()
if(NOT TARGET controller_base::tf2)
  add_library(controller_base::tf2 UNKNOWN IMPORTED)
  set_target_properties(controller_base::tf2 PROPERTIES
    IMPORTED_LOCATION ${CONTROLLER_BASE_TF2}
    INTERFACE_INCLUDE_DIRECTORIES
      "${CONTROLLER_BASE_TF2_INCLUDE_DIR};${CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR};${CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR}")
endif()
