#!/usr/bin/env bash
# check_package.sh PYTHON SOURCE-FOLDER: runs the tests of the Python package.
set -euo pipefail
"$2/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
exec "$1" -m pytest -q -p no:cacheprovider --rootdir "$2/python" "$2/python/tests"
