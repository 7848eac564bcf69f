# The numeric environment of every function: rounding modes, flush-to-zero, subnormals, exception flags.
xfm_add_test(numerics_test LABEL numerics SOURCES numerics_test.cpp LIBRARIES xfm_generator xfmgene9 xfmcorex64 dl)
target_link_options(numerics_test PRIVATE -Wl,--no-as-needed)  # the functions are found by name
