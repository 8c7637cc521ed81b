#!/usr/bin/env bash
# check_readme.sh PYTHON SOURCE-FOLDER: runs the commands of the README's section on many machines as they stand, except
# those that install and build, and with a free port and a folder of their own.
set -euo pipefail
source=$2
fail() { printf '%s\n' "$*" >&2; exit 1; }
"$source/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir -p build/release/src build/release/tools/kolum
ln -s "$source/python" python
ln -s "$KOLUM_LIBRARY" build/release/src/libkolum.so.1
ln -s "$KOLUM_TOOL" build/release/tools/kolum/kolum
ln -s "$KOLUM_SAMPLES" build/samples
unset PYTHONPATH KOLUM_LIBRARY KOLUM_TOOL

port=$("$1" -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
awk '/^## / { on = $0 == "## More than one machine" } on && /^    / { print substr($0, 5) }' "$source/README.md" |
  grep -vE '^(\./run|sudo) ' | sed "s/8786/$port/g; s,--local-directory /tmp,--local-directory $folder," >commands.sh
[ "$(wc -l <commands.sh)" -ge 7 ] || fail "the README has too few commands: $(cat commands.sh)"

# Job control, as people's shells have it.
timeout 200 bash -emc 'trap "kill \$(jobs -p) 2>/dev/null || true" EXIT; . ./commands.sh; wait' >out 2>err || fail "$(cat commands.sh out err)"
[ "$(grep -c '^Scanned$' out)" = 2 ] || fail "$(cat out err)"
for library in many two; do
  files=$(build/release/tools/kolum/kolum library status --json --library "build/$library.db" | jq .known)
  [ "$files" -ge 10 ] || fail "$library has $files files: $(cat out)"
done
