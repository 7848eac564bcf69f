#!/bin/bash
# header_test.sh FOLDER: the folder's xfm.h by itself under every language and all warnings, in both compilers.
set -euo pipefail
folder=$1
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wundef -Wredundant-decls -Werror)

# Included twice, alone in its file; then used.
cat >"$work/use.c" <<'C'
#include "xfm.h"
#include "xfm.h"
int use(void);
int use(void) {
  Xfm32fc x[3], y[3];
  const XfmStatus status = xfmgDFTFwd_CToC_3_32fc(x, y, xfmScaleNone);
  return status == xfmStatusOk && xfmgenGetLibVersion()->major == 6;
}
C
sed 's/int use(void);/extern "C" int use();/; s/int use(void) {/int use() {/' "$work/use.c" >"$work/use.cpp"

compile() {  # include folder, compiler, language standard, source
  "$2" -std="$3" "${warnings[@]}" -I"$1" -fsyntax-only "$work/$4"
}

run=0
for compilers in "gcc g++" "clang clang++"; do
  read -r c cpp <<<"$compilers"
  if ! command -v "$c" >/dev/null; then
    echo "$c is missing" >&2
    exit 1
  fi
  for standard in c99 c11 c17 gnu17; do compile "$folder" "$c" "$standard" use.c && run=$((run + 1)); done
  for standard in c++11 c++17 c++20; do compile "$folder" "$cpp" "$standard" use.cpp && run=$((run + 1)); done
done
[ "$run" -eq 14 ] || exit 1
gcc -std=c99 -Wstrict-prototypes -Wmissing-prototypes -Werror -I"$folder" -fsyntax-only "$work/use.c"

# Its macros are the guard and the version, which is usable in #if.
echo '#include <stdint.h>' | gcc -dM -E -x c - | sort >"$work/before"
printf '#include <stdint.h>\n#include "xfm.h"\n' | gcc -dM -E -I"$folder" -x c - | sort >"$work/after"
macros=$(comm -13 "$work/before" "$work/after" | cut -d' ' -f2 | tr '\n' ' ')
[ "$macros" = "XFM_H XFM_VERSION XFM_VERSION_MAJOR XFM_VERSION_MINOR XFM_VERSION_STRING " ] || {
  echo "the header defines macros: $macros" >&2
  exit 1
}
cat >"$work/version.c" <<'C'
#include "xfm.h"
#if XFM_VERSION != 6001
#error "XFM_VERSION"
#endif
C
compile "$folder" gcc c99 version.c

# What it says about C's complex numbers, without a warning.
cat >"$work/complex.c" <<'C'
#include "xfm.h"
XfmStatus use(const float _Complex* x, float _Complex* y);
XfmStatus use(const float _Complex* x, float _Complex* y) {
  return xfmgDFTFwd_CToC_15_32fc((const Xfm32fc*)x, (Xfm32fc*)y, xfmScaleNone);
}
C
compile "$folder" gcc c99 complex.c

# These checks can fail: one that lacks an include, one that converts without a word.
mkdir "$work/faulty"
for fault in 's/#include <stdint.h>//' 's/^typedef int32_t XfmStatus;/&\nstatic inline char low(int value) { return value; }/'; do
  sed "$fault" "$folder/xfm.h" >"$work/faulty/xfm.h"
  if compile "$work/faulty" gcc c99 use.c 2>/dev/null; then
    echo "a faulty header passed: $fault" >&2
    exit 1
  fi
done
