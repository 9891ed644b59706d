# controller_base_options(TARGET): what every target of this project is compiled with, and none of its users.
function(controller_base_options target)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_features(${target} PRIVATE cxx_std_17)
  # No fused multiply-add: the same bits on every CPU.
  target_compile_options(${target} PRIVATE -ffp-contract=off
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-align -Wunused -Wnull-dereference -Wdouble-promotion)
  if(CONTROLLER_BASE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
