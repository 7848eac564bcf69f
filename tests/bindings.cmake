# The bindings: C++ against C, with the machine code of both; Fortran where there is a compiler.
xfm_add_test(cpp_test LABEL bindings SOURCES cpp_test.cpp LIBRARIES xfmgene9 xfmcorex64)
xfm_add_script_test(cpp_costs_nothing bindings ${CMAKE_CURRENT_SOURCE_DIR}/cpp_cost_test.sh ${CMAKE_CXX_COMPILER}
  ${PROJECT_SOURCE_DIR}/bench/cpp_calls.cpp ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/include)

include(CheckLanguage)
check_language(Fortran)
if(CMAKE_Fortran_COMPILER)
  enable_language(Fortran)
  set(module ${PROJECT_BINARY_DIR}/include/xfm.f90)
  set_source_files_properties(${module} PROPERTIES GENERATED ON)
  add_library(xfm_fortran STATIC EXCLUDE_FROM_ALL ${module})
  set_target_properties(xfm_fortran PROPERTIES Fortran_MODULE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/fortran)
  target_include_directories(xfm_fortran PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/fortran)
  target_link_libraries(xfm_fortran PUBLIC xfmgene9 xfmcorex64)
  add_dependencies(xfm_fortran xfm_bindings)
  add_executable(fortran_test fortran_test.f90)
  add_executable(ten_lines_f90 ${PROJECT_SOURCE_DIR}/examples/ten_lines.f90)
  foreach(program fortran_test ten_lines_f90)
    target_compile_options(${program} PRIVATE -Wall -std=f2008)
    target_link_libraries(${program} PRIVATE xfm_fortran)
  endforeach()
  xfm_add_script_test(fortran_module bindings fortran_test)
  xfm_add_script_test(fortran_example bindings ten_lines_f90)
  set_tests_properties(fortran_example PROPERTIES PASS_REGULAR_EXPRESSION "bin 2:  0.0 -4\\.0i\nbin 3:  0.0 \\+0\\.0i")
endif()

if(TARGET xfm_python)
  # xfm_python_test(name arguments...): pytest over the package of this build.
  function(xfm_python_test name)
    add_test(NAME ${name} COMMAND ${Python_EXECUTABLE} -m pytest -q -p no:cacheprovider ${ARGN} WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    set_tests_properties(${name} PROPERTIES LABELS bindings ENVIRONMENT
      "PYTHONDONTWRITEBYTECODE=1;PYTHONPATH=${PROJECT_BINARY_DIR}/python:${CMAKE_CURRENT_SOURCE_DIR}/python")
  endfunction()
  xfm_python_test(python_module ${CMAKE_CURRENT_SOURCE_DIR}/python/test_transforms.py)
  # SciPy's own tests of its transforms, answered by the backend.
  xfm_python_test(python_backend -p through_backend --pyargs scipy.fft.tests.test_numpy)
endif()
