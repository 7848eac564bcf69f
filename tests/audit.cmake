# The audit: shown to speak on its faulty samples, then run on the library of this build.
if(NOT TARGET xfm_audit)
  xfm_add_script_test(audit_library audit ${CMAKE_COMMAND} -E false)  # not to be green without its decoder
  return()
endif()

get_target_property(sample_sources audit_samples SOURCES_FOLDER)
get_target_property(sample_objects audit_samples OBJECTS_FOLDER)
xfm_add_test(audit_samples_test LABEL audit SOURCES audit_samples_test.cpp LIBRARIES xfm_audit_lib)
add_dependencies(audit_samples_test audit_samples)
target_compile_definitions(audit_samples_test PRIVATE
  XFM_AUDIT_SAMPLE_SOURCES="${sample_sources}" XFM_AUDIT_SAMPLE_OBJECTS="${sample_objects}")

# The library needs its sister for the allocator and libm for the tables, once the families that use them are in.
get_property(present GLOBAL PROPERTY XFM_FUNCTIONS_PRESENT)
set(needed)
if(present MATCHES "wht|WHT|dct4|DCT4")
  list(APPEND needed --needed libxfmcorex64.so.6.1)
endif()
if(present MATCHES "dct4|DCT4")
  list(APPEND needed --needed libm.so.6)
endif()
set(imports)
foreach(name xfmMalloc xfmFree cosf sinf cos sin)
  list(APPEND imports --import ${name})
endforeach()
xfm_add_script_test(audit_library audit xfm_audit check $<TARGET_FILE:xfmgene9>
  --soname libxfmgene9.so.6.1 --exports ${CMAKE_BINARY_DIR}/reports/functions.tsv ${needed} ${imports}
  --report ${CMAKE_BINARY_DIR}/reports/audit_bodies.tsv)
