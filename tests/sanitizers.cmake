# Sanitizers over generators, audit, tool and tests, and over the library on threads (label `nightly`: all is built anew), and
# valgrind over a slice of library, generators and tests. The DCT-IV's own sanitized programs stand in dct4.cmake.
set(sanitizers ${CMAKE_CURRENT_SOURCE_DIR}/sanitizers.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
add_test(NAME sanitized_programs COMMAND ${sanitizers})
add_test(NAME sanitized_threads COMMAND ${sanitizers} thread)
set_tests_properties(sanitized_programs sanitized_threads PROPERTIES LABELS "sanitizers;nightly" PROCESSORS 2 TIMEOUT 6000)

find_program(VALGRIND valgrind)
if(NOT VALGRIND)
  message(WARNING "valgrind was not found: its slice will fail.")
  set(VALGRIND ${CMAKE_COMMAND} -E false)
endif()
set(memcheck ${VALGRIND} -q --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite)
xfm_add_script_test(valgrind.abi_numbers sanitizers ${memcheck} $<TARGET_FILE:abi_numbers_test>)
xfm_add_script_test(valgrind.gen_frame sanitizers ${memcheck} $<TARGET_FILE:gen_frame> map ${functions_tsv} dft,rdft,wht,dct4,frame
  ${CMAKE_CURRENT_BINARY_DIR}/valgrind.map)
xfm_add_script_test(valgrind.output sanitizers ${memcheck} --trace-children=no $<TARGET_FILE:output_test> --gtest_filter=-*LeavesNothing*)
