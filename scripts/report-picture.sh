#!/usr/bin/env bash
# report-picture.sh KOLUM PICTURE [dark]: makes the picture in docs/report.md: the page of the sample
# library, with some photos that have dates and places (packages of the groups test and ci). The
# page shows where files are, so they are in /srv, of which the script has its own: as root.
set -euo pipefail
[ $# -ge 2 ] || { echo "usage: report-picture.sh KOLUM PICTURE [dark]" >&2; exit 2; }
[ -n "${KOLUM_OWN_MOUNTS:-}" ] || KOLUM_OWN_MOUNTS=yes exec unshare --mount --propagation private "$0" "$@"
mount -t tmpfs media /srv
kolum=$(realpath -- "$1") picture=$(realpath -m -- "$2") scheme=${3:-light}
cd "$(dirname "$0")/.."
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
media=/srv/media
scripts/make-samples.sh build/samples
cp -r build/samples "$media"

# photo NUMBER DATE LATITUDE LONGITUDE CITY COUNTRY: what exiftool is to do, which takes its time to
# start.
photo() {
  local file
  file=$media/Photos/$(printf 'trip-%02d.jpg' "$1")
  cp "$media/Photos/pattern.jpg" "$file"
  printf '%s\n' "-DateTimeOriginal=$2 12:00:00" "-GPSLatitude=$3" "-GPSLatitudeRef=$3" "-GPSLongitude=$4" \
    "-GPSLongitudeRef=$4" "-City=$5" "-Country=$6" "$file" -execute >>"$folder/arguments"
}
number=0
while read -r date latitude longitude city country; do
  photo $((++number)) "$date" "$latitude" "$longitude" "$city" "$country"
done <<'END'
2024:03:02 48.8584 2.2945 Paris France
2024:03:03 48.8606 2.3376 Paris France
2024:03:04 48.8530 2.3499 Paris France
2024:05:11 64.1466 -21.9426 Reykjavik Iceland
2024:05:12 64.1466 -21.9426 Reykjavik Iceland
2024:08:20 40.6892 -74.0445 Jersey Usa
2024:09:01 -22.9519 -43.2105 Rio Brazil
2024:09:02 -22.9519 -43.2105 Rio Brazil
2024:12:24 35.6586 139.7454 Tokyo Japan
2024:12:25 35.6586 139.7454 Tokyo Japan
2024:12:26 35.0116 135.7681 Kyoto Japan
2025:01:09 -33.8568 151.2153 Sydney Australia
2025:01:10 -33.8568 151.2153 Sydney Australia
2025:01:11 -33.8568 151.2153 Sydney Australia
2025:02:14 -1.2921 36.8219 Nairobi Kenya
END
exiftool -@ "$folder/arguments" -common_args -q -overwrite_original
cp "$media/Videos/harbour.mp4" "$media/Videos/harbour (copy).mp4"
head -c 5000 "$media/Videos/holiday.avi" | tr '\0-\377' '?' >"$media/Videos/broken.mp4"

library=/srv/library.db
"$kolum" scan --fingerprint --library "$library" "$media" >"$folder/log" 2>&1 || [ $? -eq 1 ]
"$kolum" library report "$folder/report.html" --library "$library" >"$folder/log"
PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/report /usr/bin/python3 - "$folder" "$scheme" <<'END'
import os, sys, time
folder, scheme = sys.argv[1:]
os.environ["KOLUM"] = ""
from conftest import Browser
browser = Browser(folder + "/profile", "--hide-scrollbars")
try:
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                   {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
    browser.open(folder + "/report.html")
    browser.driver.set_window_size(1200, browser.run("return document.documentElement.scrollHeight") + 200)
    time.sleep(1)
    browser.run("dispatchEvent(new Event('resize'))")
    height = browser.run("return document.body.scrollHeight")
    browser.driver.set_window_size(1200, height + 150)
    time.sleep(1)
    browser.driver.save_screenshot(folder + "/page.png")
finally:
    browser.driver.quit()
END
convert "$folder/page.png" -strip -dither None -colors 64 "png8:$picture"
