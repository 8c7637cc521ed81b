#!/usr/bin/env bash
# coverage.sh BUILD_FOLDER: runs the suite of a build with KOLUM_COVERAGE and prints per file of
# src/ which lines it does not reach, then the output of ctest. Fails if fewer than 95 % of the
# lines are reached.
set -euo pipefail
folder=$1
find "$folder" -name '*.gcda' -delete
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# The shared object of this build also exports the counters.
ctest --test-dir "$folder" --exclude-regex '^Abi.ExportsExactly' --output-on-failure --parallel "$(($(nproc) + 1))" >"$log" 2>&1 ||
  { cat "$log"; exit 1; }
# A process that was killed while it wrote its counters must not fail the run.
gcovr --root . --filter 'src/' --object-directory "$folder" --gcov-ignore-parse-errors \
  --print-summary --fail-under-line 95 "$folder/src"
cat "$log"
