if(FFTW3 AND FFTW3F)
  add_executable(bench_dct4 bench_dct4.cpp harness.cpp)
  target_compile_options(bench_dct4 PRIVATE -O3 -mavx2 -mfma -Wall -Wextra -Wno-restrict)  # the rival's passes as fast as they can be
  target_link_libraries(bench_dct4 PRIVATE xfm_generator xfmgene9 xfmcorex64 ${FFTW3} ${FFTW3F})
else()
  message(STATUS "FFTW was not found: bench_dct4 is left out.")
endif()

# Reaches internal functions: it links the objects, not the library.
add_executable(bench_dct4_stages bench_dct4_stages.cpp harness.cpp $<TARGET_OBJECTS:xfm_dct4>)
target_compile_options(bench_dct4_stages PRIVATE -O2 -Wall -Wextra -Wno-restrict)
target_link_libraries(bench_dct4_stages PRIVATE xfm_generator xfm_headers xfmcorex64)
