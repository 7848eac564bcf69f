# The packer: what it makes of every kernel, in the interpreter of programs.
xfm_add_test(pack_programs_test LABEL wide SOURCES pack_programs_test.cpp LIBRARIES xfm_real_flows xfm_dct4_flows PREFIX "")
target_compile_definitions(pack_programs_test PRIVATE XFM_PLANS="${PROJECT_SOURCE_DIR}/plans")
