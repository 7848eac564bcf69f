# Every line of GRAPHS must begin a line of MANIFEST, whose further columns are of the machine code. Fails with the functions whose
# lines do not, and writes AGREED where all do.
cmake_minimum_required(VERSION 3.22)

function(read_lines variable file)
  file(READ ${file} text)
  string(REPLACE ";" "," text "${text}")  # which plans may have, and lists are separated by
  string(REPLACE "\n" ";" text "${text}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

read_lines(kept ${MANIFEST})
read_lines(built ${GRAPHS})
list(TRANSFORM kept REPLACE "^([^\t]*\t[^\t]*\t[^\t]*\t[^\t]*\t[^\t]*\t[^\t]*).*" "\\1")
set(stale ${built})
list(REMOVE_ITEM stale ${kept})
list(TRANSFORM stale REPLACE "\t.*" "")
list(LENGTH stale count)
if(count GREATER 0)
  list(SUBLIST stale 0 10 first)
  list(JOIN first " " first)
  file(REMOVE ${AGREED})
  message(FATAL_ERROR "${MANIFEST} is stale for ${count} functions: ${first}\n"
    "If their plans, counts or bits are meant to change: cmake --build BUILD --target manifest, and look at what changed.")
endif()
file(WRITE ${AGREED} "")
