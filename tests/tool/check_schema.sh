#!/usr/bin/env bash
# check_schema.sh KOLUM SOURCE-FOLDER SAMPLES: checks that the JSON output of every command fits the
# published schema and has no keys beyond it.
set -euo pipefail
kolum=$1 source=$2 samples=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$source/scripts/make-samples.sh" "$samples" >/dev/null
failures=0

# fits COMMAND ARGUMENT...: the output must fit; status 1 is allowed, as some runs fail for some
# files.
fits() {
  local output
  output=$("$kolum" "$@" --json) || [ $? -eq 1 ]
  "$source/tests/tool/validate.py" "$source/docs/kolum.schema.json" "$1" <<<"$output" || {
    printf 'kolum %s\n' "$*"
    failures=$((failures + 1))
  }
}

cp "$samples/Videos/harbour.mp4" "$folder/"$'caf\xe9.mp4'
fits probe "$samples" "$folder"
mkdir "$folder/unknown"
touch "$folder/unknown/a.heic" "$folder/empty.mp4" "$folder/empty.mp3"
for command in probe info tracks dlna dsf "keyframe 0"; do
  # shellcheck disable=SC2086
  fits $command "$folder/missing" "$folder/empty.mp4" "$folder/empty.mp3" "$folder/unknown"
done
fits cover "$folder/missing"
fits probe --all "$samples"
fits info --seek 1 "$samples"
fits info "$samples/Videos"
fits keyframe 0 "$samples/Videos/harbour.mp4"
fits tracks "$samples/Videos" "$samples/Music"
fits dlna "$samples"
fits dlna --explain "$samples"
fits dsf "$samples"
fits cover "$samples/Music/Tones" "$samples/Photos"
fits cover --names a.jpg cover.jpg
fits classify --tag 3 a.mp4 a.m4a a.jpg a.m3u a.txt $'caf\xe9.mp4'
fits extensions
for table in formats brands codecs profiles exceptions; do fits ids "$table"; done
fits ids codecs --ffmpeg 28 174
fits artwork folder 3 4660
fits artwork transcoded a.mp4
mkdir -p "$folder/art/the oscillators"
cp "$samples/Music/Tones/cover.jpg" "$folder/art/the oscillators/artist.jpg"
fits artwork artist "$folder/art/" "The Oscillators"
fits geocode 48.8584 2.2945
fits notify post
fits notify clear
fits doctor
library=$folder/scanned.db
fits scan --library "$library" "$samples" "$folder"
fits scan --library "$library" --progress json --retry "$samples" "$folder/missing" "$folder"
library=$folder/library.db
"$kolum" probe --json "$samples" "$folder" 2>/dev/null | "$kolum" library add --json --library "$library" >"$folder/added" ||
  [ $? -eq 1 ]
"$source/tests/tool/validate.py" "$source/docs/kolum.schema.json" library <"$folder/added"
fits library export --library "$library"
fits library problems --library "$library"
fits library status --library "$library"
fits library report "$folder/report.html" --library "$library"
fits library stale "$samples" "$folder" --library "$folder/other.db"
exit $((failures > 0))
