#!/bin/bash
# no_avx_test.sh QEMU TOOL DEMO TEN_LINES CDMA: on a processor without AVX every program ends with one line that says so.
set -euo pipefail
qemu=$1 tool=$2 demo=$3
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
expect_refusal() {
  local status=0
  "$qemu" -cpu Nehalem "$@" >"$work/out" 2>"$work/errors" </dev/null || status=$?
  if [ "$status" -eq 0 ] || [ "$status" -gt 2 ] || [ "$(wc -l <"$work/errors")" -ne 1 ] || ! grep -q 'no AVX' "$work/errors"; then
    echo "$*: status $status" >&2
    cat "$work/errors" >&2
    exit 1
  fi
}
for command in info test "bench complex" "spectrum $0" "compress $0"; do
  read -ra words <<<"$command"
  expect_refusal "$tool" "${words[@]}"
done
expect_refusal "$demo" "$0" "$work/result"
for program in "${@:4}"; do expect_refusal "$program"; done
