#!/usr/bin/env bash
# check_tables.sh PYTHON SOURCE-FOLDER: runs the example of tables, with pandas; and checks the rows
# that Polars gets, which Debian does not have.
set -euo pipefail
python=$1 example=$2/examples/tables.py
fail() { printf '%s\n' "$*" >&2; exit 1; }
"$2/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null

said=$("$python" "$example" "$KOLUM_SAMPLES")
grep -qE '^The Oscillators +Tones +4 +10\.0' <<<"$said" || fail "pandas: $said"
"$python" "$example" 2>/dev/null && fail "no folder is no mistake"
cd "$2/examples"
"$python" - "$KOLUM_SAMPLES" <<'END'
import sys
import tables
rows = list(tables.songs(sys.argv[1]))
assert len(rows) == 4, rows
for row in rows:
    assert {name: type(value) for name, value in row.items()} == tables.COLUMNS, row
END
