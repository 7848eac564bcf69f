#!/bin/bash
# kernel_flags.sh SOURCE BUILD: kernels are deaf to the user's flags. Under each set of flags the project is configured, a few
# of BUILD's units are compiled by the command that results, and their vector instructions compared with those of BUILD's
# objects, one by one.
. "$(dirname "$0")/common.sh"
build=$1
units=(pgenwht32fw7.cpp pgendct4_32fg9.cpp owngenautolib.cpp)

# What a body computes: vector instructions with their operands, without addresses.
computes() {
  objdump -d --no-show-raw-insn --no-addresses "$1" | sed -n 's/^\t\(v[a-z0-9]*\)/\1/p' | sed 's/ *[#<].*//; s/0x[0-9a-f]*(%rip)/(%rip)/'
}

# The object of a unit in BUILD's library for the base.
object_of() { find "$build" -path "*/CMakeFiles/xfm_*.dir/*" -name "$1.o" | LC_ALL=C sort | head -1; }

# compile NAME UNIT OBJECT [FLAGS...]: by the command of the configured build NAME, on the unit and the header that BUILD has.
compile() {
  local command
  command=$(sed -n "s|^ *\"command\": \"\(.*/$2\)\",\$|\1|p" "$work/$1/compile_commands.json" | head -1)
  command=$(sed "s|$work/$1|$build|g; s| -o [^ ]* | -o $3 |; s|\\\\\"|\"|g" <<<"$command")
  [ -n "$command" ] || fail "$1: no command for $2"
  (cd "$work" && eval "$command ${*:4}") || fail "$1: $2 does not compile"
}

compared=0
while IFS='|' read -r name flags; do
  configured "$name" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags"
  grep -q -- " $flags " "$work/$name/compile_commands.json" || fail "$name: the flags are not in the commands"
  for unit in "${units[@]}"; do
    object=$(object_of "$unit")
    compile "$name" "$unit" "$work/$unit.o"
    diff <(computes "$object") <(computes "$work/$unit.o") >"$work/difference" ||
      fail "$name: $unit is compiled to something else: $(head -5 "$work/difference")"
    compared=$((compared + $(computes "$work/$unit.o" | wc -l)))
  done
done <<'FLAGS'
fast|-ffast-math
link|-flto
native|-O3 -march=native
hardened|-g -O2 -fstack-protector-strong -fstack-clash-protection -fcf-protection -D_FORTIFY_SOURCE=2 -Wformat -Werror=format-security
FLAGS
[ "$compared" -gt 40000 ] || fail "only $compared instructions were compared"

# Nor does -ffast-math make the library set the mode of the program that loads it, as it does a library of its own.
mode_set() { objdump -d "$1" | grep -c ldmxcsr || true; }
cmake --build "$work/fast" --target xfmcorex64 >"$work/said" || fail "$(cat "$work/said")"
[ "$(mode_set "$work/fast/lib/libxfmcorex64.so.6.1")" -eq 0 ] || fail "the core library sets flush-to-zero when it is loaded"
gcc -ffast-math -shared -fPIC "$source/core/xfmcore.c" -o "$work/faulty.so"
[ "$(mode_set "$work/faulty.so")" -gt 0 ] || fail "a library that sets flush-to-zero is not seen"

# It can fail: behind the kernels' own flags, -ffast-math shows.
compile fast pgendct4_32fg9.cpp "$work/faulty.o" -ffast-math -fassociative-math -fno-signed-zeros -fno-trapping-math
if diff -q <(computes "$(object_of pgendct4_32fg9.cpp)") <(computes "$work/faulty.o") >/dev/null; then
  fail "relaxed arithmetic is not seen"
fi
