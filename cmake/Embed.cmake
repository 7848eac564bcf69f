# xfm_embed(target table name): a table's text for `#include "name"` as a string literal in the target's sources. Long
# literals come in pieces, as the language asks.
function(xfm_embed target table name)
  set(output ${CMAKE_CURRENT_BINARY_DIR}/embedded/${name})
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -DINPUT=${table} -DOUTPUT=${output} -P ${PROJECT_SOURCE_DIR}/cmake/scripts/embed.cmake
    DEPENDS ${table} ${PROJECT_SOURCE_DIR}/cmake/scripts/embed.cmake VERBATIM)
  target_sources(${target} PRIVATE ${output})
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/embedded)
endfunction()
