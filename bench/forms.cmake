# Complex kernels by other choices than those in use, for timing them against these: the split form throughout; no half spectra.
#   cmake --build --preset release --target bench_dft xfm_split_form xfm_complex_bins
#   build/release/bench/bench_dft --only Fwd_CToC_32fc --rivals none --against build/release/bench/libxfm_split_form.so
#   build/release/bench/bench_dft --only Fwd_CToC --rivals none --against build/release/bench/libxfm_complex_bins.so
set(tables ${PROJECT_SOURCE_DIR}/plans/functions.tsv ${PROJECT_SOURCE_DIR}/plans/complex_plans.tsv ${PROJECT_SOURCE_DIR}/plans/lane_blocks.tsv)

function(add_choice name choice)
  set(units)
  foreach(type ${ARGN})
    set(report ${CMAKE_CURRENT_BINARY_DIR}/${name}_${type}.tsv)
    xfm_add_unit(units ${name}_${type} DRIVER gen_dft ARGS ${tables} ${report} xfmgDFTFwd_CToC_${type}:${choice}
      DEPENDS ${tables} REPORTS ${report})
  endforeach()
  add_library(xfm_${name} MODULE EXCLUDE_FROM_ALL ${units})
  target_link_libraries(xfm_${name} PRIVATE xfm_headers)
endfunction()
add_choice(split_form split 32fc)
add_choice(complex_bins complex-bins 32fc 64fc)
