# The real transforms: values, memory, and their flows against the plan tables. The tests find kernels by name, so that
# nothing but this option makes the linker keep the library.
foreach(test real_values_test real_memory_test)
  xfm_add_test(${test} LABEL real SOURCES ${test}.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
endforeach()
xfm_add_test(real_flows_test LABEL real SOURCES real_flows_test.cpp LIBRARIES xfm_real_flows xfmgene9 xfmcorex64 dl)
target_compile_definitions(real_flows_test PRIVATE
  XFM_PLANS="${PROJECT_SOURCE_DIR}/plans" XFM_GEN_RDFT="$<TARGET_FILE:gen_rdft>")
add_dependencies(real_flows_test gen_rdft)
foreach(test real_values_test real_memory_test real_flows_test)
  target_link_options(${test} PRIVATE -Wl,--no-as-needed)
endforeach()

# Planted faults: each test named here must fail when a kernel is replaced by a faulty stand-in, and pass without.
add_library(real_faults SHARED real_faults.cpp)
target_link_libraries(real_faults PRIVATE xfm_headers dl)
target_compile_options(real_faults PRIVATE -O1 -mavx -ffp-contract=off)
function(real_fault fault program filter)
  xfm_add_script_test(real_fault_${fault} real
    ${CMAKE_COMMAND} -DFAULT=${fault} -DSTAND_IN=$<TARGET_FILE:real_faults> -DPROGRAM=$<TARGET_FILE:${program}>
    -DFILTER=${filter} -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/fault_seen.cmake)
endfunction()
real_fault(constant real_values_test All/RealValues.FollowTheDefinition/DFTFwd_RToPack)
real_fault(cells-exchanged real_values_test RealLayouts.AgreeBitForBit)
real_fault(rounded-twice real_flows_test RealFlows.PrecisionRuleByHand)
real_fault(one-cell-too-many real_memory_test All/RealMemory.ArraysOfExactLengthAtAnyElement/DFTFwd_RToCCS)
real_fault(computed-zero real_memory_test All/RealMemory.ZeroCellsAreZeroWhateverTheInput/DFTFwd_RToCCS)
real_fault(negative-zero real_memory_test All/RealMemory.ZeroCellsAreZeroWhateverTheInput/DFTFwd_RToCCS)
real_fault(looks-at-zero-cell real_memory_test RealMemoryCcs.InverseKernelsDoNotLookAtZeroCells)
real_fault(writes-before-the-flag real_memory_test All/RealMemory.ArgumentsAreTestedPointersFirstAndNothingIsWritten/Hartley)
real_fault(flag-before-null real_memory_test All/RealMemory.ArgumentsAreTestedPointersFirstAndNothingIsWritten/Hartley)
real_fault(flags-are-bits real_memory_test All/RealMemory.ArgumentsAreTestedPointersFirstAndNothingIsWritten/Hartley)
real_fault(stores-too-early real_memory_test All/RealMemory.InPlaceGivesTheSameBits/Hartley)
real_fault(direction-of-scale real_values_test RealFlags.SynonymsGiveTheSameBits)
real_fault(aligned-loads real_memory_test All/RealMemory.ArraysOfExactLengthAtAnyElement/DFTInv_PermToR)
