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

xfm_add_test(dct4_transform_test LABEL dct4 SOURCES dct4_transform_test.cpp $<TARGET_OBJECTS:xfm_dct4>
  LIBRARIES xfm_headers xfmcorex64 quadmath)
target_compile_options(dct4_transform_test PRIVATE -O2)


# The units once more, with the compiler's checks of undefined behaviour and of data races.
function(dct4_sanitized name sanitizer)
  xfm_add_test(${name} LABEL dct4 PREFIX ${sanitizer}-sanitized. SOURCES ${ARGN} ${DCT4_UNITS} ${PROJECT_SOURCE_DIR}/src/owngenautolib.cpp
    LIBRARIES xfm_headers xfm_generator)
  add_dependencies(${name} xfm_dct4)
  target_compile_definitions(${name} PRIVATE ${dct4_sizes} XFM_DCT4_SANITIZED)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/core)
  target_compile_options(${name} PRIVATE -O1 -mavx -ffp-contract=off -fsanitize=${sanitizer} -fno-sanitize-recover=all)
  target_link_options(${name} PRIVATE -fsanitize=${sanitizer})
endfunction()
dct4_sanitized(dct4_undefined_test undefined dct4_planner_test.cpp dct4_transform_test.cpp)
dct4_sanitized(dct4_race_test thread dct4_transform_test.cpp ${PROJECT_SOURCE_DIR}/core/xfmcore.c)
target_compile_options(dct4_race_test PRIVATE -Wno-tsan)  # it says that it does not know the fence

# A kernel whose operations differ from the table stops the generator, which says so and leaves no unit behind.
file(READ ${PROJECT_SOURCE_DIR}/plans/dct4_kernels.tsv counts_text)
string(REPLACE "224\t528" "224\t527" counts_text "${counts_text}")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/dct4_wrong_kernels.tsv "${counts_text}")
add_test(NAME dct4_counts_gate COMMAND gen_dct4 64f dct4_wrong_kernels.tsv dct4_no_unit.cpp)
set_tests_properties(dct4_counts_gate PROPERTIES LABELS dct4 WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
  PASS_REGULAR_EXPRESSION "dct4_wrong_kernels.tsv:[0-9]+: forward64 has 224 multiplications and 528 additions")

file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/dct4/*.h ${PROJECT_SOURCE_DIR}/wht/*.h)
xfm_add_script_test(dct4_headers_alone dct4 bash ${CMAKE_CURRENT_SOURCE_DIR}/headers_alone.sh ${CMAKE_CXX_COMPILER}
  -I${PROJECT_SOURCE_DIR} -I${PROJECT_BINARY_DIR}/include -- ${headers})
