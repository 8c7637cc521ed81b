#!/usr/bin/env bash
# check-release.sh RELEASE [COMMAND...]: runs ./check, or COMMAND, in the project on another Debian
# release (bookworm, trixie, ...): a clone of what is committed here, in a minimal system below
# build/releases. The system is kept, so that a second run is quick; remove its folder to begin
# anew. Needs root and debootstrap. KOLUM_DEBIAN_MIRROR names another mirror than debootstrap's own.
set -euo pipefail
cd "$(dirname "$0")/.."
release=${1:?which Debian release?}
shift
[ $# -gt 0 ] || set -- ./check
root=$PWD/build/releases/$release

if [ ! -e "$root/.complete" ]; then
  rm -rf "$root"
  mkdir -p "$root"
  debootstrap --variant=minbase --include=ca-certificates "$release" "$root" \
    ${KOLUM_DEBIAN_MIRROR:+"$KOLUM_DEBIAN_MIRROR"}
  touch "$root/.complete"
fi
# The way to the packages is this machine's: its proxies and its names.
cp /etc/resolv.conf /etc/hosts "$root/etc/"
cp /etc/apt/apt.conf.d/* "$root/etc/apt/apt.conf.d/"
[ -d "$root/project" ] || git clone -q . "$root/project"
git -C "$root/project" fetch -q "$PWD" HEAD
git -C "$root/project" reset -q --hard FETCH_HEAD

# Its own root in a mount namespace of its own, not a chroot: tests make namespaces there, and every
# mount ends with it.
export root
exec unshare --mount --propagation private bash -euc '
  mount --rbind "$root" "$root"
  mkdir -p "$root/old"
  for folder in dev proc sys; do mount --rbind "/$folder" "$root/$folder"; done
  cd "$root"
  pivot_root . old
  umount --lazy /old
  cd /project
  exec "$@"' check-release "$@"
