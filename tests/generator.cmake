# The generator: graph and passes, bodies as text, plans, flows evaluated exactly.
xfm_add_test(generator_graph_test LABEL generator SOURCES generator_graph_test.cpp LIBRARIES xfm_generator)
foreach(test generator_flows_test generator_plan_test generator_text_test)
  xfm_add_test(${test} LABEL generator SOURCES ${test}.cpp LIBRARIES xfm_complex_flows)
  target_compile_definitions(${test} PRIVATE XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
  target_compile_options(${test} PRIVATE -O2 -Wno-restrict)  # g++ 12 misjudges joined strings
endforeach()
target_compile_options(generator_graph_test PRIVATE -Wno-restrict)
target_compile_definitions(generator_plan_test PRIVATE XFM_REFERENCE_PLANS="${CMAKE_CURRENT_SOURCE_DIR}/reference_plans.tsv")
# The library's kernels beside their programs; they are found by name, so that nothing but this option keeps the library.
xfm_add_test(generator_lowering_test LABEL generator SOURCES generator_lowering_test.cpp
  LIBRARIES xfm_complex_flows xfm_real_flows xfmgene9 xfmcorex64 dl)
target_link_options(generator_lowering_test PRIVATE -Wl,--no-as-needed)
target_compile_definitions(generator_lowering_test PRIVATE XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
target_compile_options(generator_lowering_test PRIVATE -O2 -Wno-restrict)
xfm_add_test(output_test LABEL generator SOURCES output_test.cpp LIBRARIES xfm_output)
# Operations of newer processors: their text, compiled for the widest target, beside their execution.
if(v4 IN_LIST XFM_TARGETS)
  add_executable(wide_operations_writer wide_operations_writer.cpp)
  target_link_libraries(wide_operations_writer PRIVATE xfm_generator)
  set(unit ${CMAKE_CURRENT_BINARY_DIR}/wide_operations.cpp)
  add_custom_command(OUTPUT ${unit} COMMAND wide_operations_writer ${unit} DEPENDS wide_operations_writer VERBATIM)
  add_library(wide_operations OBJECT ${unit})
  xfm_compile_as_kernels(wide_operations v4)
  target_include_directories(wide_operations PRIVATE ${PROJECT_SOURCE_DIR})
  add_executable(wide_operations_test wide_operations_test.cpp $<TARGET_OBJECTS:wide_operations>)
  target_link_libraries(wide_operations_test PRIVATE xfm_generator GTest::gtest GTest::gtest_main)
  xfm_add_script_test(wide_operations generator ${CMAKE_CURRENT_SOURCE_DIR}/scripts/on_level.sh ${XFM_v4_LEVEL}
    $<TARGET_FILE:wide_operations_test>)
endif()
