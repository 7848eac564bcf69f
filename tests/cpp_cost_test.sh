#!/bin/bash
# cpp_cost_test.sh CXX SOURCE INCLUDES...: the functions NAME_c and NAME_cpp of the source have the same machine code.
set -euo pipefail
cxx=$1 source=$2
shift 2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$cxx" -std=c++20 -O2 -fPIC -fcf-protection=none "${@/#/-I}" -c "$source" -o "$folder/cost.o"
objdump -dr --no-addresses --no-show-raw-insn "$folder/cost.o" >"$folder/code"
code() { # of one function: instructions and relocations, without what fills the space behind it
  sed -n "/^<$1>:/,/^$/p" "$folder/code" | sed "1d;s/<$1\(+0x[0-9a-f]*\)\?>/<self\1>/;/nopw\|nopl\|xchg *%ax,%ax\|^$/d"
}
pairs=0
for name in $(nm "$folder/cost.o" | sed -n 's/.* T \(.*\)_cpp$/\1/p'); do
  if [ -z "$(code "${name}_cpp")" ] || ! diff <(code "${name}_c") <(code "${name}_cpp"); then
    echo "$name: the C++ call is not the C call"
    exit 1
  fi
  pairs=$((pairs + 1))
done
echo "$pairs pairs of the same machine code"
[ "$pairs" -eq 5 ]
