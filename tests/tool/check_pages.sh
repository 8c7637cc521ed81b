#!/usr/bin/env bash
# check_pages.sh KOLUM-PAGES SOURCE-FOLDER: checks that what scripts/make-pages.sh writes is up to date.
set -euo pipefail
pages=$1 source=$2
"$pages" page | diff -u "$source/docs/document.md" - || { echo "run scripts/make-pages.sh"; exit 1; }
"$pages" schema <"$source/docs/kolum.schema.json" | diff -u "$source/docs/kolum.schema.json" - || {
  echo "run scripts/make-pages.sh"
  exit 1
}
"$pages" python | diff -u "$source/python/kolum/_documents.py" - || { echo "run scripts/make-pages.sh"; exit 1; }
