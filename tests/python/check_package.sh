#!/usr/bin/env bash
# check_package.sh PYTHON SOURCE-FOLDER FILE...: runs tests of the Python package.
set -euo pipefail
python=$1 source=$2
shift 2
"$source/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
exec "$python" -m pytest -q -p no:cacheprovider --rootdir "$source/python" "${@/#/$source/python/tests/}"
