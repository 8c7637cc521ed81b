#!/bin/sh
# check_layers.sh ROOT: which folder may include what. The build holds the order of the library's own
# layers; here are the rules for what the system's include folders would let through.
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

nobody '#include .*(libav|libsw)' "only src/read/ffmpeg includes FFmpeg's headers" \
  $(sources include src host isolation tools/kolum | grep -v '^src/read/ffmpeg/')
nobody 'LIBAV[A-Z]+_VERSION' "differences between FFmpeg's releases belong in src/read/ffmpeg/ffmpeg.h" \
  $(sources src | grep -v '^src/read/ffmpeg/ffmpeg.h')
nobody '#include <(id3v2|taglib|dsffile|tfile|tiostream|textidentification)' 'only src/read/tags includes TagLib' \
  $(sources include src host isolation tools/kolum | grep -v '^src/read/tags/')
nobody '#include .*(pugi|iniparser)' 'only src/base includes pugixml and iniparser' \
  $(sources include src | grep -v '^src/base/')
nobody '#include .*sqlite' 'only the store in scan/ includes SQLite' \
  $(sources include src host tools scan | grep -vE '^scan/(database|expressions|schema|statements|store|text_search)')
nobody '#include <exiv2' 'only src/read/exif/exiv2.h includes Exiv2' \
  $(sources include src host isolation tools scan | grep -v '^src/read/exif/exiv2.h')
nobody '#include <expat' 'only src/read/exif/xmp_reader.cpp includes Expat' \
  $(sources include src host isolation tools scan | grep -v '^src/read/exif/xmp_reader.cpp')
nobody '#include <brotli' 'only src/read/exif includes Brotli' \
  $(sources include src host isolation tools scan | grep -v '^src/read/exif/')
nobody '#include <udfread' 'only src/read/image includes libudfread' \
  $(sources include src host isolation tools scan | grep -v '^src/read/image/')
nobody '#include "' 'public headers include public headers only' $(sources include)
nobody 'getenv' 'of the library, only isolation/ reads environment variables' $(sources src)
nobody '#include <(seccomp|linux/landlock)' 'only the worker includes libseccomp' \
  $(sources include src host tools/kolum isolation | grep -v '^isolation/worker/')
nobody '[^n](f?printf|f?puts|perror)\(' 'only src/api writes to standard output and error' \
  $(sources src/media src/read src/dlna src/probe src/describe isolation | grep -v '^isolation/worker/main.cpp')
nobody '#include "(probe|read|dlna|commands|files|machine|terminal)[/.]' 'scan/ knows no probe and no command' \
  $(sources scan)
nobody '#include "(commands|files|machine)[/.]' "the tool's terminal/ includes nothing else of it" \
  $(sources tools/kolum/terminal)
nobody '#include "(commands|files|terminal)[/.]' "the tool's machine/ includes nothing else of it" \
  $(sources tools/kolum/machine)
nobody '#include "commands[/.]' "the tool's files/ know no command" $(sources tools/kolum/files)
exit $failed
