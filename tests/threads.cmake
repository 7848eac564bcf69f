# Every function on several threads at once, and a kernel that two threads cannot share.
find_package(Threads REQUIRED)
xfm_add_test(threads_test LABEL threads SOURCES threads_test.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl Threads::Threads)
target_link_options(threads_test PRIVATE -Wl,--no-as-needed)  # the functions are found by name
xfm_add_script_test(threads_test_sees_one_scratch_for_all threads
  ${CMAKE_COMMAND} -DFAULT=one-scratch-for-all -DSTAND_IN=$<TARGET_FILE:complex_faults> -DPROGRAM=$<TARGET_FILE:threads_test>
  -DFILTER=Threads.EveryFunctionGivesTheBitsOfOneThread -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/fault_seen.cmake)
