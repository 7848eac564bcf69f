# The build in other people's hands: other compilers, folders, flags, projects. Those labelled `all` build the library anew.
set(build_scripts ${CMAKE_CURRENT_SOURCE_DIR}/build)
function(xfm_build_test name label script)
  xfm_add_script_test(build_${name} "${label}" bash ${build_scripts}/${script}.sh ${PROJECT_SOURCE_DIR} ${ARGN})
endfunction()
set(audited ${expected})  # what the audit is to find in any build of the base
if(XFM_BASE)
  list(PREPEND audited --target ${targets_tsv}:${XFM_BASE})
endif()

xfm_build_test(configures build configure)
xfm_build_test(kernel_flags flags kernel_flags ${PROJECT_BINARY_DIR})
xfm_build_test(static_guest all static_guest)
xfm_build_test(library_under_flags "all;flags" library_under_flags $<TARGET_FILE:xfm_audit> $<TARGET_FILE:xfmgene9>
  $<TARGET_FILE:compare_libraries> ${audited})
# The project on a bare Debian: the README's own commands from nothing, then the packages made there on another bare one.
xfm_build_test(bare_debian bare bare ${PROJECT_BINARY_DIR} $<TARGET_FILE:xfm_audit> ${audited})
set_tests_properties(build_static_guest build_library_under_flags build_bare_debian PROPERTIES PROCESSORS 2 TIMEOUT 3600)
set_tests_properties(build_bare_debian PROPERTIES FIXTURES_REQUIRED manual)
