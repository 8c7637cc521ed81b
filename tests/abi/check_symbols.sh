#!/bin/sh
# check_symbols.sh LIBRARY LIST: compares the library's exported dynamic symbols with the checked-in
# list.
# To accept a change: check_symbols.sh --write LIBRARY LIST
set -eu
symbols() { nm -D --defined-only "$1" | awk '{ print $3 }' | LC_ALL=C sort -u; }

if [ "$1" = --write ]; then
  symbols "$2" >"$3"
  exit
fi
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
# Sanitizers add their own symbols.
symbols "$1" | grep -vE '^(__asan|__ubsan|__odr_asan|__tsan|__sancov)' >"$actual" || true
if ! diff -u "$2" "$actual"; then
  echo "The exported symbols have changed. If that is intended, note it in CHANGELOG.md and run:"
  echo "  $0 --write $1 $2"
  exit 1
fi
