# What the programs need beyond the library's own dependencies. Imported targets belong to the folder that finds them, so
# this file is included where all programs and tests lie below.
include(ControllerBaseSimulationDependencies)
include(ControllerBaseRosbag)
# cairo::cairo: the package has no CMake file.
find_path(CONTROLLER_BASE_CAIRO_INCLUDE_DIR cairo/cairo.h)
find_library(CONTROLLER_BASE_CAIRO cairo)
mark_as_advanced(CONTROLLER_BASE_CAIRO_INCLUDE_DIR CONTROLLER_BASE_CAIRO)
if(CONTROLLER_BASE_CAIRO AND CONTROLLER_BASE_CAIRO_INCLUDE_DIR)
  if(NOT TARGET cairo::cairo)
    add_library(cairo::cairo UNKNOWN IMPORTED)
    set_target_properties(cairo::cairo PROPERTIES
      IMPORTED_LOCATION ${CONTROLLER_BASE_CAIRO}
      INTERFACE_INCLUDE_DIRECTORIES ${CONTROLLER_BASE_CAIRO_INCLUDE_DIR})
  endif()
else()
  list(APPEND controller_base_MISSING "cairo")
endif()
if(controller_base_MISSING)
  list(JOIN controller_base_MISSING ", " _missing)
  message(FATAL_ERROR "controller_base: the demo needs ${_missing} (run scripts/setup).")
endif()
