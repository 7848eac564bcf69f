#!/bin/bash
# configure.sh SOURCE: what is decided when the project is configured: the compiler, the kind of build, the folders of
# xfm.pc, and what a project gets that takes this one in.
. "$(dirname "$0")/common.sh"

# Another compiler is refused in one line.
if cmake -S "$source" -B "$work/clang" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ >"$work/said" 2>&1; then
  fail "clang++ was not refused"
fi
grep -qx '  Xfm needs g++ 11 or newer; this is Clang [0-9.]* .*' "$work/said" || fail "$(cat "$work/said")"

# Release unless another kind is asked for; folders below the prefix leave the installed tree movable, others are told.
configured plain -DCMAKE_INSTALL_PREFIX=/opt/xfm
grep -qx 'CMAKE_BUILD_TYPE:STRING=Release' "$work/plain/CMakeCache.txt" || fail "a plain build is not a Release build"
configured kind -DCMAKE_BUILD_TYPE=Debug -DCMAKE_INSTALL_LIBDIR=/elsewhere/lib -DCMAKE_INSTALL_INCLUDEDIR=/elsewhere/include
grep -qx 'CMAKE_BUILD_TYPE:STRING=Debug' "$work/kind/CMakeCache.txt" || fail "the chosen kind of build was not kept"
configured mixed -DCMAKE_INSTALL_PREFIX=/opt/xfm -DCMAKE_INSTALL_LIBDIR=/elsewhere/lib
variables() { PKG_CONFIG_PATH="$work/$1" pkg-config --define-variable=pcfiledir="$2" xfm --variable="$3"; }
while read -r build from variable wanted; do
  got=$(realpath -m "$(variables "$build" "$from" "$variable")")
  [ "$got" = "$wanted" ] || fail "xfm.pc of $build, $variable: $got instead of $wanted"
done <<'PC'
plain /opt/xfm/lib/pkgconfig    libdir     /opt/xfm/lib
plain /moved/lib/pkgconfig      libdir     /moved/lib
plain /moved/lib/pkgconfig      includedir /moved/include
kind  /elsewhere/lib/pkgconfig  libdir     /elsewhere/lib
kind  /elsewhere/lib/pkgconfig  includedir /elsewhere/include
mixed /elsewhere/lib/pkgconfig  libdir     /elsewhere/lib
mixed /elsewhere/lib/pkgconfig  includedir /opt/xfm/include
PC
[ "$(PKG_CONFIG_PATH="$work/plain" pkg-config --modversion xfm)" = \
  "$(sed -n 's/^#define XFM_VERSION_STRING "\(.*\)"$/\1/p' "$source/include/xfm.h.in")" ] ||
  fail "the header's version is not the package's"

# A guest in another project, both ways: its target by the installed name, no tests, nothing installed, the host's kind
# of build left alone and the generator optimised all the same.
for way in "add_subdirectory($source xfm)" \
  "include(FetchContent)
   FetchContent_Declare(Xfm SOURCE_DIR $source)
   FetchContent_MakeAvailable(Xfm)"; do
  rm -rf "$work/host" "$work/host_build"
  mkdir "$work/host"
  cat >"$work/host/CMakeLists.txt" <<HOST
cmake_minimum_required(VERSION 3.22)
project(Host LANGUAGES C)
enable_testing()
$way
file(WRITE \${CMAKE_BINARY_DIR}/main.c "#include <xfm.h>\nint main(void) { return xfmgenGetLibVersion()->major != 6; }\n")
add_executable(host \${CMAKE_BINARY_DIR}/main.c)
target_link_libraries(host PRIVATE Xfm::xfmgene9)
HOST
  cmake -S "$work/host" -B "$work/host_build" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >"$work/said" 2>&1 || fail "$(cat "$work/said")"
  ctest --test-dir "$work/host_build" -N | grep -x 'Total Tests: 0' >/dev/null || fail "a guest brings tests along: $way"
  cmake --install "$work/host_build" --prefix "$work/host_tree" >/dev/null
  [ ! -e "$work/host_tree" ] || fail "a guest installs something: $way"
  grep -qx 'CMAKE_BUILD_TYPE:STRING=' "$work/host_build/CMakeCache.txt" || fail "a guest sets the host's kind of build: $way"
  grep 'generator/graph.cpp' "$work/host_build/compile_commands.json" | grep -- ' -O2 ' >/dev/null ||
    fail "a guest's generator is not optimised: $way"
done
