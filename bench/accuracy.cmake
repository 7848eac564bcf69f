# Errors against the sum formulas: build/release/bench/bench_accuracy docs/data/accuracy.tsv
find_library(FFTW3L fftw3l)
if(FFTW3 AND FFTW3F AND FFTW3L)
  add_executable(bench_accuracy accuracy.cpp)
  target_compile_options(bench_accuracy PRIVATE -O2 -Wall -Wextra)
  target_compile_definitions(bench_accuracy PRIVATE XFM_FUNCTIONS="${PROJECT_SOURCE_DIR}/plans/functions.tsv")
  target_link_libraries(bench_accuracy PRIVATE xfm_generator xfmgene9 xfmcorex64 dl ${FFTW3} ${FFTW3F} ${FFTW3L})
  target_link_options(bench_accuracy PRIVATE -Wl,--no-as-needed)  # kernels are found by name
endif()
