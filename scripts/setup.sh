# What ./check and ./demo share; sourced by them from the project's folder.

# need_packages LIST...: installs the Debian packages named in scripts/packages-LIST that are missing.
need_packages() {
  local list package missing=()
  for list in "$@"; do
    while read -r package; do
      case $package in '' | '#'*) continue ;; esac
      if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
        missing+=("$package")
      fi
    done <"scripts/packages-$list"
  done
  [ ${#missing[@]} -eq 0 ] && return
  if [ "$(id -u)" -ne 0 ]; then
    echo "These Debian packages are missing: ${missing[*]}" >&2
    echo "Install them (apt-get install ${missing[*]}) and try again." >&2
    exit 1
  fi
  echo "Installing ${missing[*]} ..."
  export DEBIAN_FRONTEND=noninteractive
  local said
  if ! said=$({ apt-get update && apt-get install -y --no-install-recommends "${missing[@]}"; } </dev/null 2>&1); then
    printf '%s\nThe packages could not be installed.\n' "$said" >&2
    exit 1
  fi
}

# configure [OPTIONS...]: the release build's folder, with Ninja where it is new.
configure() {
  local generator=()
  if [ ! -f build/release/CMakeCache.txt ] && command -v ninja >/dev/null; then generator=(-G Ninja); fi
  cmake --preset release "${generator[@]}" "$@"
}
