#!/usr/bin/env bash
# make-deb.sh: builds the Debian packages libkolum1, libkolum-dev and kolum from the current commit
# into build/deb, and checks them with lintian.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

ensure_packages build package
rm -rf build/deb
mkdir -p build/deb/kolum
git archive HEAD | tar -x -C build/deb/kolum
log=build/deb/build.log
(cd build/deb/kolum && dpkg-buildpackage --build=binary --no-sign) >"$log" 2>&1 || { cat "$log" >&2; exit 1; }

# The changelog names no distribution that an archive knows; every other finding counts.
lintian --fail-on error,warning --suppress-tags bad-distribution-in-changes-file build/deb/*.changes

# The packaged files must work without the build tree.
for package in build/deb/*.deb; do dpkg-deb -x "$package" build/deb/root; done
LD_LIBRARY_PATH=$(echo build/deb/root/usr/lib/*-linux-gnu) build/deb/root/usr/bin/kolum --version
ls build/deb/*.deb
