# Complex kernels by other choices than those in use, for timing them against these: the split form throughout; no half spectra.
#   cmake --build --preset release --target bench_dft xfm_split_form xfm_complex_bins
#   build/release/bench/bench_dft --only Fwd_CToC_32fc --rivals none --against build/release/bench/libxfm_split_form.so
#   build/release/bench/bench_dft --only Fwd_CToC --rivals none --against build/release/bench/libxfm_complex_bins.so
set(plans ${PROJECT_SOURCE_DIR}/plans)
set(tables ${plans}/functions.tsv ${plans}/complex_plans.tsv ${plans}/complex_blocks.tsv)

function(add_choice name choice)
  set(units)
  foreach(type ${ARGN})
    set(report ${CMAKE_CURRENT_BINARY_DIR}/${name}_${type}.tsv)
    xfm_generate(unit ${name}_${type} ${XFM_BASE} DRIVER gen_dft ARGS ${plans} ${report} xfmgDFTFwd_CToC_${type}:${choice}
      DEPENDS ${tables} REPORTS ${report})
    list(APPEND units ${unit})
  endforeach()
  add_library(xfm_${name} MODULE EXCLUDE_FROM_ALL ${units})
  xfm_compile_as_kernels(xfm_${name} ${XFM_BASE})
  target_link_libraries(xfm_${name} PRIVATE xfm_headers)
endfunction()
add_choice(split_form split 32fc)
add_choice(complex_bins complex-bins 32fc 64fc)
