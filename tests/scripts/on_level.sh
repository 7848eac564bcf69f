#!/bin/bash
# on_level.sh LEVEL command...: runs the command where the loader would take a copy for LEVEL; says so and exits 77 elsewhere.
set -euo pipefail
level=$1
shift
levels=$(env -u GLIBC_TUNABLES /lib64/ld-linux-x86-64.so.2 --help 2>/dev/null || true)
if [[ $levels != *"$level (supported"* ]]; then
  echo "skipped: the loader finds no $level here"
  exit 77
fi
exec "$@"
