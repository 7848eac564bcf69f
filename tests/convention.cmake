# The calling convention of every function, through a small assembly harness.
enable_language(ASM)
xfm_add_test(convention_test LABEL convention SOURCES convention_test.cpp convention/probe.S LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
target_link_options(convention_test PRIVATE -Wl,--no-as-needed)  # the functions are found by name
