#!/bin/sh
# check_licences.sh WORKER OTHER...: of these programs and libraries, only WORKER may be linked with
# Exiv2, whose licence then is that of the whole. What they load in turn counts, too.
set -eu
worker=$1
shift
failed=0

is_linked() { readelf -d "$1" | grep -q 'NEEDED.*libexiv2' || ldd "$1" | grep -q libexiv2; }

is_linked "$worker" || { echo "$worker is not linked with Exiv2: this test looks at the wrong things"; failed=1; }
for file in "$@"; do
  [ -f "$file" ] || { echo "there is no $file"; failed=1; continue; }
  if is_linked "$file"; then
    echo "$file is linked with Exiv2"
    failed=1
  fi
done
exit $failed
