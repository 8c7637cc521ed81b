#!/usr/bin/env bash
# make-deb.sh: builds the Debian packages libkolum1, libkolum-dev, kolum and python3-kolum from the
# current commit into build/deb, checks them with lintian, and tries what they hold.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

ensure_packages build package
rm -rf build/deb
mkdir -p build/deb/kolum
git archive HEAD | tar -x -C build/deb/kolum
log=build/deb/build.log
# With Debian's own Python, whatever else there is on the PATH; nobody needs debug information here.
(cd build/deb/kolum && DEB_BUILD_OPTIONS=noautodbgsym PATH=/usr/sbin:/usr/bin:/sbin:/bin \
  dpkg-buildpackage --build=binary --no-sign) >"$log" 2>&1 ||
  { cat "$log" >&2; exit 1; }

# The changelog names no distribution that an archive knows; every other finding counts.
lintian --fail-on error,warning --suppress-tags bad-distribution-in-changes-file build/deb/*.changes

# The packaged files must work without the build tree: the tool, and Python, with the packaged worker.
for package in build/deb/*.deb; do dpkg-deb -x "$package" build/deb/root; done
scripts/make-samples.sh build/samples
song=build/samples/Music/Tones/01-first-tone.mp3
export LD_LIBRARY_PATH PYTHONPATH
LD_LIBRARY_PATH=$(echo build/deb/root/usr/lib/*-linux-gnu)
PYTHONPATH=build/deb/root/usr/lib/python3/dist-packages
build/deb/root/usr/bin/kolum --version
build/deb/root/usr/bin/kolum probe --fields title "$song" | grep -F "First Tone"
/usr/bin/python3 -c 'import sys, kolum; print(kolum.__file__, kolum.probe(sys.argv[1]).title)' "$song" |
  grep -xF "$PWD/$PYTHONPATH/kolum/__init__.py First Tone"
ls build/deb/*.deb
