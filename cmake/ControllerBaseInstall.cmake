# The package file controller_baseConfig.cmake and what it includes: for the install prefix, and in a catkin workspace also for
# the devel space, where headers are used from the source folders.
include(CMakePackageConfigHelpers)

set(_platform_headers ${PROJECT_SOURCE_DIR}/platform/include/controller_base/platform)
set(_modules ${PROJECT_SOURCE_DIR}/cmake/ControllerBaseOpenCv.cmake ${PROJECT_SOURCE_DIR}/cmake/ControllerBaseRos.cmake)
set(_external_platform "")  # what its package file needs to find the robot's libraries again
if(CONTROLLER_BASE_PLATFORM STREQUAL "external")
  set(_platform_headers ${PROJECT_SOURCE_DIR}/platform/external/controller_base/platform)
  list(APPEND _modules ${PROJECT_SOURCE_DIR}/cmake/ControllerBaseExternalPlatform.cmake)
  foreach(_piece COSTMAP_2D NAV_CORE ASTAR)
    foreach(_variable PACKAGE INCLUDE_DIRS LIBRARIES)
      set(_variable CONTROLLER_BASE_${_piece}_${_variable})
      string(APPEND _external_platform "set(${_variable} \"${${_variable}}\" CACHE STRING \"\")\n")
    endforeach()
  endforeach()
  string(APPEND _external_platform "include(\${CMAKE_CURRENT_LIST_DIR}/ControllerBaseExternalPlatform.cmake)\n")
endif()

# _controller_base_write_package(FOLDER INCLUDE_DIR...)
function(_controller_base_write_package folder)
  set(_include_dirs ${ARGN})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/controller_baseConfig.cmake.in ${folder}/controller_baseConfig.cmake @ONLY)
  write_basic_package_version_file(${folder}/controller_baseConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
  file(COPY ${_modules} DESTINATION ${folder})
endfunction()

set(_destination ${CMAKE_INSTALL_DATADIR}/controller_base/cmake)
set(_include_dir "\${CMAKE_CURRENT_LIST_DIR}/../../../${CMAKE_INSTALL_INCLUDEDIR}")
_controller_base_write_package(${PROJECT_BINARY_DIR}/package ${_include_dir})
install(DIRECTORY ${PROJECT_BINARY_DIR}/package/ DESTINATION ${_destination})
foreach(_targets controller_baseTargets controller_base_followerTargets)
  install(EXPORT ${_targets} NAMESPACE controller_base:: DESTINATION ${_destination})
endforeach()

if(DEFINED CATKIN_DEVEL_PREFIX)
  set(_devel_package ${CATKIN_DEVEL_PREFIX}/share/controller_base/cmake)
  set(_devel_include ${CATKIN_DEVEL_PREFIX}/include)  # has controller_base/platform/ without the plain names beside it
  file(MAKE_DIRECTORY ${_devel_include}/controller_base)
  file(CREATE_LINK ${_platform_headers} ${_devel_include}/controller_base/platform SYMBOLIC)
  _controller_base_write_package(${_devel_package} ${PROJECT_SOURCE_DIR}/include ${_devel_include})
  foreach(_targets controller_baseTargets controller_base_followerTargets)
    export(EXPORT ${_targets} NAMESPACE controller_base:: FILE ${_devel_package}/${_targets}.cmake)
  endforeach()
endif()
