# The DCT-IV. The planner's and tables' tests reach internal functions: they link the objects, not the library.
set(dct4_sizes XFM_DCT4_SIZES="${PROJECT_SOURCE_DIR}/plans/dct4_block_sizes.tsv")

xfm_add_test(dct4_planner_test LABEL dct4 SOURCES dct4_planner_test.cpp $<TARGET_OBJECTS:xfm_dct4>
  LIBRARIES xfm_headers xfm_generator)
target_compile_definitions(dct4_planner_test PRIVATE ${dct4_sizes})
target_include_directories(dct4_planner_test PRIVATE ${PROJECT_SOURCE_DIR}/core)

xfm_add_test(dct4_block_test LABEL dct4 SOURCES dct4_block_test.cpp $<TARGET_OBJECTS:xfm_dct4>
  LIBRARIES xfm_headers xfmcorex64)

xfm_add_test(dct4_tables_test LABEL dct4 SOURCES dct4_tables_test.cpp $<TARGET_OBJECTS:xfm_dct4>
  LIBRARIES xfm_headers xfmcorex64 quadmath)
target_compile_options(dct4_tables_test PRIVATE -fno-builtin)
set_target_properties(dct4_tables_test PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)

# The units once more, in the plain order of their loops.
add_library(dct4_plain_order MODULE ${DCT4_UNITS} ${PROJECT_SOURCE_DIR}/src/owngenautolib.cpp)
add_dependencies(dct4_plain_order xfm_dct4)
target_compile_definitions(dct4_plain_order PRIVATE XFM_DCT4_PLAIN_ORDER)
target_compile_options(dct4_plain_order PRIVATE -O1 -mavx -ffp-contract=off)
target_link_libraries(dct4_plain_order PRIVATE xfm_headers xfmcorex64)
target_link_options(dct4_plain_order PRIVATE -Wl,-Bsymbolic-functions)
target_include_directories(dct4_plain_order PRIVATE ${PROJECT_SOURCE_DIR}/core)

xfm_add_test(dct4_transform_test LABEL dct4 SOURCES dct4_transform_test.cpp $<TARGET_OBJECTS:xfm_dct4>
  LIBRARIES xfm_headers xfmcorex64 quadmath dl)
target_compile_definitions(dct4_transform_test PRIVATE XFM_DCT4_PLAIN_ORDER_MODULE="$<TARGET_FILE:dct4_plain_order>")
add_dependencies(dct4_transform_test dct4_plain_order)

xfm_add_script_test(dct4_largest_lengths "dct4;long" dct4_transform_test --gtest_also_run_disabled_tests --gtest_filter=*Largest*)
set_tests_properties(dct4_largest_lengths PROPERTIES TIMEOUT 3600)


# The units once more, with the compiler's checks of undefined behaviour and of data races.
function(dct4_sanitized name sanitizer)
  xfm_add_test(${name} LABEL dct4 PREFIX ${sanitizer}-sanitized. SOURCES ${ARGN} ${DCT4_UNITS} ${PROJECT_SOURCE_DIR}/src/owngenautolib.cpp
    LIBRARIES xfm_headers xfm_generator)
  add_dependencies(${name} xfm_dct4)
  target_compile_definitions(${name} PRIVATE ${dct4_sizes} XFM_DCT4_SANITIZED)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/core)
  set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
  target_compile_options(${name} PRIVATE -mavx -fsanitize=${sanitizer} -fno-sanitize-recover=all)
  target_link_options(${name} PRIVATE -fsanitize=${sanitizer})
endfunction()
dct4_sanitized(dct4_undefined_test undefined dct4_planner_test.cpp dct4_transform_test.cpp)
dct4_sanitized(dct4_race_test thread dct4_transform_test.cpp ${PROJECT_SOURCE_DIR}/core/xfmcore.c)
target_compile_options(dct4_race_test PRIVATE -Wno-tsan)  # it says that it does not know the fence

xfm_add_test(dct4_plan_test LABEL dct4 SOURCES dct4_plan_test.cpp LIBRARIES xfm_generator)
target_compile_definitions(dct4_plan_test PRIVATE XFM_GEN_DCT4="$<TARGET_FILE:gen_dct4>" XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
add_dependencies(dct4_plan_test gen_dct4)

file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/dct4/*.h ${PROJECT_SOURCE_DIR}/wht/*.h)
xfm_add_script_test(dct4_headers_alone dct4 bash ${CMAKE_CURRENT_SOURCE_DIR}/headers_alone.sh ${CMAKE_CXX_COMPILER}
  -I${PROJECT_SOURCE_DIR} -I${PROJECT_BINARY_DIR}/include -- ${headers})
