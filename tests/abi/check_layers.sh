#!/bin/sh
# check_layers.sh ROOT: checks which folder includes what.
set -eu
cd "$1"
failed=0

# nobody PATTERN WHY FILE...: fails with WHY if a file matches PATTERN.
nobody() {
  pattern=$1
  why=$2
  shift 2
  if grep -nE "$pattern" "$@" /dev/null; then
    echo "-> $why"
    failed=1
  fi
}
sources() { find "$@" -name '*.h' -o -name '*.cpp' | sort; }

nobody '#include .*(libav|libsw)' "only src/av includes FFmpeg's headers" \
  $(sources include src host tools/kolum | grep -v '^src/av/')
nobody '#include .*pugi' 'only src/xml includes pugixml' \
  $(sources include src host tools/kolum | grep -v '^src/xml/')
nobody '#include .*iniparser' 'only src/support includes iniparser' \
  $(sources include src | grep -v '^src/support/')
nobody '#include "(\.\.|tools|tests|host)/' 'the library includes nothing above it' $(sources src)
nobody '#include "' 'public headers include public headers only' $(sources include)
nobody 'getenv' 'the library reads no environment variable' $(sources src)
nobody '#include "(config|filetype|frame|geocode|ipc|mediainfo|support|thumbnail|video|xml)/' \
  'the tool includes public headers, not those of a family' $(sources tools/kolum)
nobody '#include "av/' 'only content.cpp of the tool includes src/av' \
  $(sources tools/kolum | grep -v '^tools/kolum/content.cpp')
nobody 'LIBAV[A-Z]+_VERSION' "differences between FFmpeg's releases belong in src/av/ffmpeg.h" \
  $(sources src | grep -v '^src/av/ffmpeg.h')
nobody '#include "(av|config|filetype|frame|geocode|ipc|mediainfo|support|thumbnail|video|xml)/' \
  'src/media includes nothing else of the library' $(sources src/media)
exit $failed
