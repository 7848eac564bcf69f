# Units: files of generated kernels.
#   xfm_add_unit(family unit DRIVER program [ARGS ...] [DEPENDS tables...] [REPORTS files...] [BY_TARGET])
# has the program write <unit>.cpp and compiles it into the family's objects for every target that has its own.
# What depends on the target says BY_TARGET and is written for each; the text is written once otherwise. In ARGS and REPORTS
# `<target>` stands for the target's name, `<reports>` for the folder of its reports.
function(xfm_add_unit family unit)
  cmake_parse_arguments(UNIT "BY_TARGET" "DRIVER" "ARGS;DEPENDS;REPORTS" ${ARGN})
  xfm_targets_of(targets ${family})
  foreach(target IN LISTS targets)
    xfm_of_target(objects ${family} ${target})
    if(UNIT_BY_TARGET OR target STREQUAL XFM_BASE)
      xfm_generate(output ${unit} ${target} DRIVER ${UNIT_DRIVER} ARGS ${UNIT_ARGS} DEPENDS ${UNIT_DEPENDS}
                   REPORTS ${UNIT_REPORTS})
      xfm_of_target(unit_target unit_${unit} ${target})
      add_custom_target(${unit_target} DEPENDS ${output})
    endif()
    target_sources(${objects} PRIVATE ${output})
    add_dependencies(${objects} ${unit_target})  # written by one target alone, whoever else compiles it
  endforeach()
endfunction()

# xfm_generate(variable unit target DRIVER ...): the rule that writes a unit for one target; its path.
function(xfm_generate variable unit target)
  cmake_parse_arguments(UNIT "" "DRIVER" "ARGS;DEPENDS;REPORTS" ${ARGN})
  set(folder ${CMAKE_CURRENT_BINARY_DIR})
  set(reports ${PROJECT_BINARY_DIR}/reports)
  if(NOT target STREQUAL XFM_BASE)
    string(APPEND folder /${target})
    string(APPEND reports /${target})
    file(MAKE_DIRECTORY ${folder} ${reports})
  endif()
  foreach(list ARGS REPORTS)
    string(REPLACE "<target>" "${target}" UNIT_${list} "${UNIT_${list}}")
    string(REPLACE "<reports>" "${reports}" UNIT_${list} "${UNIT_${list}}")
  endforeach()
  set(output ${folder}/${unit}.cpp)
  add_custom_command(
    OUTPUT ${output}
    BYPRODUCTS ${UNIT_REPORTS}
    COMMAND ${UNIT_DRIVER} ${UNIT_ARGS} ${output}
    DEPENDS ${UNIT_DRIVER} ${UNIT_DEPENDS}
    COMMENT "Generating ${unit} for ${target}" VERBATIM)
  set(${variable} ${output} PARENT_SCOPE)
endfunction()
