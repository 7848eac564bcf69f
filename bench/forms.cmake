# The forward single-precision complex kernels in the split form throughout, for timing it against the forms in use:
#   cmake --build --preset release --target bench_dft xfm_split_form
#   build/release/bench/bench_dft --only Fwd_CToC_32fc --rivals none --against build/release/bench/libxfm_split_form.so
set(tables ${CMAKE_SOURCE_DIR}/plans/functions.tsv ${CMAKE_SOURCE_DIR}/plans/complex_plans.tsv ${CMAKE_SOURCE_DIR}/plans/lane_blocks.tsv)
set(report ${CMAKE_CURRENT_BINARY_DIR}/split_form.tsv)
xfm_add_unit(split_units split_form DRIVER gen_dft ARGS ${tables} ${report} xfmgDFTFwd_CToC_32fc:split DEPENDS ${tables} REPORTS ${report})
add_library(xfm_split_form MODULE EXCLUDE_FROM_ALL ${split_units})
target_link_libraries(xfm_split_form PRIVATE xfm_headers)
