# The Walsh-Hadamard kernels of the library against the level order and the definition; the generator's refusals.
if(TARGET xfm_wht)
  xfm_add_test(wht_kernels_test LABEL wht SOURCES wht_kernels_test.cpp wht_calls_test.cpp wht_allocator.cpp LIBRARIES xfmgene9 dl)
  target_compile_definitions(wht_kernels_test PRIVATE XFM_WHT_MANUAL="${PROJECT_SOURCE_DIR}/docs/wht.md")
  target_link_options(wht_kernels_test PRIVATE -Wl,--no-as-needed)  # the kernels are looked up by name
  xfm_add_test(wht_plan_test LABEL wht SOURCES wht_plan_test.cpp LIBRARIES xfm_generator)
  target_compile_definitions(wht_plan_test PRIVATE XFM_GEN_WHT="$<TARGET_FILE:gen_wht>" XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
  add_dependencies(wht_plan_test gen_wht)
endif()
if(TARGET xfm_cdma)
  xfm_add_script_test(wht_example wht xfm_cdma)
endif()
