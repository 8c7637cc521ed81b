#!/usr/bin/env bash
# make-pages.sh [BUILD-FOLDER]: writes the files of docs/ and python/ that are made from the tables of
# document keys in src/describe.
set -euo pipefail
CDPATH="" cd -- "$(dirname -- "$0")/.."
pages=${1:-build/release}/tools/pages/kolum-pages
"$pages" schema <docs/kolum.schema.json >docs/kolum.schema.json.new
mv docs/kolum.schema.json.new docs/kolum.schema.json
"$pages" page >docs/document.md
"$pages" python >python/kolum/_documents.py
