#!/bin/bash
# sanitizers.sh SOURCE BUILD: the generators once more with the address and undefined-behaviour sanitizers; what they write
# must be what the build has, byte for byte, and they must say nothing. So must xfm_audit over the built library.
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

flags="-fsanitize=address,undefined -fno-sanitize-recover=all -O1 -g -D_GLIBCXX_ASSERTIONS"
cmake -S "$source" -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS="$flags" -DXFM_TESTS=ON >/dev/null
generators=(gen_frame gen_wht gen_dct4 gen_rdft gen_dft xfm_audit)
cmake --build "$work" --target "${generators[@]}" >/dev/null

cd "$build"
compared=0
for unit in src/dispatchers.cpp wht/pgen*.cpp dct4/pgen*.cpp rdft/pgenhartley*.cpp dft/pgendftinv32fcg9.cpp; do
  cmake --build "$work" --target "$work/$unit" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
  cmp "$unit" "$work/$unit"
  compared=$((compared + 1))
done
"$work/audit/xfm_audit" report lib/libxfmgene9.so.6.1 --report "$work/bodies.tsv"
cmp reports/audit_bodies.tsv "$work/bodies.tsv"
[ "$compared" -gt 6 ] || exit 1
echo "$compared files the same"
