#!/bin/bash
# readme_test.sh README.md PROGRAM.c: the README shows the program that is compiled and run, to the letter.
set -euo pipefail
diff <(sed -n '/^```c$/,/^```$/p' "$1" | sed '1d;$d') "$2"
