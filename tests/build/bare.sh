#!/bin/bash
# bare.sh SOURCE BUILD AUDIT EXPECTED...: in a bare Debian 12, under the flags that Debian builds its packages with, the
# commands of the README's chapter "Installation" build, install and run the library, and `uninstall` takes it away; the
# audit reads that library. Then the packages are made, looked at by lintian, and installed in another bare Debian, where
# programs run against them.
. "$(dirname "$0")/common.sh"
build=$1 audit=$2
shift 2

if [ "$(id -u)" -ne 0 ]; then echo "skipped: a bare Debian can only be made by root"; exit 77; fi
for tool in debootstrap lintian; do
  command -v $tool >/dev/null || { echo "skipped: $tool is not installed (scripts/packages-bare)"; exit 77; }
done

cleanup() {
  for root in "$work"/*/; do
    if mountpoint -q "$root/proc"; then umount "$root/proc"; fi
  done
  rm -rf --one-file-system "$work"
}
trap cleanup EXIT

in_root() {  # root, command...
  chroot "$work/$1" /usr/bin/env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C HOME=/root \
    DEBIAN_FRONTEND=noninteractive CXXFLAGS="${hardened:-}" CFLAGS="${hardened:-}" bash -euc "$2" </dev/null
}
in_root_quietly() { in_root "$@" >"$work/said" 2>&1 || fail "$(tail -40 "$work/said")" "in the bare Debian: $2"; }

if ! debootstrap --variant=minbase bookworm "$work/pristine" >"$work/said" 2>&1; then
  echo "skipped: no bare Debian could be made here: $(tail -1 "$work/said")"
  exit 77
fi
rm -f "$work/pristine"/etc/apt/sources.list
cp -r /etc/apt/sources.list* /etc/apt/apt.conf.d "$work/pristine/etc/apt/"
for settings in /etc/apt/auth.conf.d /usr/local/share/ca-certificates /etc/ssl/certs; do
  if [ -d $settings ]; then mkdir -p "$work/pristine$settings" && cp -r $settings/. "$work/pristine$settings/"; fi
done
cp -a "$work/pristine" "$work/maker"
for root in pristine maker; do
  mount -t proc proc "$work/$root/proc" || { echo "skipped: nothing can be mounted here"; exit 77; }
done

# The README's own lines, from the project's folder.
mkdir "$work/maker/xfm"
(cd "$source" && git ls-files -z 2>/dev/null | tar --null -T - -cf - 2>/dev/null || tar -C "$source" --exclude=./build --exclude=./.git -cf - .) |
  tar -C "$work/maker/xfm" -xf -
commands=$(sed -n '/^## Installation/,/^It takes/s/^    //p' "$source/README.md")
[ "$(wc -l <<<"$commands")" -ge 4 ] || fail "the README's commands are not found"
hardened="-g -O2 -fstack-protector-strong -Wformat -Werror=format-security -D_FORTIFY_SOURCE=2"
in_root_quietly maker "cd /xfm; $commands"
grep -qx 'bin 2: 0 -4i' "$work/said" || fail "$(tail -5 "$work/said")" "the README's program prints something else"
"$audit" check "$work/maker/xfm/build/release/lib/libxfmgene9.so.6.1" "$@"

in_root_quietly maker 'cd /xfm; cmake --build build/release --target uninstall; ldconfig'
[ -z "$(find "$work/maker/usr/local" -iname '*xfm*')" ] || fail "uninstall left $(find "$work/maker/usr/local" -iname '*xfm*')"

# The packages, from the same build; that of the manual from BUILD, where it is written.
in_root_quietly maker 'cd /xfm
  apt-get install -y --no-install-recommends $(grep -hv "^#" scripts/packages-tool scripts/packages-package)
  cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr; cmake --build build/release --parallel 2
  cpack --config build/release/CPackConfig.cmake -B /packages'
if [ -e "$build/manual/html/index.html" ]; then
  cpack --config "$build/CPackConfig.cmake" -D CPACK_COMPONENTS_ALL=documentation -B "$work/manual" >"$work/said" 2>&1 ||
    fail "$(tail "$work/said")"
  mv "$work"/manual/*.deb "$work/maker/packages/"
fi
lintian --fail-on error "$work"/maker/packages/*.deb >"$work/said" 2>&1 || fail "$(cat "$work/said")" "lintian has errors"

mkdir "$work/pristine/packages"
cp "$work"/maker/packages/*.deb "$work/pristine/packages/"
cp "$source/examples/ten_lines.c" "$source/tests/consumer/bins.py" "$work/pristine/"
in_root_quietly pristine 'apt-get update; apt-get install -y --no-install-recommends /packages/libxfm*-6.1_*.deb'
in_root_quietly pristine 'apt-get install -y --no-install-recommends /packages/*.deb gcc libc6-dev pkg-config
  cc /ten_lines.c $(pkg-config --cflags --libs xfm) -o /ten_lines; /ten_lines
  python3 /bins.py; if [ -e /packages/xfm_*.deb ]; then xfm info; fi'
[ "$(grep -cx 'bin 2: 0 -4i' "$work/said")" -eq 2 ] || fail "$(tail -5 "$work/said")" "a program prints something else"
ls "$work/pristine/packages"
in_root_quietly pristine 'apt-get purge -y "libxfm*" "xfm*" python3-xfm; ! find / -xdev -path /packages -prune -o -name "libxfm*.so*" -print | grep .'
