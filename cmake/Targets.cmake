# The rows of plans/targets.tsv: XFM_TARGETS, those that this build makes, and for each XFM_<name>_LEVEL, _MASK, _FLAGS
# and _AS_BASE.
#   xfm_of_target(variable name target): what `name` is called for a target: name itself for the base, name_v3 and so on
#   xfm_targets_of(variable family): the targets that a family is compiled for; others take the objects of the base
#   xfm_pin(variable target): the setting of GLIBC_TUNABLES under which the loader takes this target's copy
set(targets_tsv ${PROJECT_SOURCE_DIR}/plans/targets.tsv)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${targets_tsv})

set(XFM_ALL_TARGETS)
file(STRINGS ${targets_tsv} rows REGEX "^[^#]")
list(POP_FRONT rows)  # the header
foreach(row IN LISTS rows)
  string(REPLACE "\t" ";" cells "${row}")
  list(GET cells 0 name)
  list(APPEND XFM_ALL_TARGETS ${name})
  list(GET cells 1 XFM_${name}_LEVEL)
  list(GET cells 2 XFM_${name}_MASK)
  list(GET cells 3 flags)
  separate_arguments(XFM_${name}_FLAGS UNIX_COMMAND "${flags}")
  list(GET cells 11 families)
  separate_arguments(XFM_${name}_AS_BASE UNIX_COMMAND "${families}")
endforeach()

list(GET XFM_ALL_TARGETS 0 XFM_BASE)
set(XFM_TARGETS "${XFM_ALL_TARGETS}" CACHE STRING "Processors to build a copy of the library for; the loader takes the best one")
foreach(target IN LISTS XFM_TARGETS)
  if(NOT target IN_LIST XFM_ALL_TARGETS)
    message(FATAL_ERROR "XFM_TARGETS: there is no target ${target}; there are ${XFM_ALL_TARGETS}.")
  endif()
endforeach()
# The base is always there, and it is all there is without a loader to choose.
list(REMOVE_ITEM XFM_TARGETS ${XFM_BASE})
list(PREPEND XFM_TARGETS ${XFM_BASE})
if(NOT BUILD_SHARED_LIBS)
  set(XFM_TARGETS ${XFM_BASE})
endif()

function(xfm_of_target variable name target)
  if(NOT target STREQUAL XFM_BASE)
    string(APPEND name _${target})
  endif()
  set(${variable} ${name} PARENT_SCOPE)
endfunction()

function(xfm_targets_of variable family)
  set(targets)
  foreach(target IN LISTS XFM_TARGETS)
    if(NOT family IN_LIST XFM_${target}_AS_BASE)
      list(APPEND targets ${target})
    endif()
  endforeach()
  set(${variable} ${targets} PARENT_SCOPE)
endfunction()

function(xfm_pin variable target)
  list(FIND XFM_ALL_TARGETS ${target} place)
  set(masks)
  foreach(other IN LISTS XFM_ALL_TARGETS)
    list(FIND XFM_ALL_TARGETS ${other} other_place)
    if(other_place GREATER place)
      list(APPEND masks -${XFM_${other}_MASK})
    endif()
  endforeach()
  list(JOIN masks "," masks)
  set(${variable} "GLIBC_TUNABLES=glibc.cpu.hwcaps=${masks}" PARENT_SCOPE)
endfunction()

# What units that can be packed are told: the target, or the base for every target.
set(XFM_FORM base)
if(XFM_PACK)
  set(XFM_FORM <target> BY_TARGET)
endif()
