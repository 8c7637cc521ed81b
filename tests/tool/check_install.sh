#!/bin/sh
# check_install.sh BUILD-FOLDER SOURCE-FOLDER SAMPLES: installs into a fresh folder; the
# installation must be self-contained and relocatable.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --install "$1" --prefix "$folder/first" --component kolum >/dev/null
moved="$folder/it's moved"
mv "$folder/first" "$moved"
"$moved/bin/kolum" --version
"$moved/bin/kolum" ids codecs 28 | grep -q CODEC_ID_H264
ldd "$moved/bin/kolum" | grep 'libko' | grep -vF "$moved" && exit 1
LD_BIND_NOW=1 ldd "$(find "$moved" -name libkolum.so)" | grep libkohost.so | grep -qF "$moved"
"$moved/libexec/kolum/dsf2flac" 2>&1 | grep -q dsf2flac
"$2/scripts/make-samples.sh" "$3" >/dev/null
"$moved/bin/kolum" dsf "$3/Music/Tones/04-silence.dsf" | grep -q '2.8224 MHz\|2822400\|2,822'
for file in share/man/man1/kolum.1 share/doc/kolum/tool.md share/doc/kolum/kolum.schema.json share/doc/kolum/LICENSE share/doc/kolum/osm_info/COPYING share/bash-completion/completions/kolum share/zsh/site-functions/_kolum share/fish/vendor_completions.d/kolum.fish include/kolum/kolum.h; do
  test -f "$moved/$file"
done

# An incomplete build must install nothing at all.
sed 's|/man/kolum\.1|/man/missing.1|' "$1/cmake_install.cmake" >"$folder/partial.cmake"
if cmake -DCMAKE_INSTALL_PREFIX="$folder/partial" -DCMAKE_INSTALL_COMPONENT=kolum \
  -P "$folder/partial.cmake" 2>"$folder/said"; then
  exit 1
fi
# CMake wraps its messages depending on the length of the path.
tr -s '\n ' ' ' <"$folder/said" | grep -q 'nothing was installed'
test ! -e "$folder/partial"

# The stand-ins must be installed where the library looks for them.
DESTDIR=$folder/appliance cmake --install "$1" --component appliance >/dev/null
(cd "$folder/appliance" && find . -type f | LC_ALL=C sort) | diff - /dev/fd/3 3<<'LIST'
./sbin/setcfg
./usr/local/medialibrary/bin/dsf2flac
./usr/local/medialibrary/bin/osm_info
LIST
