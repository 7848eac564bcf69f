if(FFTW3 AND FFTW3F)
  add_executable(bench_real bench_real.cpp)
  target_compile_options(bench_real PRIVATE -O2 -Wall -Wextra -Wno-restrict)
  target_compile_definitions(bench_real PRIVATE XFM_REAL_FLOORS="${CMAKE_CURRENT_SOURCE_DIR}/real_floors.tsv")
  target_link_libraries(bench_real PRIVATE xfm_generator xfmgene9 xfmcorex64 dl ${FFTW3} ${FFTW3F})
  target_link_options(bench_real PRIVATE -Wl,--no-as-needed)  # kernels are found by name
else()
  message(STATUS "FFTW was not found: bench_real is left out.")
endif()
