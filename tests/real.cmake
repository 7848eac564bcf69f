# The real transforms: values, memory, and their flows against the plan tables. The tests find kernels by name, so that
# nothing but this option makes the linker keep the library.
foreach(test real_values_test real_memory_test)
  xfm_add_test(${test} LABEL real SOURCES ${test}.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
endforeach()
xfm_add_test(real_flows_test LABEL real SOURCES real_flows_test.cpp LIBRARIES xfm_real_flows xfmgene9 xfmcorex64 dl)
target_compile_definitions(real_flows_test PRIVATE
  XFM_PLANS="${CMAKE_SOURCE_DIR}/plans" XFM_GEN_RDFT="$<TARGET_FILE:gen_rdft>")
target_compile_options(real_flows_test PRIVATE -ffp-contract=off -Wno-restrict)
add_dependencies(real_flows_test gen_rdft)
foreach(test real_values_test real_memory_test real_flows_test)
  target_link_options(${test} PRIVATE -Wl,--no-as-needed)
endforeach()
