#!/usr/bin/env bash
# coverage.sh BUILD_FOLDER: runs the suite of a build with KOLUM_COVERAGE and tells which lines of
# src/ it reaches, file by file with those that it does not, then what ctest printed. Fails below
# 95 % of the lines.
set -euo pipefail
folder=$1
find "$folder" -name '*.gcda' -delete
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# The shared object of this build exports what counts the lines, too.
ctest --test-dir "$folder" --exclude-regex '^Abi.ExportsExactly' --output-on-failure --parallel "$(nproc)" >"$log" 2>&1 ||
  { cat "$log"; exit 1; }
# Counts that processes ended in the middle of writing are no reason to fail.
gcovr --root . --filter 'src/' --object-directory "$folder" --gcov-ignore-parse-errors \
  --print-summary --fail-under-line 95 "$folder/src"
cat "$log"
