#!/usr/bin/env bash
# fuzz.sh BUILD_FOLDER SECONDS [NAME...]: runs the fuzzers (all, or those named: "dsd", "xml") for
# SECONDS each, two at a time. They start from the seeds made here and from the corpus of earlier
# runs in this build folder.
set -euo pipefail
folder=$1
seconds=$2
shift 2
"$(dirname "$0")/fuzz-seeds.sh" "$folder/fuzz/seeds"

# run_one FOLDER SECONDS NAME
run_one() {
  local fuzzer=$1/fuzz/$3_fuzzer corpus=$1/fuzz/corpus/$3 seeds=$1/fuzz/seeds/$3 log
  log=$(mktemp)
  mkdir -p "$corpus" "$seeds"
  # The code under test prints what it reads, so only the output of a failure is shown. The input
  # that caused it is kept beside the fuzzers, as found-NAME-...
  if "$fuzzer" -max_total_time="$2" -timeout=20 -rss_limit_mb=2048 -close_fd_mask=3 \
    -artifact_prefix="$1/fuzz/found-$3-" "$corpus" "$seeds" >"$log" 2>&1; then
    printf '%s: %s seconds, no finding\n' "$3" "$2"
    rm -f "$log"
    return 0
  fi
  cat "$log"
  printf '%s failed\n' "$3"
  rm -f "$log"
  return 255
}
export -f run_one

if [ $# -eq 0 ]; then
  set -- "$folder"/fuzz/*_fuzzer
  set -- "${@##*/}"
  set -- "${@%_fuzzer}"
fi
printf '%s\n' "$@" | xargs -P 2 -I{} bash -c 'run_one "$0" "$1" "$2"' "$folder" "$seconds" {}
