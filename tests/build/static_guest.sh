#!/bin/bash
# static_guest.sh SOURCE: another project fetches this one, builds it as a static library, without a kind of build, and calls
# three kernels: its program carries these and no others. Installed, the library gives the same through find_package and
# pkg-config.
. "$(dirname "$0")/common.sh"

mkdir "$work/host"
cat >"$work/host/CMakeLists.txt" <<HOST
cmake_minimum_required(VERSION 3.22)
project(Host LANGUAGES C)
include(FetchContent)
FetchContent_Declare(Xfm SOURCE_DIR $source)
FetchContent_MakeAvailable(Xfm)
add_executable(three $scripts/three.c)
target_link_libraries(three PRIVATE Xfm::xfmgene9)
HOST
cmake -S "$work/host" -B "$work/build" -DBUILD_SHARED_LIBS=OFF -DXFM_INSTALL=ON >"$work/said" 2>&1 || fail "$(cat "$work/said")"
cmake --build "$work/build" --parallel 2 >"$work/said" 2>&1 || fail "$(tail -30 "$work/said")"
cmake --install "$work/build" --prefix "$work/tree" >/dev/null

mkdir "$work/user"
cat >"$work/user/CMakeLists.txt" <<USER
cmake_minimum_required(VERSION 3.16)
project(User LANGUAGES C)
find_package(Xfm 6.1 REQUIRED)
add_executable(three $scripts/three.c)
target_link_libraries(three PRIVATE Xfm::xfmgene9)
USER
cmake -S "$work/user" -B "$work/found" -DCMAKE_PREFIX_PATH="$work/tree" >/dev/null
cmake --build "$work/found" >/dev/null
export PKG_CONFIG_PATH=$work/tree/lib/pkgconfig
read -ra flags <<<"$(pkg-config --static --cflags --libs xfm)"
gcc "$scripts/three.c" "${flags[@]}" -o "$work/by_pkg_config"

wanted="xfmgDFTFwd_CToC_15_32fc xfmgDFTFwd_RToCCS_16_64f xfmgHartley_17_32f "
for program in "$work/build/three" "$work/found/three" "$work/by_pkg_config"; do
  [ "$("$program")" = "1 1 1" ] || fail "$program printed: $("$program")"
  carries=$(nm "$program" | sed -n 's/.* T \(xfm.*\)/\1/p' | sort | tr '\n' ' ')
  [ "$carries" = "$wanted" ] || fail "$program carries $carries"
  bytes=$(size "$program" | awk 'NR == 2 { print $1 + $2 }')
  [ "$bytes" -lt 16000 ] || fail "$program has $bytes bytes of code and data"
  echo "$(basename "$program"): $bytes bytes of code and data"
done
