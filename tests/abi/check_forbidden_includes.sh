#!/bin/sh
# check_forbidden_includes.sh COMPILE_COMMANDS ROOT: for each layer, a copy of one of its sources with
# an include that the layer may not have must not compile, though the source itself does.
set -eu
commands=$1
root=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

# The command that compiles a source, up to the output file. Where a folder's name has spaces, the
# source's path is in quotes.
command_for() {
  sed -n 's/\\"/"/g; s|^ *"command": "\(.*\) -o [^ ]*'"$(basename "$1")"'\.o -c .*/'"$1"'"\{1,2\},*$|\1|p' "$commands" | head -1
}

# A file of the library, below src/ or beside it.
file_of() { if [ -f "$root/src/$1" ]; then echo "src/$1"; else echo "$1"; fi; }

# refuses SOURCE HEADER: HEADER is a file of the project.
refuses() {
  [ -f "$root/$(file_of "$2")" ] || { echo "there is no $2"; failed=1; return; }
  source=$(file_of "$1")
  command=$(command_for "$source")
  [ -n "$command" ] || { echo "nothing compiles $source"; failed=1; return; }
  cp "$root/$source" "$scratch/plain.cpp"
  { printf '#include "%s"\n' "$2"; cat "$root/$source"; } >"$scratch/forbidden.cpp"
  if ! (cd "$(dirname "$commands")" && eval "$command" -fsyntax-only "$scratch/plain.cpp") 2>"$scratch/said"; then
    echo "$1 does not compile by itself:"; cat "$scratch/said"; failed=1; return
  fi
  if (cd "$(dirname "$commands")" && eval "$command" -fsyntax-only "$scratch/forbidden.cpp") 2>"$scratch/said"; then
    echo "$1 compiles with $2"; failed=1
  elif ! grep -q -e "$2: No such file" -e "'$2' file not found" "$scratch/said"; then
    echo "$1 with $2 fails for another reason:"; cat "$scratch/said"; failed=1
  fi
}

refuses base/text.cpp media/source.h
refuses media/levels.cpp dlna/naming.h
refuses media/source.cpp read/ffmpeg/input.h
refuses read/headers/ts_packets.cpp read/ffmpeg/input.h
refuses read/ffmpeg/formats.cpp read/tags/dsf_tags.h
refuses read/tags/dsd_tool.cpp read/ffmpeg/input.h
refuses read/disc/image.cpp probe/video.h
refuses read/findings/look.cpp isolation/isolation.h
refuses read/findings/look.cpp read/exif/photo_tags.h
refuses read/findings/look.cpp read/image/disc_image.h
refuses read/exif/photo_tags.cpp read/ffmpeg/input.h
refuses read/image/disc_image.cpp read/disc/disc.h
refuses isolation/wire.cpp probe/video.h
refuses dlna/audio_class.cpp read/ffmpeg/input.h
refuses probe/creation.cpp api/guarded.h
refuses filetype/tables.cpp probe/video.h
refuses frame/notifications.cpp media/source.h
refuses server/answer.cpp media/source.h
refuses config/config.cpp media/source.h
refuses artwork/cover.cpp read/ffmpeg/input.h
refuses geocode/osm_answer.cpp media/source.h
refuses geocode/place_answer.cpp isolation/isolation.h
refuses scan/store.cpp media/source.h
refuses scan/walk.cpp isolation/isolation.h
exit $failed
