# Runs one test case with the stand-ins loaded, first without a fault, then with it.
function(run_case fault result)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env LD_PRELOAD=${STAND_IN} XFM_FAULT=${fault} ${PROGRAM} --gtest_filter=${FILTER}
    RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT output MATCHES "Running 1 test ")
    message(FATAL_ERROR "${FILTER} is not one test case:\n${output}")
  endif()
  set(${result} ${code} PARENT_SCOPE)
endfunction()

run_case(none code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "${FILTER} fails without a fault")
endif()
run_case(${FAULT} code)
if(code EQUAL 0)
  message(FATAL_ERROR "${FILTER} does not see the fault ${FAULT}")
endif()
