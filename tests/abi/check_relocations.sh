#!/bin/sh
# check_relocations.sh LIBRARY: nothing inside the library may be replaced by a program that defines an
# exported name of its own, so no relocation points at such a name. Data that the library writes is the
# exception: a program may hold the copy that counts.
set -eu
written='g_initHash g_localWorkingPath g_pHashMusic g_pHashPicture g_pHashPlaylist g_pHashVideo'
exported=$(mktemp)
trap 'rm -f "$exported"' EXIT
nm -D --defined-only "$1" | awk '{ print $3 }' >"$exported"
found=$(readelf -rW "$1" | awk 'NF >= 5 { print $5 }' | sort -u | grep -Fxf "$exported" |
  grep -vxF "$(printf '%s\n' $written)" || true)
[ -z "$found" ] && exit
echo "The library calls these by their exported names:"
echo "$found"
exit 1
