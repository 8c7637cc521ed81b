#!/usr/bin/env bash
# coverage.sh: runs the suite of a build that counts lines, in build/coverage, and prints per file of
# src/ which lines it does not reach. Fails if fewer than 95 % of the lines are reached.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

ensure_packages build test ci
build coverage
find build/coverage -name '*.gcda' -delete
ctest --test-dir build/coverage --output-on-failure --parallel "$(($(nproc) + 1))"
# A process that was killed while it wrote its counters must not fail the run.
gcovr --root . --filter 'src/' --object-directory build/coverage --gcov-ignore-parse-errors \
  --print-summary --fail-under-line 95 build/coverage/src
