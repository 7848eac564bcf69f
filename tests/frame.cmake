# The frame: list of functions, dispatchers, version record, header, exports, installed tree.
xfm_add_test(frame_functions_test LABEL frame SOURCES frame_functions_test.cpp LIBRARIES xfm_generator)
target_compile_definitions(frame_functions_test PRIVATE
  XFM_PLANS="${PROJECT_SOURCE_DIR}/plans" XFM_GEN_FRAME="$<TARGET_FILE:gen_frame>"
  XFM_HEADER_TEMPLATE="${PROJECT_SOURCE_DIR}/include/xfm.h.in")
add_dependencies(frame_functions_test gen_frame)

# All dispatchers, whatever families this build has, over kernels that record how they were called.
set(everything frame,dft,rdft,wht,dct4)
set(recorded ${CMAKE_CURRENT_BINARY_DIR}/recorded)
file(MAKE_DIRECTORY ${recorded})
add_custom_command(
  OUTPUT ${recorded}/xfm.h ${recorded}/dispatchers.cpp
  COMMAND gen_frame header ${functions_tsv} ${everything} ${PROJECT_SOURCE_DIR}/include/xfm.h.in ${recorded}/xfm.h
  COMMAND gen_frame dispatchers ${functions_tsv} ${everything} ${recorded}/dispatchers.cpp
  DEPENDS gen_frame ${functions_tsv} ${PROJECT_SOURCE_DIR}/include/xfm.h.in VERBATIM)
add_executable(frame_recorder_writer frame_recorder_writer.cpp)
target_link_libraries(frame_recorder_writer PRIVATE xfm_generator)
add_custom_command(
  OUTPUT ${recorded}/recorders.cpp
  COMMAND frame_recorder_writer ${functions_tsv} ${recorded}/recorders.cpp
  DEPENDS frame_recorder_writer ${functions_tsv} VERBATIM)
add_custom_target(frame_recorded DEPENDS ${recorded}/xfm.h ${recorded}/dispatchers.cpp ${recorded}/recorders.cpp)
add_library(frame_dispatch_cases OBJECT frame_dispatch_test.cpp ${recorded}/xfm.h ${recorded}/recorders.cpp)
target_compile_options(frame_dispatch_cases PRIVATE -Wall -Wextra)
target_include_directories(frame_dispatch_cases BEFORE PRIVATE ${recorded} ${PROJECT_SOURCE_DIR})
xfm_add_test(frame_dispatch_test LABEL frame SOURCES ${recorded}/dispatchers.cpp LIBRARIES frame_dispatch_cases)
target_include_directories(frame_dispatch_test BEFORE PRIVATE ${recorded})
add_dependencies(frame_dispatch_cases frame_recorded)
add_dependencies(frame_dispatch_test frame_recorded)

# The same cases over faulty dispatchers must fail.
function(frame_dispatch_fault fault edit)
  set(source ${recorded}/faulty_${fault}.cpp)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DINPUT=${recorded}/dispatchers.cpp "-DEDIT=${edit}" -DOUTPUT=${source}
      -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/edit.cmake
    DEPENDS ${recorded}/dispatchers.cpp ${CMAKE_CURRENT_SOURCE_DIR}/scripts/edit.cmake VERBATIM)
  add_executable(frame_dispatch_fault_${fault} ${source})
  add_dependencies(frame_dispatch_fault_${fault} frame_recorded)
  target_include_directories(frame_dispatch_fault_${fault} BEFORE PRIVATE ${recorded})
  target_link_libraries(frame_dispatch_fault_${fault} PRIVATE frame_dispatch_cases GTest::gtest GTest::gtest_main)
  xfm_add_script_test(frame_dispatch_fault_${fault} frame bash -c "! $<TARGET_FILE:frame_dispatch_fault_${fault}>")
endfunction()
frame_dispatch_fault(one_size_more "s/entry > 62u/entry > 63u/")
frame_dispatch_fault(signed_range "s/const unsigned entry/const int entry/;s/entry > 12u/entry > 12/")
frame_dispatch_fault(neighbour "s/    xfmgHartley_17_64f,/    xfmgHartley_18_64f,/")
frame_dispatch_fault(other_layout "s/    xfmgDFTInv_PackToR_8_32f,/    xfmgDFTInv_PermToR_8_32f,/")
frame_dispatch_fault(pointer_first "s/  const unsigned entry/  if (!src) return xfmStatusNullPointer;&/")
frame_dispatch_fault(buffer_lost "s/flag, buffer)/flag, nullptr)/")
frame_dispatch_fault(flag_masked "s/(src, dst, flag)/(src, dst, flag % 16)/")

xfm_add_test(frame_library_test LABEL frame SOURCES frame_library_test.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
target_link_options(frame_library_test PRIVATE -Wl,--no-as-needed)  # the functions are found by name

# The library in other hands: the header under strict compilers, the installed tree, the example programs.
xfm_add_script_test(header_compiles frame ${CMAKE_CURRENT_SOURCE_DIR}/header_test.sh ${PROJECT_BINARY_DIR}/include)
xfm_add_script_test(installed_tree frame ${CMAKE_CURRENT_SOURCE_DIR}/install_test.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}
  ${CMAKE_GENERATOR} $<TARGET_EXISTS:xfm_python>)
set_tests_properties(installed_tree PROPERTIES RESOURCE_LOCK installation)
xfm_add_script_test(ten_lines frame xfm_ten_lines)
set_tests_properties(ten_lines PROPERTIES PASS_REGULAR_EXPRESSION "bin 2: 0 -4i\nbin 3: 0 \\+0i")
xfm_add_script_test(readme_example frame ${CMAKE_CURRENT_SOURCE_DIR}/readme_test.sh
  ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/examples/ten_lines.c)
