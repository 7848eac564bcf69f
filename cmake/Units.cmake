# xfm_add_unit(NAME driver OUTPUT_DIR files... ARGS ... DEPENDS ...): runs a generator program that writes one unit.
#   xfm_add_unit(SOURCES_VAR unit_name DRIVER program [ARGS ...] [DEPENDS tables...] [REPORTS files...])
# The unit is <binary dir>/<unit_name>.cpp; its path is appended to SOURCES_VAR.
function(xfm_add_unit sources_var unit)
  cmake_parse_arguments(UNIT "" "DRIVER" "ARGS;DEPENDS;REPORTS" ${ARGN})
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${unit}.cpp)
  add_custom_command(
    OUTPUT ${output}
    BYPRODUCTS ${UNIT_REPORTS}
    COMMAND ${UNIT_DRIVER} ${UNIT_ARGS} ${output}
    DEPENDS ${UNIT_DRIVER} ${UNIT_DEPENDS}
    COMMENT "Generating ${unit}" VERBATIM)
  set_source_files_properties(${output} PROPERTIES COMPILE_OPTIONS "${XFM_KERNEL_FLAGS}")
  set(${sources_var} ${${sources_var}} ${output} PARENT_SCOPE)
endfunction()
