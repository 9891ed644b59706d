# Makes this build a package of a catkin workspace: libraries go to its devel space, package.xml is installed.

# catkin asks Python about packages. A `python3` that is first on the PATH and lacks catkin's modules is passed over. This holds
# where the choice is this project's: catkin_make asks before any package is read, so there it takes
# -DPYTHON_EXECUTABLE=/usr/bin/python3.
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
# The package file that catkin would write cannot name the platform's own include folder; this project installs its own.
catkin_package(SKIP_CMAKE_CONFIG_GENERATION SKIP_PKG_CONFIG_GENERATION)
set(CMAKE_INSTALL_LIBDIR ${CATKIN_GLOBAL_LIB_DESTINATION})
