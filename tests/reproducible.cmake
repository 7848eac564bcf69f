# The same sources give the same bytes: some units generated again at every run, the libraries built once more with the label `nightly`.
xfm_add_script_test(reproducible_units reproducible ${CMAKE_CURRENT_SOURCE_DIR}/reproducible.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
set_tests_properties(reproducible_units PROPERTIES SKIP_RETURN_CODE 77)
add_test(NAME reproducible_builds COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/reproducible.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR} all)
set_tests_properties(reproducible_builds PROPERTIES LABELS "reproducible;nightly" TIMEOUT 6000)
