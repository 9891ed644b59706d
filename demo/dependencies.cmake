# What the demo needs beyond the library's own dependencies. Imported targets belong to the folder that finds them, so
# whoever links the demo's libraries includes this file.
controller_base_find_opencv(core imgproc imgcodecs)
find_package(yaml-cpp QUIET)
if(NOT yaml-cpp_FOUND)
  list(APPEND controller_base_MISSING "yaml-cpp")
endif()
if(controller_base_MISSING)
  list(JOIN controller_base_MISSING ", " _missing)
  message(FATAL_ERROR "controller_base: the demo needs ${_missing} (run scripts/setup).")
endif()
