#!/usr/bin/env bash
# check_examples.sh BUILD-FOLDER SOURCE-FOLDER SAMPLES: installs into a fresh folder, builds the
# examples against it with CMake and with make, and checks what they print.
set -euo pipefail
build=$1 source=$2 samples=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { printf '%s\n' "$*" >&2; exit 1; }

cmake --install "$build" --prefix "$folder/prefix" --component kolum >/dev/null
"$source/scripts/make-samples.sh" "$samples" >/dev/null
kolum=$folder/prefix/bin/kolum
video=$samples/Videos/harbour.mp4

look() {
  local programs=$1 said
  said=$("$programs/videos" "$samples/Videos")
  grep -qxF 'harbour.mp4: 3 s, 1280x720, CODEC_ID_H264' <<<"$said" || fail "videos: $said"
  said=$("$programs/own_host_main")
  grep -q "^<5> configParser:[0-9]* parseConfig: can't open config file : /nonexistent/volume/.system/lumserver.conf.$" \
    <<<"$said" || fail "own_host_main: $said"
  said=$("$programs/describe" "$video")
  grep -q '^{"schema":2,.*"title":"Harbour at dawn".*"streams":\[{"type":"video",.*}$' <<<"$said" || fail "describe: $said"
  "$kolum" notify clear >/dev/null
  said=$("$programs/watch" "$video" "$samples/Music/Tones/cover.jpg" & "$kolum" notify post >/dev/null; wait)
  [ "$said" = "$video: kind 2
  3 s, 2 streams, 1280x720
$samples/Music/Tones/cover.jpg: kind 3
the library has changed" ] || fail "watch: $said"
}

cmake -G Ninja -S "$source/examples" -B "$folder/cmake" -DCMAKE_PREFIX_PATH="$folder/prefix" >/dev/null
cmake --build "$folder/cmake" >/dev/null
look "$folder/cmake"

mkdir "$folder/make"
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$folder/prefix" -name kolum.pc)")
make -s -C "$source/examples" OUT="$folder/make"
look "$folder/make"

# The README's example must compile as a program.
{
  printf '#include <cstdio>\n'
  sed -n '/^```cpp$/,/^```$/p' "$source/README.md" | sed '/^```/d' | sed '0,/^$/s//int main() {/'
  printf '}\n'
} >"$folder/readme.cpp"
# shellcheck disable=SC2046
g++ -std=c++20 -Wall -Wextra -Werror "$folder/readme.cpp" -o "$folder/readme" $(pkg-config --cflags --libs kolum)
