#!/usr/bin/env bash
# fuzz.sh BUILD_FOLDER SECONDS: runs every fuzzer for so many seconds on a fresh corpus.
set -euo pipefail
for fuzzer in "$1"/fuzz/*_fuzzer; do
  [ -x "$fuzzer" ] || continue
  corpus=$(mktemp -d)
  log=$(mktemp)
  name=$(basename "$fuzzer")
  seeds="$(dirname "$0")/../fuzz/seeds/${name%_fuzzer}"
  [ -d "$seeds" ] || seeds=
  # The code under test prints what it reads; only a failure is worth showing.
  if ! "$fuzzer" -max_total_time="$2" -timeout=10 -rss_limit_mb=2048 -close_fd_mask=3 \
      "$corpus" $seeds >"$log" 2>&1; then
    cat "$log"
    printf '%s failed\n' "$name"
    exit 1
  fi
  printf '%s: %s seconds, no finding\n' "$name" "$2"
  rm -rf "$corpus" "$log"
done
