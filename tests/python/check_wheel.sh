#!/usr/bin/env bash
# check_wheel.sh PYTHON SOURCE-FOLDER VERSION: builds the wheel of the Python package without a
# network, and uses it where nothing else of the project is. VERSION is the project's.
set -euo pipefail
python=$1 source=$2 version=$3
"$source/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { printf '%s\n' "$*" >&2; exit 1; }

# The build leaves files in the sources.
mkdir "$folder/sources" "$folder/empty"
cp -r "$source/CMakeLists.txt" "$source/LICENSE" "$source/python" "$folder/sources"
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_NO_CACHE_DIR=1 PIP_NO_INDEX=1 PIP_ROOT_USER_ACTION=ignore
unset PYTHONPATH
pip() { "$python" -m pip "$@" >"$folder/pip.log" 2>&1 || fail "$(cat "$folder/pip.log")"; }
pip wheel --no-build-isolation --no-deps --wheel-dir "$folder" "$folder/sources/python"
wheel=$folder/kolum-$version-py3-none-any.whl
[ -f "$wheel" ] || fail "another version than $version: $(ls "$folder")"
pip install --no-deps --target "$folder/site" "$wheel"

information=$(echo "$folder"/site/kolum-*.dist-info)
cmp "$(find "$information" -name LICENSE)" "$source/LICENSE"
grep -qF '    import kolum' "$information/METADATA" || fail "no text of the README"
[ -f "$folder/site/kolum/py.typed" ] || fail "not typed"

cd "$folder/empty"
title=$(PYTHONPATH=$folder/site "$python" -c 'import sys, kolum; print(kolum.probe(sys.argv[1]).title)' \
  "$KOLUM_SAMPLES/Music/Tones/01-first-tone.mp3")
[ "$title" = "First Tone" ] || fail "another title: $title"

# The Debian packages have the same version.
grep -q "^kolum ($version) " <(head -1 "$source/debian/changelog") || fail "debian/changelog has another version"
