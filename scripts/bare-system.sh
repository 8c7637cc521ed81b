#!/usr/bin/env bash
# bare-system.sh [--keep] RELEASE USER FOLDER COMMAND [ARGUMENT...]: runs COMMAND as USER (root, or
# any other name: a user with sudo) in a minimal system of that Debian release (bookworm, trixie,
# sid, ...), where FOLDER is a clone of what is committed here.
# bare-system.sh --why-not: says why this machine cannot make such a system, if it cannot.
#
# The systems are kept below build/releases. Each run starts with a fresh one, and keeps it only
# if COMMAND fails. With --keep the system of the last run with --keep is reused and updated to
# the current commit. KOLUM_DEBIAN_MIRROR names a mirror; the default is the one this machine uses.
set -euo pipefail
CDPATH="" cd -- "$(dirname -- "$0")/.."
readonly kReleases=$PWD/build/releases
readonly kPath=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

why_not() {
  [ "$(id -u)" -eq 0 ] || { echo "it needs root"; return; }
  command -v debootstrap >/dev/null || { echo "debootstrap is not installed"; return; }
  unshare --mount --propagation private true 2>/dev/null || { echo "mount namespaces are not allowed here"; return; }
  mkdir -p "$kReleases"
  local device=$kReleases/device.$$
  { mknod "$device" c 1 3 && echo >"$device"; } 2>/dev/null || echo "device files do not work in $kReleases"
  rm -f "$device"
}

# The mirror that this machine's own packages come from; empty if that cannot be determined.
own_mirror() {
  . /etc/os-release
  [ "${ID:-}" = debian ] || return 0
  { apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Release: ${VERSION_CODENAME:-}" \
    'Component: main' 2>/dev/null || true; } | sed -n 1p
}

# proxy SCHEME: the proxy in the environment, else the one that apt is configured with.
proxy() {
  local variable=${1}_proxy value=
  eval "$(apt-config shell value "Acquire::$1::Proxy")"
  [ "$value" != DIRECT ] || value=
  printf '%s' "${!variable:-$value}"
}

# The unmodified system of this release, made once.
make_pristine() {
  [ ! -e "$pristine.complete" ] || return 0
  echo "making a bare $release in $pristine" >&2
  rm -rf "$pristine"
  mkdir -p "$pristine"
  debootstrap --variant=minbase "$release" "$pristine" ${mirror:+"$mirror"} >"$pristine.log" 2>&1 ||
    { cat "$pristine.log" >&2; return 1; }
  rm -f "$pristine"/var/cache/apt/archives/*.deb
  touch "$pristine.complete"
}

# Packages are fetched the way this machine does: name resolution, proxies, certificates.
share_network() {
  cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
  apt-config dump | grep '^Acquire::' | grep -vE '^Acquire::(IndexTargets|CompressionTypes|Changelogs|cdrom)' \
    >"$root/etc/apt/apt.conf.d/90machine" || true
  case $mirror in https:*)
    cp -L /etc/ssl/certs/ca-certificates.crt "$root/etc/apt/machine.crt"
    echo 'Acquire::https::CAInfo "/etc/apt/machine.crt";' >>"$root/etc/apt/apt.conf.d/90machine" ;;
  esac
}

clone_project() {
  [ -d "$root$folder" ] || git clone -q --no-hardlinks . "$root$folder"
  git -C "$root$folder" fetch -q "$PWD" HEAD
  git -C "$root$folder" reset -q --hard FETCH_HEAD
}

# inside COMMAND [ARGUMENT...]: as root in the system, with a minimal environment. It uses a mount
# namespace with pivot_root rather than a chroot, because the tests make namespaces there, and
# because every mount ends with it. It has its own /dev/shm, because the library's semaphores belong
# to whoever made them first. Downloaded packages are kept for the next system.
inside() {
  local variable environment=("HOME=/root" "PATH=$kPath" "TERM=${TERM:-dumb}" "root=$root" "archives=$archives")
  for variable in http_proxy https_proxy no_proxy; do
    [ -z "${!variable:-}" ] || environment+=("$variable=${!variable}")
  done
  env -i "${environment[@]}" unshare --mount --propagation private bash -euc '
    mount --rbind "$root" "$root"
    mkdir -p "$root/old"
    mount --bind "$archives" "$root/var/cache/apt/archives"
    for folder in dev proc sys; do mount --rbind "/$folder" "$root/$folder"; done
    mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
    cd "$root"
    pivot_root . old
    umount --lazy /old
    cd /
    unset root archives
    exec "$@"' bare-system "$@"
}

# A user with sudo, as on an ordinary machine.
add_user() {
  inside sh -euc '
    id -u "$1" >/dev/null 2>&1 || useradd --create-home --shell /bin/bash "$1"
    [ -x /usr/bin/sudo ] || { apt-get -qq update; DEBIAN_FRONTEND=noninteractive apt-get -qq install -y sudo; }
    printf "%s ALL=(ALL) NOPASSWD: ALL\n" "$1" >/etc/sudoers.d/user' add-user "$user" >"$root.log" 2>&1 ||
    { cat "$root.log" >&2; return 1; }
}

if [ "${1:-}" = --why-not ]; then
  why_not
  exit
fi
keep=
if [ "${1:-}" = --keep ]; then
  keep=kept
  shift
fi
[ $# -ge 4 ] || { echo "usage: bare-system.sh [--keep] RELEASE USER FOLDER COMMAND [ARGUMENT...]" >&2; exit 2; }
release=$1 user=$2 folder=$3
shift 3
reason=$(why_not)
[ -z "$reason" ] || { echo "no bare system can be made: $reason" >&2; exit 1; }

pristine=$kReleases/$release.pristine
root=$kReleases/$release.${keep:-$user}
archives=$kReleases/$release.archives
mirror=${KOLUM_DEBIAN_MIRROR:-$(own_mirror)}
export http_proxy https_proxy
http_proxy=$(proxy http) https_proxy=$(proxy https)
mkdir -p "$archives/partial"
make_pristine
if [ -z "$keep" ] || [ ! -e "$root" ]; then
  rm -rf "$root"
  cp -a --reflink=auto "$pristine" "$root"
fi
share_network
[ "$user" = root ] || add_user
clone_project
command='cd "$1"; shift; exec "$@"'
if [ "$user" = root ]; then
  inside bash -c "$command" bash "$folder" "$@"
else
  inside chown -R "$user:" "$folder"
  inside su --login "$user" --command "$command" -- bash "$folder" "$@"
fi
[ -n "$keep" ] || rm -rf "$root" "$root.log"
