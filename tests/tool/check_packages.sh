#!/usr/bin/env bash
# check_packages.sh SOURCE-FOLDER: checks which packages scripts/packages.txt selects on old and new
# releases, including those without a number.
set -euo pipefail
cd -- "$1"
. scripts/setup.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# expect_package PACKAGE OS-RELEASE-LINE...: PACKAGE must be the only TagLib package that is
# selected.
expect_package() {
  local package=$1 wanted
  shift
  printf '%s\n' "$@" >"$folder/os-release"
  kOsRelease=$folder/os-release
  wanted=$(wanted_packages build | awk '$1 ~ /^libtag/ { print $1 }')
  [ "$wanted" = "$package" ] || { echo "wants \"$wanted\" for \"$*\""; exit 1; }
}
expect_package libtag1-dev VERSION_ID=\"12\"
expect_package libtag-dev VERSION_ID=\"13\"
expect_package libtag-dev VERSION_ID=\"14\"
expect_package libtag-dev 'PRETTY_NAME="Debian GNU/Linux forky/sid"' VERSION_CODENAME=forky
