# xfm_add_family(family [SOURCES files...] NAMES names...): objects of one family for every target, to be filled by
# xfm_add_unit. The names say which rows of plans/functions.tsv it implements, as parts (dft), families (xfmgDFTFwd_CToC) or
# dispatchers (xfmgDFTFwd_CToC_32fc); header, dispatchers and exports are made for the rows named so far.
function(xfm_add_family family)
  cmake_parse_arguments(FAMILY "" "" "SOURCES;NAMES" ${ARGN})
  xfm_kernel_objects(${family} ${FAMILY_SOURCES})
  xfm_targets_of(targets ${family})
  foreach(target IN LISTS targets)
    xfm_of_target(objects ${family} ${target})
    target_link_libraries(${objects} PRIVATE xfmcorex64)
  endforeach()
  set_property(GLOBAL APPEND PROPERTY XFM_FAMILIES ${family})
  set_property(GLOBAL APPEND PROPERTY XFM_FUNCTIONS_PRESENT ${FAMILY_NAMES})
endfunction()

# xfm_kernel_objects(name [sources...]): an object library for every target that has its own, compiled as kernels are.
function(xfm_kernel_objects name)
  xfm_targets_of(targets ${name})
  foreach(target IN LISTS targets)
    xfm_of_target(objects ${name} ${target})
    add_library(${objects} OBJECT ${ARGN})
    xfm_compile_as_kernels(${objects} ${target})
    target_link_libraries(${objects} PRIVATE xfm_headers)
  endforeach()
endfunction()
