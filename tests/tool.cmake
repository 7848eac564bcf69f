# The tool, the demo and what they do to recordings; pictures are read by another decoder.
if(NOT XFM_TOOL)
  return()
endif()
find_package(PNG)
if(NOT PNG_FOUND)
  message(WARNING "libpng was not found: the tests of the tool and the demo are left out.")
  return()
endif()
xfm_add_test(sound_test LABEL demo SOURCES sound_test.cpp LIBRARIES xfm_sound PNG::PNG)
target_compile_definitions(sound_test PRIVATE XFM_DEMO="$<TARGET_FILE:xfm_demo>")
add_dependencies(sound_test xfm_demo)

add_library(faulty_kernels MODULE faulty_kernels.c)
target_link_libraries(faulty_kernels PRIVATE xfmgene9)
xfm_add_test(tool_test LABEL tool SOURCES tool_test.cpp LIBRARIES xfmgene9 nlohmann_json::nlohmann_json)
target_compile_definitions(tool_test PRIVATE XFM_TOOL="$<TARGET_FILE:xfm>" XFM_FAULTY_KERNELS="$<TARGET_FILE:faulty_kernels>"
  XFM_LIBRARY_FOLDER="${PROJECT_BINARY_DIR}/lib")
add_dependencies(tool_test xfm faulty_kernels)

# A processor without AVX: one line and a status, from every program.
find_program(QEMU qemu-x86_64)
if(QEMU)
  xfm_add_script_test(no_avx tool ${CMAKE_CURRENT_SOURCE_DIR}/no_avx_test.sh ${QEMU} $<TARGET_FILE:xfm> $<TARGET_FILE:xfm_demo>
    $<TARGET_FILE:xfm_ten_lines> $<TARGET_FILE:xfm_cdma>)
endif()
xfm_add_script_test(man_page tool man --warnings -l ${PROJECT_SOURCE_DIR}/docs/man/xfm.1)
