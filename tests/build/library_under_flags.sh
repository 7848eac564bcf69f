#!/bin/bash
# library_under_flags.sh SOURCE AUDIT LIBRARY COMPARE EXPECTED...: the whole library built under the flags that change most,
# all at once: the audit has the same to say of it as of LIBRARY, and every function gives the same bits.
. "$(dirname "$0")/common.sh"
audit=$1 library=$2 compare=$3
shift 3

flags="-O3 -march=native -ffast-math -fstack-protector-strong -fstack-clash-protection -fcf-protection -D_FORTIFY_SOURCE=2"
configured build -DXFM_INSTALL=OFF -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags"
cmake --build "$work/build" --parallel 2 --target xfmgene9 >"$work/said" 2>&1 || fail "$(tail -30 "$work/said")"
built=$work/build/lib/libxfmgene9.so.6.1
"$audit" check "$built" "$@"
"$compare" "$library" "$built"
