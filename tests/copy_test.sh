#!/bin/bash
# copy_test.sh LIB FOLDER TUNABLES WHICH_COPY: under the setting the loader takes the library from LIB/FOLDER; a program that
# opens LIB/libxfmgene9.so.6.1 by its path gets that file whatever the loader would take.
set -euo pipefail
lib=$1 folder=$2 tunables=$3 which_copy=$4
name=libxfmgene9.so.6.1
expect() {  # what expected got
  [ "$3" -ef "$2" ] || { echo "$1: $3 instead of $2" >&2; exit 1; }
}
expect "the loader's choice" "$lib/$folder/$name" "$(env "$tunables" LD_LIBRARY_PATH="$lib" "$which_copy")"
expect "opened by its path" "$lib/$name" "$(env -u GLIBC_TUNABLES "$which_copy" "$lib/$name")"
expect "opened by its path, pinned" "$lib/$name" "$(env "$tunables" "$which_copy" "$lib/$name")"
# The copy alone, by its path, finds the core library from where it stands.
expect "the copy itself" "$lib/$folder/$name" "$("$which_copy" "$lib/$folder/$name")"
