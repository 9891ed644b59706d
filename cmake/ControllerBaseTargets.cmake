# What this project's targets have in common. Nothing of it reaches the users of its libraries.

option(CONTROLLER_BASE_WERROR "Treat warnings as errors in this project's own code" ON)
set(CONTROLLER_BASE_SANITIZERS "" CACHE STRING "Comma-separated sanitizers for this project's own code, e.g. address,undefined")

if(CONTROLLER_BASE_SANITIZERS MATCHES "thread" AND CONTROLLER_BASE_SANITIZERS MATCHES "address|leak")
  message(FATAL_ERROR "controller_base: the thread sanitizer cannot be combined with '${CONTROLLER_BASE_SANITIZERS}'.")
endif()

# controller_base_options(TARGET): the flags that every target of this project is compiled with.
function(controller_base_options target)
  set_target_properties(${target} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    # No fused multiply-add: the same bits on every CPU.
    -ffp-contract=off
    # Nothing here reads errno after a root; without it the compiler can vectorise roots.
    -fno-math-errno
    # The file names that log lines and assertions carry into the binary begin at the project's folder.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-align -Wunused -Wnull-dereference -Wdouble-promotion)
  if(CONTROLLER_BASE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(CONTROLLER_BASE_SANITIZERS)
    target_compile_options(${target} PRIVATE
      -fsanitize=${CONTROLLER_BASE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
      # What the sanitizers add to std::regex makes GCC 12 see uninitialised reads that are not there.
      -Wno-maybe-uninitialized)
    target_link_options(${target} PRIVATE -fsanitize=${CONTROLLER_BASE_SANITIZERS})
  endif()
endfunction()

# controller_base_add_library(NAME EXPORTED [EXPORT SET] SOURCE...): the shared library NAME, installed and known to users as
# controller_base::EXPORTED by the export set SET, else by controller_baseTargets.
function(controller_base_add_library name exported)
  cmake_parse_arguments(PARSE_ARGV 2 _library "" EXPORT "")
  if(NOT _library_EXPORT)
    set(_library_EXPORT controller_baseTargets)
  endif()
  add_library(${name} SHARED ${_library_UNPARSED_ARGUMENTS})
  add_library(controller_base::${exported} ALIAS ${name})
  controller_base_options(${name})
  target_compile_features(${name} PUBLIC cxx_std_17)
  set_target_properties(${name} PROPERTIES
    EXPORT_NAME ${exported}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}  # before 1.0 a minor version may change the interface
    INSTALL_RPATH $ORIGIN)                                       # the libraries lie side by side
  install(TARGETS ${name} EXPORT ${_library_EXPORT} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()
