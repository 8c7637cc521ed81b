#!/usr/bin/env bash
# check_page.sh SOURCE-FOLDER: checks that what scripts/make-comparison.sh writes is up to date.
set -euo pipefail
source=$1
PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 "$source/tests/comparison/make_page.py" |
  diff -u "$source/docs/comparison.md" - || { echo "run scripts/make-comparison.sh"; exit 1; }
