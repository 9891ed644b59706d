# What this project needs from elsewhere, or one line (the leading space keeps CMake from breaking it) that says what is missing.
set(controller_base_MISSING "")
include(ControllerBaseRos)
include(ControllerBaseOpenCv)
controller_base_find_opencv(core imgproc)

if(CONTROLLER_BASE_PLATFORM STREQUAL "external")
  include(ControllerBaseExternalPlatform)
elseif(NOT CONTROLLER_BASE_PLATFORM STREQUAL "bundled")
  message(FATAL_ERROR " CONTROLLER_BASE_PLATFORM is '${CONTROLLER_BASE_PLATFORM}'; it can be bundled or external.")
endif()

if(controller_base_MISSING)
  list(JOIN controller_base_MISSING "; " _missing)
  message(FATAL_ERROR " controller_base is missing ${_missing}. Run scripts/setup, or source your ROS setup file.")
endif()
