#!/bin/bash
# reproducible.sh SOURCE BUILD [all]: the same sources give the same bytes. What the build generated is generated again in
# another folder, in another locale and time zone, by the programs of the build; with `all` the libraries are built once more in
# another folder, and they, their units, headers and reports compared with those of the build.
set -euo pipefail
source=$1 build=$2 what=${3:-slice}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/locales"
localedef -i tr_TR -f UTF-8 "$work/locales/tr_TR.UTF-8" || echo "the plain locale is used: none can be made here (package locales)"
export LOCPATH=$work/locales TZ=Asia/Kathmandu
{ export LC_ALL=tr_TR.UTF-8; } 2>/dev/null  # this shell, which began without LOCPATH, does not find it

compared=0
same() {  # file, file
  cmp "$1" "$2" || { echo "$2 differs" >&2; exit 1; }
  compared=$((compared + 1))
}

if [ "$what" = slice ]; then
  if ! [ -f "$build/build.ninja" ]; then
    echo "skipped: the build's own commands are read from Ninja's files"
    exit 77
  fi
  # The commands of the build itself, with their outputs moved elsewhere.
  cd "$build"
  for unit in wht/pgen*.cpp dct4/pgen*.cpp rdft/pgenhartley32f.cpp src/dispatchers.cpp; do
    command=$(ninja -t commands -s "$unit")
    mkdir -p "$work/$(dirname "$unit")" "$work/reports"
    command=${command//$build\/$unit/$work/$unit}
    (umask 077 && eval "${command//$build\/reports/$work/reports}")
    same "$build/$unit" "$work/$unit"
  done
else
  # Configured as the build was, but made by one job of another kind of build, in another folder and without a cache of objects.
  unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
  export CCACHE_DISABLE=1
  mapfile -t settings < <(sed -nE 's/^((CMAKE_BUILD_TYPE|CMAKE_(C|CXX)_(COMPILER|FLAGS)|XFM_(TARGETS|PACK)):[A-Z]+=.*)$/-D\1/p' "$build/CMakeCache.txt")
  mkdir "$work/source"
  (cd "$source" && tar --exclude=./.git --exclude=./build -cf - .) | tar -xf - -C "$work/source"
  cmake -S "$work/source" -B "$work/build" -G "Unix Makefiles" "${settings[@]}" -DXFM_TESTS=OFF -DXFM_TOOL=OFF -DXFM_EXAMPLES=OFF >/dev/null
  cmake --build "$work/build" >"$work/log" 2>&1 || { tail -30 "$work/log" >&2; exit 1; }
  cd "$work/build"
  while read -r file; do same "$build/$file" "$file"; done < <(
    find lib reports include -type f; find . -name 'pgen*.cpp' -o -name dispatchers.cpp -o -name '*.map')
  [ "$compared" -ge 80 ] || { echo "only $compared files compared" >&2; exit 1; }
fi
[ "$compared" -ge 6 ] || { echo "only $compared files compared" >&2; exit 1; }
echo "$compared files the same"
