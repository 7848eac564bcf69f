# Two builds of the library, every function bit for bit.
add_executable(compare_libraries compare_libraries.cpp)
target_include_directories(compare_libraries PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(compare_libraries PRIVATE xfm_generator dl)
target_include_directories(compare_libraries PRIVATE ${PROJECT_BINARY_DIR}/include)
target_compile_options(compare_libraries PRIVATE -Wall -Wextra)
target_compile_definitions(compare_libraries PRIVATE XFM_FUNCTIONS="${functions_tsv}")
