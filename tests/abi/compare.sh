#!/bin/bash
# compare.sh HEADER LIBRARY BASELINE [renew]: the public header's types, constants and functions, and the names that the
# library exports, against the baseline; whatever differs is named. With `renew` the baseline is written instead.
set -euo pipefail
header=$1 library=$2 baseline=$3 renew=${4:-}
here=$(dirname "$(realpath "$0")")
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# described HEADER OUTPUT: a shared object with every declared function, compiled with the description of all types.
described() {
  sed -E 's/^(XfmStatus|const XfmLibraryVersion\*) (xfm[A-Za-z0-9_]+)(\(.*\));$/\1 \2\3 { return 0; }/' "$1" >"$work/xfm.c"
  gcc -g -w -shared -fPIC -nostdlib -nostdinc -I"$here/include" -fno-eliminate-unused-debug-types \
    -fdebug-prefix-map="$work"=. -Wl,-soname,libxfmgene9.so.6.1 "$work/xfm.c" -o "$2"
}
described "$header" "$work/header.so"

if [ "$renew" = renew ]; then
  abidw --load-all-types --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --type-id-style hash \
    "$work/header.so" >"$baseline"
  exit
fi

# abidiff calls the record's second name an addition even between equal files.
printf '[suppress_type]\nname = XfmLibraryVersion\ntype_kind = typedef\n' >"$work/known"
same() { abidiff --suppressions "$work/known" --no-show-locs "${@:2}" "$baseline" "$1"; }
same "$work/header.so" --non-reachable-types || { echo "the header's interface is not the baseline's" >&2; exit 1; }
same "$library" || { echo "the library's exports are not the baseline's" >&2; exit 1; }

# Each of these must be seen, and named.
while IFS='|' read -r edit named; do
  sed -E "$edit" "$header" >"$work/faulty.h"
  cmp -s "$header" "$work/faulty.h" && { echo "changes nothing: $edit" >&2; exit 1; }
  described "$work/faulty.h" "$work/faulty.so"
  if said=$(same "$work/faulty.so" --non-reachable-types); then echo "not seen: $edit" >&2; exit 1; fi
  grep -q "$named" <<<"$said" || { printf 'seen but not named: %s\n%s\n' "$edit" "$said" >&2; exit 1; }
done <<'EDITS'
s/(xfmStatusSizeError = )-6/\1-7/|xfmStatusSizeError' from value '-6' to '-7'
s/(xfmScaleFwdByN = )1/\12/;s/(xfmScaleInvByN = )2/\11/|xfmScaleFwdByN' from value '1' to '2'
s/  char targetCpu\[4\]/  char targetCpu[8]/|targetCpu
s/^typedef int32_t XfmStatus/typedef int16_t XfmStatus/;s/#include <stdint.h>/&\ntypedef short int16_t;/|XfmStatus
s/(xfmgDCT4GetSize_32f\()int length, int\*/\1long length, int*/|xfmgDCT4GetSize_32f
s/(xfmgHartley_17_64f\(.*)int flag/\1unsigned flag/|xfmgHartley_17_64f
/xfmgWHT_13_32f\(/d|xfmgWHT_13_32f
EDITS
gcc -shared -nostdlib -fPIC -w -Wl,-soname,libxfmgene9.so.6.1 -x c - -o "$work/one.so" <<<'void xfmgHartley_17_64f(void) {}'
if said=$(same "$work/one.so"); then echo "missing exports are not seen" >&2; exit 1; fi
grep -q 'xfmgHartley_18_64f' <<<"$said"
