#!/usr/bin/env bash
# check_page.sh PYTHON SOURCE-FOLDER: runs the examples of docs/python.md as they stand.
set -euo pipefail
"$2/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
ln -s "$KOLUM_SAMPLES" samples
"$KOLUM_TOOL" scan --library library.db samples/ >/dev/null 2>&1
"$1" -m doctest "$2/docs/python.md"
