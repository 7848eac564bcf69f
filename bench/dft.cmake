# Not part of the default build's tests; run it on a quiet machine: build/release/bench/bench_dft
if(FFTW3 AND FFTW3F)
  add_executable(bench_dft bench_dft.cpp fftw_rivals.cpp harness.cpp)
  target_compile_options(bench_dft PRIVATE -O2 -Wall -Wextra -Wno-restrict)
  target_compile_definitions(bench_dft PRIVATE
    XFM_FLOORS="${CMAKE_CURRENT_SOURCE_DIR}/floors.tsv"
    XFM_CHAINS="${CMAKE_CURRENT_SOURCE_DIR}/chains.tsv"
    XFM_REPORTS="${PROJECT_BINARY_DIR}/reports"
    XFM_FUNCTIONS="${PROJECT_SOURCE_DIR}/plans/functions.tsv")
  target_link_libraries(bench_dft PRIVATE xfm_generator xfmgene9 xfmcorex64 dl ${FFTW3} ${FFTW3F})
  target_link_options(bench_dft PRIVATE -Wl,--no-as-needed)  # kernels are found by name
else()
  message(STATUS "FFTW was not found: bench_dft is left out.")
endif()
