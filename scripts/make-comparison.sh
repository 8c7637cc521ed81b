#!/usr/bin/env bash
# make-comparison.sh: writes docs/comparison.md from the tables of tests/comparison.
set -euo pipefail
CDPATH="" cd -- "$(dirname -- "$0")/.."
page=$(PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 tests/comparison/make_page.py)
printf '%s\n' "$page" >docs/comparison.md
