# xfm_add_family(target name...): puts the object library `target` into the shared library. The names say which rows of
# plans/functions.tsv it implements, as parts (dft), families (xfmgDFTFwd_CToC) or dispatchers (xfmgDFTFwd_CToC_32fc);
# header, dispatchers and exports are made for the rows named so far.
function(xfm_add_family target)
  target_link_libraries(${target} PRIVATE xfm_headers xfmcorex64)
  set_property(GLOBAL APPEND PROPERTY XFM_FAMILY_TARGETS ${target})
  set_property(GLOBAL APPEND PROPERTY XFM_FUNCTIONS_PRESENT ${ARGN})
endfunction()
