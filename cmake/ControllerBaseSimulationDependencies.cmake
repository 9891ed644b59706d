# What the simulation needs beyond the library's own dependencies. What is missing is added to the list controller_base_MISSING.
controller_base_find_opencv(core imgproc imgcodecs)
find_package(Threads REQUIRED)
find_package(yaml-cpp QUIET)
if(NOT yaml-cpp_FOUND)
  list(APPEND controller_base_MISSING "yaml-cpp")
endif()
