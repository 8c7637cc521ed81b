#!/usr/bin/env bash
# check-report.sh KOLUM [ARGUMENT...]: looks at pages of "kolum library report" in Chromium, without a
# window (packages of the groups test and ci). Arguments go to pytest.
set -euo pipefail
[ $# -ge 1 ] || { echo "usage: check-report.sh KOLUM [ARGUMENT...]" >&2; exit 2; }
KOLUM=$(realpath -- "$1")
export KOLUM PYTHONDONTWRITEBYTECODE=1
shift
cd "$(dirname "$0")/.."
# Debian's own Python: another one does not see the packages that it needs.
exec /usr/bin/python3 -m pytest -q -p no:cacheprovider "$@" tests/report
