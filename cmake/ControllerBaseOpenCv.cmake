# controller_base_find_opencv(COMPONENT...): defines controller_base::opencv_COMPONENT for each. What is missing is added to the
# list controller_base_MISSING.
#
# OpenCV's own package file is used where there is one. Debian ships it only together with every component and the desktop that
# some of them need, so components are also found by their header and library.
# Used by the project's own build and by its installed package file.
function(controller_base_find_opencv)
  find_package(OpenCV QUIET COMPONENTS ${ARGN})
  foreach(component ${ARGN})
    set(target controller_base::opencv_${component})
    if(TARGET ${target})
      continue()
    endif()
    add_library(${target} INTERFACE IMPORTED)
    if(TARGET opencv_${component})
      set_target_properties(${target} PROPERTIES INTERFACE_LINK_LIBRARIES opencv_${component})
      continue()
    endif()

    set(include_dir CONTROLLER_BASE_OPENCV_${component}_INCLUDE_DIR)
    set(library CONTROLLER_BASE_OPENCV_${component}_LIBRARY)
    find_path(${include_dir} opencv2/${component}.hpp PATH_SUFFIXES opencv4)
    find_library(${library} opencv_${component})
    mark_as_advanced(${include_dir} ${library})
    if(${include_dir} AND ${library})
      set_target_properties(${target} PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES ${${include_dir}}
        INTERFACE_LINK_LIBRARIES ${${library}})
    else()
      list(APPEND controller_base_MISSING "OpenCV's ${component}")
    endif()
  endforeach()
  set(controller_base_MISSING ${controller_base_MISSING} PARENT_SCOPE)
endfunction()
