#!/bin/bash
# reproducible.sh SOURCE BUILD [all]: the same sources give the same bytes. What the build generated is generated again in
# another folder, in another locale and time zone, by the programs of the build; with `all` two whole builds are made in two
# folders, by one job and by two, and their libraries, units and reports compared.
set -euo pipefail
source=$1 build=$2 what=${3:-slice}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=tr_TR.UTF-8 TZ=Asia/Kathmandu

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
    mkdir -p "$work/$(dirname "$unit")"
    (umask 077 && eval "${command//$build\/$unit/$work/$unit}")
    same "$build/$unit" "$work/$unit"
  done
else
  for jobs in 1 2; do
    mkdir "$work/$jobs"
    (cd "$source" && tar --exclude=./.git --exclude=./build -cf - .) | tar -xf - -C "$work/$jobs"
    [ "$jobs" = 1 ] || export LC_ALL=C TZ=UTC
    cmake -S "$work/$jobs" -B "$work/$jobs/build" -DCMAKE_BUILD_TYPE=Release -DXFM_TESTS=OFF >/dev/null
    cmake --build "$work/$jobs/build" -j "$jobs" >/dev/null
  done
  cd "$work/1/build"
  while read -r file; do same "$file" "$work/2/build/$file"; done < <(
    find . -type f \( -path './lib/*' -o -path './reports/*' -o -name 'pgen*.cpp' -o -name dispatchers.cpp -o -path './include/*' \) | sort)
fi
[ "$compared" -ge 6 ] || { echo "only $compared files compared" >&2; exit 1; }
echo "$compared files the same"
