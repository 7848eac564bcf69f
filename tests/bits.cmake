# The kernels of the library against the graphs of the generator, and kernels replaced by faulty stand-ins, which it must see.
xfm_add_test(kernel_bits_test LABEL bits SOURCES kernel_bits_test.cpp
  LIBRARIES xfm_complex_flows xfm_real_flows xfm_wht_flows xfmgene9 xfmcorex64 dl)
target_link_options(kernel_bits_test PRIVATE -Wl,--no-as-needed)  # the kernels are looked up by name
target_compile_definitions(kernel_bits_test PRIVATE XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
foreach(fault IN ITEMS complex:constant:DFTFwd_CToC_64fc real:constant:DFTFwd_RToPack_64f real:computed-zero:DFTFwd_RToCCS_64f)
  string(REPLACE ":" ";" fault ${fault})
  list(GET fault 0 family)
  list(GET fault 1 name)
  list(GET fault 2 dispatcher)
  xfm_add_script_test(kernel_bits_test_sees_${family}_${name} bits
    ${CMAKE_COMMAND} -DFAULT=${name} -DSTAND_IN=$<TARGET_FILE:${family}_faults> -DPROGRAM=$<TARGET_FILE:kernel_bits_test>
    -DFILTER=All/KernelBits.AreThoseOfTheGraph/${dispatcher} -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/fault_seen.cmake)
endforeach()
