# Sourced by the scripts of this folder, which get the project's SOURCE folder first: a folder of their own in $work.
set -euo pipefail
source=$1
shift
scripts=$(dirname "${BASH_SOURCE[0]}")
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

# The options of a build that is the library alone, for the base.
library_alone=(-DXFM_TARGETS=base -DXFM_TESTS=OFF -DXFM_EXAMPLES=OFF -DXFM_TOOL=OFF -DXFM_PYTHON=OFF)

# configured FOLDER OPTIONS...: configures the project, with its output shown when that fails.
configured() {
  cmake -S "$source" -B "$work/$1" "${library_alone[@]}" "${@:2}" >"$work/said" 2>&1 || fail "$(cat "$work/said")"
}
