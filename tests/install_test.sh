#!/bin/bash
# install_test.sh SOURCE BUILD GENERATOR PYTHON: installs the build, moves the tree, and builds programs against it in every
# language, with find_package, with pkg-config and with the compiler alone; each must print what the library computes. PYTHON
# is 1 where the build has the Python module. What was installed goes again by `uninstall`.
set -euo pipefail
source=$1 build=$2 generator=$3 python=$4
work=$(mktemp -d)
manifests() { find "$build" -maxdepth 1 -name 'install_manifest*.txt'; }
mkdir "$work/kept"
manifests | xargs -r mv -t "$work/kept"  # those of the user's own installation
trap 'manifests | xargs -r rm; find "$work/kept" -type f -exec mv -t "$build" {} +; rm -r "$work"' EXIT

fail() {
  echo "$*" >&2
  exit 1
}

cmake --install "$build" --prefix "$work/first" >/dev/null
cp -r "$work/first" "$work/tree"
lib=$(dirname "$(find "$work/tree" -name xfm.pc)")/..
for name in libxfmgene9.so libxfmgene9.so.6.1 libxfmcorex64.so libxfmcorex64.so.6.1; do
  [ -e "$lib/$name" ] || fail "$name is not installed"
done
for copy in "$build"/lib/glibc-hwcaps/*/libxfmgene9.so.6.1; do
  [ ! -e "$copy" ] || [ -e "$lib/${copy#"$build/lib/"}" ] || fail "${copy#"$build/lib/"} is not installed"
done
if grep -rl "$build" "$work/tree"; then fail "an installed file names the build folder"; fi

cmake --build "$build" --target uninstall >/dev/null
[ ! -d "$work/first" ] || [ -z "$(find "$work/first" ! -type d)" ] || fail "left behind: $(find "$work/first" ! -type d)"
[ -z "$(manifests)" ] || fail "uninstall leaves its manifest"

# What a package's making notes is not taken for an installation.
cmake --install "$build" --prefix "$work/staged" --component xfmgene9 >/dev/null
if cmake --build "$build" --target uninstall >/dev/null 2>&1 || ! find "$work/staged" -name 'libxfmgene9.so*' | grep . >/dev/null; then
  fail "uninstall removes what a single component's manifest names"
fi

runs() {  # program...: prints the lines of a sine of two turns over eight samples
  LD_LIBRARY_PATH=$lib "$@" | grep -Ex 'bin 2: +(-?0|0\.0) +-4(\.0)?i' >/dev/null || fail "$* printed something else"
}

export PKG_CONFIG_PATH=$lib/pkgconfig
flags=$(pkg-config --cflags --libs xfm)
include=$(pkg-config --variable=includedir xfm)
# language, compiler with its options, program
while IFS='|' read -r language compile program; do
  eval "$compile $program $flags -o $work/$language"
  runs "$work/$language"
done <<PROGRAMS
c|gcc -Wall -Werror|$source/examples/ten_lines.c
cpp|g++ -std=c++20 -Wall -Werror|$source/tests/consumer/bins.cpp
fortran|gfortran -J $work $include/xfm.f90|$source/examples/ten_lines.f90
PROGRAMS
gcc -Wall -Werror -I"$include" "$source/examples/ten_lines.c" -L"$lib" -lxfmgene9 -o "$work/by_hand"
runs "$work/by_hand"

cmake -S "$source/tests/consumer" -B "$work/consumer" -G "$generator" -DPROGRAMS="$source" -DCMAKE_PREFIX_PATH="$work/tree" >/dev/null
cmake --build "$work/consumer" >/dev/null
for language in c cpp fortran; do runs "$work/consumer/consumer_$language"; done

if [ "$python" -eq 1 ]; then
  modules=$(find "$work/tree" -type d -path '*-packages')
  PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$modules runs /usr/bin/python3 "$source/tests/consumer/bins.py"
fi
