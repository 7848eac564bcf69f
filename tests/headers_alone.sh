#!/bin/bash
# headers_alone.sh COMPILER INCLUDE_FLAGS... -- HEADERS...: every header by itself, without a warning.
set -euo pipefail
compiler=$1
shift
flags=()
while [[ $1 != -- ]]; do flags+=("$1"); shift; done
shift
[[ $# -gt 0 ]]
for header; do
  echo "#include \"$header\"" | "$compiler" -x c++ -std=gnu++20 -mavx -Wall -Wextra -Wno-restrict -Wno-unused-function -Werror \
    -fsyntax-only "${flags[@]}" - || { echo "$header does not stand alone"; exit 1; }
done
