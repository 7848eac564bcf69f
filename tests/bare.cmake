# The project on a bare Debian: the README's own commands from nothing, then the packages made there on another bare one.
xfm_add_script_test(bare_debian bare bash ${CMAKE_CURRENT_SOURCE_DIR}/bare_test.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}
  $<TARGET_FILE:xfm_audit> ${expected})
set_tests_properties(bare_debian PROPERTIES PROCESSORS 2 TIMEOUT 3600 FIXTURES_REQUIRED manual)
