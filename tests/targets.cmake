# The copies for newer processors: the loader takes them, each gives the base's bits and keeps to its arrays. What a
# processor has not is skipped, with a message.
add_executable(which_copy which_copy.cpp)
target_link_libraries(which_copy PRIVATE xfmgene9 xfmcorex64 dl)

function(xfm_add_level_test name level)
  xfm_add_script_test(${name} targets ${CMAKE_CURRENT_SOURCE_DIR}/scripts/on_level.sh ${level} ${ARGN})
endfunction()

xfm_pin(pin ${XFM_BASE})
xfm_add_script_test(loaded_${XFM_BASE} targets ${CMAKE_CURRENT_SOURCE_DIR}/copy_test.sh ${PROJECT_BINARY_DIR}/lib . ${pin}
  $<TARGET_FILE:which_copy>)
foreach(target IN LISTS XFM_TARGETS)
  if(target STREQUAL XFM_BASE)
    continue()
  endif()
  set(level ${XFM_${target}_LEVEL})
  xfm_pin(pin ${target})
  xfm_add_level_test(loaded_${target} ${level} ${CMAKE_CURRENT_SOURCE_DIR}/copy_test.sh ${PROJECT_BINARY_DIR}/lib
    glibc-hwcaps/${level} ${pin} $<TARGET_FILE:which_copy>)
  xfm_add_level_test(same_bits_${target} ${level} $<TARGET_FILE:compare_libraries> $<TARGET_FILE:xfmgene9>
    $<TARGET_FILE:xfmgene9_${target}>)
  foreach(program complex_memory_test real_memory_test wht_kernels_test kernel_bits_test convention_test numerics_test)
    if(TARGET ${program})
      xfm_add_level_test(${program}_${target} ${level} ${CMAKE_COMMAND} -E env ${pin} $<TARGET_FILE:${program}>)
    endif()
  endforeach()
endforeach()
