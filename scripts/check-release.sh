#!/usr/bin/env bash
# check-release.sh RELEASE: follows the README like a newcomer on that Debian release (bookworm,
# trixie, sid, ...), in bare systems: once as a user with sudo, in a folder with spaces below /tmp,
# where root then runs the tests, too; and once as root, installing and packaging what ./run has
# built.
# check-release.sh RELEASE COMMAND [ARGUMENT...]: runs COMMAND as root in a kept system of that
# release, so that a second run is quick.
# Needs root and debootstrap; scripts/bare-system.sh makes the systems.
set -euo pipefail
bare=$(dirname -- "$0")/bare-system.sh
release=${1:?which Debian release?}
shift
[ $# -eq 0 ] || exec "$bare" --keep "$release" root /project "$@"

"$bare" "$release" visitor "/tmp/a folder with spaces" bash -euxc '
  ./run
  ./check
  sudo ./check
  build/release/tests/answers/compare_ways --damage 3 build/release/media'
"$bare" "$release" root /root/libkolum bash -euxc '
  ./run
  cmake --install build/release --component kolum >/dev/null
  kolum --version
  pkg-config --modversion kolum
  scripts/make-deb.sh'
