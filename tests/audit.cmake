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
  XFM_AUDIT_SOURCES="${PROJECT_SOURCE_DIR}/audit" XFM_AUDIT_SAMPLE_SOURCES="${sample_sources}" XFM_AUDIT_SAMPLE_OBJECTS="${sample_objects}")

# The library needs its sister for the allocator and libm for the tables, once the families that use them are in. The
# counts of a family come from its generator's reports, or from the tables beside the audit.
set(expected --soname libxfmgene9.so.6.1 --exports ${PROJECT_BINARY_DIR}/reports/functions.tsv)
foreach(name xfmMalloc xfmFree cosf sinf cos sin)
  list(APPEND expected --import ${name})
endforeach()
if(TARGET xfm_wht OR TARGET xfm_dct4)
  list(APPEND expected --needed libxfmcorex64.so.6.1)
endif()
if(TARGET xfm_dct4)
  list(APPEND expected --needed libm.so.6 --counts ${PROJECT_BINARY_DIR}/reports/dct4_functions.tsv)
endif()
if(TARGET xfm_wht)
  list(APPEND expected --counts ${PROJECT_SOURCE_DIR}/audit/wht_counts.tsv
       --counts ${PROJECT_BINARY_DIR}/reports/wht_counts.tsv)
endif()
if(TARGET xfm_dft)
  foreach(unit pgendftfwd32fcg9 pgendftfwd64fcg9 pgendftinv32fcg9 pgendftinv64fcg9)
    list(APPEND expected --counts ${PROJECT_BINARY_DIR}/reports/${unit}.tsv:adds,muls,stores=dst_stores)
  endforeach()
endif()
if(TARGET xfm_rdft)
  set(scalar vaddss,vsubss,vmulss,vaddsd,vsubsd,vmulsd,vcvtss2sd,vcvtsd2ss,dst_stores)
  foreach(table real_counts_forward real_counts_inverse hartley_counts)
    list(APPEND expected --counts ${PROJECT_BINARY_DIR}/reports/${table}.tsv:${scalar})
  endforeach()
endif()
xfm_add_script_test(audit_library audit xfm_audit check $<TARGET_FILE:xfmgene9> ${expected})
