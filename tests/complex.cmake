# The complex kernels: values and memory. They are found by name, so that nothing but this option makes the linker keep
# the library.
foreach(test complex_values_test complex_memory_test)
  xfm_add_test(${test} LABEL complex SOURCES ${test}.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
  target_link_options(${test} PRIVATE -Wl,--no-as-needed)
endforeach()

# Planted faults: each test named here must fail when a kernel is replaced by a faulty stand-in, and pass without.
add_library(complex_faults SHARED complex_faults.cpp)
target_link_libraries(complex_faults PRIVATE dl)
target_include_directories(complex_faults PRIVATE $<TARGET_PROPERTY:xfm_headers,INTERFACE_INCLUDE_DIRECTORIES>)
add_dependencies(complex_faults xfm_headers)
target_compile_options(complex_faults PRIVATE -O1 -mavx -ffp-contract=off -Wall -Wextra)
function(complex_fault fault program filter)
  xfm_add_script_test(${program}_sees_${fault} complex
    ${CMAKE_COMMAND} -DFAULT=${fault} -DSTAND_IN=$<TARGET_FILE:complex_faults> -DPROGRAM=$<TARGET_FILE:${program}>
    -DFILTER=All/${filter} -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/fault_seen.cmake)
endfunction()
complex_fault(constant complex_values_test ComplexValues.FollowTheDefinition/DFTFwd_CToC_64fc)
complex_fault(two-roundings-more complex_values_test ComplexValues.FollowTheDefinition/DFTInv_CToC_32fc)
complex_fault(bins-exchanged complex_values_test ComplexValues.ConstantAndImpulses/DFTFwd_CToC_32fc)
complex_fault(scales-first complex_values_test ComplexValues.FlagsMultiplyTheLastValueByTheirLiteral/DFTFwd_CToC_64fc)
complex_fault(direction-of-scale complex_values_test ComplexValues.FlagsMultiplyTheLastValueByTheirLiteral/DFTInv_CToC_64fc)
complex_fault(tests-for-nan complex_values_test ComplexValues.NotANumberReachesEveryBin/DFTFwd_CToC_64fc)
complex_fault(other-bits-unaligned complex_memory_test ComplexMemory.BitsDoNotDependOnAlignment/DFTFwd_CToC_32fc)
complex_fault(aligned-access complex_memory_test ComplexMemory.BitsDoNotDependOnAlignment/DFTInv_CToC_32fc)
complex_fault(stores-too-early complex_memory_test ComplexMemory.InPlaceGivesTheSameBits/DFTFwd_CToC_64fc)
complex_fault(reads-beyond complex_memory_test ComplexMemory.ArraysOfExactLength/DFTFwd_CToC_32fc)
complex_fault(writes-before complex_memory_test ComplexMemory.ArraysOfExactLength/DFTFwd_CToC_64fc)
complex_fault(flags-are-bits complex_memory_test ComplexMemory.BadArgumentsTouchNothing/DFTInv_CToC_64fc)
complex_fault(flag-before-null complex_memory_test ComplexMemory.BadArgumentsTouchNothing/DFTInv_CToC_64fc)
complex_fault(looks-before-the-flag complex_memory_test ComplexMemory.BadArgumentsTouchNothing/DFTInv_CToC_64fc)
complex_fault(status-of-a-misaligned-null complex_memory_test ComplexMemory.BadArgumentsTouchNothing/DFTInv_CToC_64fc)

# Bad rows in the plan tables, given to the generator itself.
xfm_add_test(complex_plans_test LABEL complex SOURCES complex_plans_test.cpp LIBRARIES xfm_generator)
target_compile_definitions(complex_plans_test PRIVATE
  XFM_PLANS="${PROJECT_SOURCE_DIR}/plans" XFM_GEN_DFT="$<TARGET_FILE:gen_dft>")
add_dependencies(complex_plans_test gen_dft)
