#!/bin/sh
# check_layers.sh ROOT: which folder may include what.
set -eu
cd "$1"
failed=0

# nobody PATTERN WHY FILE...: no file may match.
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
nobody '#include "(\.\.|tools|tests|host)/' 'the library stands on nothing above it' $(sources src)
nobody '#include "' 'public headers include public headers only' $(sources include)
nobody 'getenv' 'the library reads no environment variable' $(sources src)
nobody '#include "(config|filetype|frame|geocode|ipc|mediainfo|support|thumbnail|video|xml)/' \
  'the tool stands on the public headers, and on no family' $(sources tools/kolum)
nobody '#include "av/' 'only content.cpp of the tool looks at src/av' \
  $(sources tools/kolum | grep -v '^tools/kolum/files/content.cpp')
nobody '#include "(commands|files|machine)[/.]' "the tool's terminal/ stands on nothing else of it" \
  $(sources tools/kolum/terminal)
nobody '#include "(commands|files|terminal)[/.]' "the tool's machine/ stands on nothing else of it" \
  $(sources tools/kolum/machine)
nobody '#include "commands[/.]' "the tool's files/ know no command" $(sources tools/kolum/files)
nobody 'LIBAV[A-Z]+_VERSION' "differences between FFmpeg's releases stand in src/av/ffmpeg.h" \
  $(sources src | grep -v '^src/av/ffmpeg.h')
nobody '#include "(av|config|filetype|frame|geocode|ipc|mediainfo|support|thumbnail|video|xml)/' \
  'src/media stands on nothing else of the library' $(sources src/media)
exit $failed
