# The demo's parts, and its program on good and bad files. Its pictures are read by another decoder.
find_package(PNG)
if(NOT PNG_FOUND)
  message(WARNING "libpng was not found: the demo's tests are left out.")
  return()
endif()
xfm_add_test(demo_test LABEL demo SOURCES demo_test.cpp LIBRARIES xfm_demo_parts PNG::PNG)
target_compile_definitions(demo_test PRIVATE XFM_DEMO="$<TARGET_FILE:xfm_demo>")
add_dependencies(demo_test xfm_demo)
