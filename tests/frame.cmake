# The frame: list of functions, dispatchers, version record, header, exports, installed tree.
xfm_add_test(frame_functions_test LABEL frame SOURCES frame_functions_test.cpp LIBRARIES xfm_generator)
target_compile_definitions(frame_functions_test PRIVATE
  XFM_GEN_FRAME="$<TARGET_FILE:gen_frame>" XFM_HEADER_TEMPLATE="${CMAKE_SOURCE_DIR}/include/xfm.h.in")
add_dependencies(frame_functions_test gen_frame)

# All dispatchers, whatever families this build has, over kernels that record how they were called.
set(everything frame,dft,rdft,wht,dct4)
set(recorded ${CMAKE_CURRENT_BINARY_DIR}/recorded)
file(MAKE_DIRECTORY ${recorded})
add_custom_command(
  OUTPUT ${recorded}/xfm.h ${recorded}/dispatchers.cpp
  COMMAND gen_frame header ${functions_tsv} ${everything} ${CMAKE_SOURCE_DIR}/include/xfm.h.in ${recorded}/xfm.h
  COMMAND gen_frame dispatchers ${functions_tsv} ${everything} ${recorded}/dispatchers.cpp
  DEPENDS gen_frame ${functions_tsv} ${CMAKE_SOURCE_DIR}/include/xfm.h.in VERBATIM)
add_executable(frame_recorder_writer frame_recorder_writer.cpp)
target_link_libraries(frame_recorder_writer PRIVATE xfm_generator)
add_custom_command(
  OUTPUT ${recorded}/recorders.cpp
  COMMAND frame_recorder_writer ${functions_tsv} ${recorded}/recorders.cpp
  DEPENDS frame_recorder_writer ${functions_tsv} VERBATIM)
xfm_add_test(frame_dispatch_test LABEL frame
  SOURCES frame_dispatch_test.cpp ${recorded}/xfm.h ${recorded}/dispatchers.cpp ${recorded}/recorders.cpp)
target_include_directories(frame_dispatch_test BEFORE PRIVATE ${recorded})

xfm_add_test(frame_library_test LABEL frame SOURCES frame_library_test.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)

# The library in other hands: the header under strict compilers, the installed tree, the example programs.
xfm_add_script_test(header_compiles frame ${CMAKE_CURRENT_SOURCE_DIR}/header_test.sh ${CMAKE_BINARY_DIR}/include)
xfm_add_script_test(installed_tree frame ${CMAKE_CURRENT_SOURCE_DIR}/install_test.sh ${CMAKE_BINARY_DIR}
  ${CMAKE_SOURCE_DIR}/examples/ten_lines.c ${CMAKE_CURRENT_SOURCE_DIR}/consumer)
xfm_add_script_test(ten_lines frame xfm_ten_lines)
set_tests_properties(ten_lines PROPERTIES PASS_REGULAR_EXPRESSION "bin 2: 0 -4i\nbin 3: 0 \\+0i")
xfm_add_script_test(readme_example frame ${CMAKE_CURRENT_SOURCE_DIR}/readme_test.sh
  ${CMAKE_SOURCE_DIR}/README.md ${CMAKE_SOURCE_DIR}/examples/ten_lines.c)
