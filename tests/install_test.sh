#!/bin/bash
# install_test.sh BUILD PROGRAM.c CONSUMER GENERATOR: installs the build, moves the tree, and builds the program against
# it with find_package, with pkg-config and with the compiler alone; each result must print what the library computes.
set -euo pipefail
build=$1 program=$2 consumer=$3 generator=$4
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/tree"
lib=$(dirname "$(find "$work/tree" -name libxfmgene9.so)")
for name in libxfmgene9.so libxfmgene9.so.6.1 libxfmcorex64.so libxfmcorex64.so.6.1; do
  [ -e "$lib/$name" ] || { echo "$name is not installed" >&2; exit 1; }
done
if grep -rl "$build" "$work/tree"; then
  echo "an installed file names the build folder" >&2
  exit 1
fi

expect_output() {  # program
  LD_LIBRARY_PATH=$lib "$1" | grep -qx 'bin 2: 0 -4i' || { echo "$1 printed something else" >&2; exit 1; }
}

cmake -S "$consumer" -B "$work/consumer" -G "$generator" -DPROGRAM="$program" -DCMAKE_PREFIX_PATH="$work/tree" >/dev/null
cmake --build "$work/consumer" >/dev/null
expect_output "$work/consumer/consumer"

export PKG_CONFIG_PATH=$lib/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs xfm)"
gcc -Wall -Werror "$program" "${flags[@]}" -o "$work/by_pkg_config"
expect_output "$work/by_pkg_config"

gcc -Wall -Werror -I"$work/tree/include" "$program" -L"$lib" -lxfmgene9 -o "$work/by_hand"
expect_output "$work/by_hand"
