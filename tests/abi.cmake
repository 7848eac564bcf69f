# The binary interface: its numbers as literals, and header and library against a baseline. After an intended change
#   cmake --build build/release --target abi_baseline
# writes the baseline anew, and the change shows in its lines.
set(abi_baseline ${CMAKE_CURRENT_SOURCE_DIR}/abi/xfm.abi)
xfm_add_test(abi_numbers_test LABEL abi SOURCES abi_numbers_test.cpp LIBRARIES xfmgene9 xfmcorex64)
target_compile_definitions(abi_numbers_test PRIVATE XFM_ABI_BASELINE="${abi_baseline}")
set(abi_compare ${CMAKE_CURRENT_SOURCE_DIR}/abi/compare.sh ${PROJECT_BINARY_DIR}/include/xfm.h $<TARGET_FILE:xfmgene9> ${abi_baseline})
xfm_add_script_test(abi_baseline abi ${abi_compare})
add_custom_target(abi_baseline COMMAND ${abi_compare} renew DEPENDS xfmgene9 VERBATIM)
