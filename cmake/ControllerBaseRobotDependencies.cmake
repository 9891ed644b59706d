# What the bridges and the nodes need beyond the library's own dependencies: controller_base::tf2, controller_base::tf2_ros,
# controller_base::diagnostic_updater and controller_base::dynamic_reconfigure.
#
# Headers and libraries are looked up directly: the packages' own files pull in the message generator, which needs a Python with
# ROS's modules.
include(ControllerBaseSimulationDependencies)
include(ControllerBaseRosbag)
find_path(CONTROLLER_BASE_TF2_INCLUDE_DIR tf2/buffer_core.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR tf2_msgs/TFMessage.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR sensor_msgs/LaserScan.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_STD_SRVS_INCLUDE_DIR std_srvs/SetBool.h HINTS ${roscpp_INCLUDE_DIRS})
find_library(CONTROLLER_BASE_TF2 tf2 HINTS ${roscpp_LIBRARY_DIRS})
mark_as_advanced(CONTROLLER_BASE_TF2_INCLUDE_DIR CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR
  CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR CONTROLLER_BASE_STD_SRVS_INCLUDE_DIR CONTROLLER_BASE_TF2)
if(NOT CONTROLLER_BASE_TF2_INCLUDE_DIR OR NOT CONTROLLER_BASE_TF2)
  list(APPEND controller_base_MISSING "tf2")
endif()
if(NOT CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR)
  list(APPEND controller_base_MISSING "tf2_msgs")
endif()
if(NOT CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR)
  list(APPEND controller_base_MISSING "sensor_msgs")
endif()
if(NOT CONTROLLER_BASE_STD_SRVS_INCLUDE_DIR)
  list(APPEND controller_base_MISSING "std_srvs")
endif()
find_path(CONTROLLER_BASE_TF2_ROS_INCLUDE_DIR tf2_ros/transform_listener.h HINTS ${roscpp_INCLUDE_DIRS})
find_library(CONTROLLER_BASE_TF2_ROS tf2_ros HINTS ${roscpp_LIBRARY_DIRS})
find_path(CONTROLLER_BASE_DIAGNOSTIC_UPDATER_INCLUDE_DIR diagnostic_updater/diagnostic_updater.h HINTS ${roscpp_INCLUDE_DIRS})
find_path(CONTROLLER_BASE_DIAGNOSTIC_MSGS_INCLUDE_DIR diagnostic_msgs/DiagnosticArray.h HINTS ${roscpp_INCLUDE_DIRS})
find_library(CONTROLLER_BASE_DIAGNOSTIC_UPDATER diagnostic_updater HINTS ${roscpp_LIBRARY_DIRS})
mark_as_advanced(CONTROLLER_BASE_TF2_ROS_INCLUDE_DIR CONTROLLER_BASE_TF2_ROS CONTROLLER_BASE_DIAGNOSTIC_UPDATER_INCLUDE_DIR
  CONTROLLER_BASE_DIAGNOSTIC_MSGS_INCLUDE_DIR CONTROLLER_BASE_DIAGNOSTIC_UPDATER)
if(NOT CONTROLLER_BASE_TF2_ROS_INCLUDE_DIR OR NOT CONTROLLER_BASE_TF2_ROS)
  list(APPEND controller_base_MISSING "tf2_ros")
endif()
if(NOT CONTROLLER_BASE_DIAGNOSTIC_UPDATER_INCLUDE_DIR OR NOT CONTROLLER_BASE_DIAGNOSTIC_UPDATER)
  list(APPEND controller_base_MISSING "diagnostic_updater")
endif()
if(NOT CONTROLLER_BASE_DIAGNOSTIC_MSGS_INCLUDE_DIR)
  list(APPEND controller_base_MISSING "diagnostic_msgs")
endif()
find_path(CONTROLLER_BASE_DYNAMIC_RECONFIGURE_INCLUDE_DIR dynamic_reconfigure/server.h HINTS ${roscpp_INCLUDE_DIRS})
mark_as_advanced(CONTROLLER_BASE_DYNAMIC_RECONFIGURE_INCLUDE_DIR)
if(NOT CONTROLLER_BASE_DYNAMIC_RECONFIGURE_INCLUDE_DIR)
  list(APPEND controller_base_MISSING "dynamic_reconfigure")
endif()
if(controller_base_MISSING)
  list(JOIN controller_base_MISSING ", " _missing)
  message(FATAL_ERROR " controller_base: what connects it with a robot needs ${_missing}. Run scripts/setup, source your ROS setup \
file, or leave it out with -DCONTROLLER_BASE_BUILD_ROBOT=OFF.")
endif()
if(NOT TARGET controller_base::tf2)
  add_library(controller_base::tf2 UNKNOWN IMPORTED)
  set_target_properties(controller_base::tf2 PROPERTIES
    IMPORTED_LOCATION ${CONTROLLER_BASE_TF2}
    INTERFACE_INCLUDE_DIRECTORIES
      "${CONTROLLER_BASE_TF2_INCLUDE_DIR};${CONTROLLER_BASE_TF2_MSGS_INCLUDE_DIR};${CONTROLLER_BASE_SENSOR_MSGS_INCLUDE_DIR};\
${CONTROLLER_BASE_STD_SRVS_INCLUDE_DIR}")
endif()
if(NOT TARGET controller_base::tf2_ros)
  add_library(controller_base::tf2_ros UNKNOWN IMPORTED)
  set_target_properties(controller_base::tf2_ros PROPERTIES
    IMPORTED_LOCATION ${CONTROLLER_BASE_TF2_ROS}
    INTERFACE_INCLUDE_DIRECTORIES "${CONTROLLER_BASE_TF2_ROS_INCLUDE_DIR};${CONTROLLER_BASE_TF2_INCLUDE_DIR}")
endif()
if(NOT TARGET controller_base::diagnostic_updater)
  add_library(controller_base::diagnostic_updater UNKNOWN IMPORTED)
  set_target_properties(controller_base::diagnostic_updater PROPERTIES
    IMPORTED_LOCATION ${CONTROLLER_BASE_DIAGNOSTIC_UPDATER}
    INTERFACE_INCLUDE_DIRECTORIES "${CONTROLLER_BASE_DIAGNOSTIC_UPDATER_INCLUDE_DIR};${CONTROLLER_BASE_DIAGNOSTIC_MSGS_INCLUDE_DIR}")
endif()
if(NOT TARGET controller_base::dynamic_reconfigure)
  add_library(controller_base::dynamic_reconfigure INTERFACE IMPORTED)
  set_target_properties(controller_base::dynamic_reconfigure PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${CONTROLLER_BASE_DYNAMIC_RECONFIGURE_INCLUDE_DIR}")
endif()
