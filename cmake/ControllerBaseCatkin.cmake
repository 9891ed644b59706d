# Makes this build a package of a catkin workspace: libraries go to its devel space, package.xml is installed.

# catkin asks Python about packages. A `python3` that is first on the PATH and lacks catkin's modules is passed over. catkin_make
# asks before it reads any package, so it needs -DPYTHON_EXECUTABLE=/usr/bin/python3.
if(NOT PYTHON_EXECUTABLE)
  foreach(_python python3 /usr/bin/python3)
    find_program(_controller_base_python ${_python})
    execute_process(COMMAND ${_controller_base_python} -c "import catkin_pkg, em"
      RESULT_VARIABLE _lacks_catkin OUTPUT_QUIET ERROR_QUIET)
    if(_lacks_catkin EQUAL 0)
      set(PYTHON_EXECUTABLE ${_controller_base_python} CACHE FILEPATH "The Python that catkin runs")
    endif()
    unset(_controller_base_python CACHE)
  endforeach()
endif()

find_package(catkin REQUIRED)

# The plugin for move_base is built where the stock navigation stack is.
set(controller_base_NAVIGATION_FOUND TRUE)
foreach(_package nav_core costmap_2d pluginlib tf2_ros)
  find_package(${_package} QUIET)
  if(NOT ${_package}_FOUND)
    set(controller_base_NAVIGATION_FOUND FALSE)
    message(STATUS "controller_base: there is no ${_package}; the plugin for move_base is left out")
    break()
  endif()
  list(APPEND controller_base_NAVIGATION_INCLUDE_DIRS ${${_package}_INCLUDE_DIRS})
  list(APPEND controller_base_NAVIGATION_LIBRARIES ${${_package}_LIBRARIES})
  list(APPEND controller_base_NAVIGATION_TARGETS ${${_package}_EXPORTED_TARGETS})
endforeach()
# The package file that catkin would write cannot name the platform's own include folder; this project installs its own.
catkin_package(SKIP_CMAKE_CONFIG_GENERATION SKIP_PKG_CONFIG_GENERATION)
set(CMAKE_INSTALL_LIBDIR ${CATKIN_GLOBAL_LIB_DESTINATION})
