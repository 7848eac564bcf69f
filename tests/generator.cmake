# The generator: graph and passes, bodies as text, plans, flows evaluated exactly.
xfm_add_test(generator_graph_test LABEL generator SOURCES generator_graph_test.cpp LIBRARIES xfm_generator)
foreach(test generator_flows_test generator_plan_test generator_text_test)
  xfm_add_test(${test} LABEL generator SOURCES ${test}.cpp LIBRARIES xfm_complex_flows)
  target_compile_definitions(${test} PRIVATE XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
  target_compile_options(${test} PRIVATE -O2 -Wno-restrict)  # g++ 12 misjudges joined strings
endforeach()
target_compile_options(generator_graph_test PRIVATE -Wno-restrict)
target_compile_definitions(generator_plan_test PRIVATE XFM_REFERENCE_PLANS="${CMAKE_CURRENT_SOURCE_DIR}/reference_plans.tsv")
xfm_add_test(output_test LABEL generator SOURCES output_test.cpp LIBRARIES xfm_output)
