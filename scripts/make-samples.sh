#!/usr/bin/env bash
# make-samples.sh FOLDER: makes a small library of real media in FOLDER unless it is there already:
# videos, songs, photos, a DSD song and a DVD folder. Existing files of these names are replaced;
# everything else stays.
set -euo pipefail
[ $# -eq 1 ] || { echo "usage: make-samples.sh FOLDER" >&2; exit 2; }

readonly kVersion=1  # raise it when the samples change
mkdir -p "$1"
cd "$1"
exec 9>.lock
flock 9
[ "$(cat .complete 2>/dev/null || true)" = "$kVersion" ] && exit 0
printf 'kolum: making a small sample library in %s\n' "$1" >&2
rm -f .complete
mkdir -p Videos Music/Tones Photos
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# encode ARGUMENT...: the ffmpeg tool, printing errors only.
encode() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }

# picture SIZE RATE, tone HZ: test sources as input arguments.
picture() { printf '%s\n' -f lavfi -i "testsrc2=size=$1:rate=$2:duration=3"; }
tone() { printf '%s\n' -f lavfi -i "sine=frequency=$1:sample_rate=48000:duration=3"; }

videos() {
  encode $(picture 1280x720 25) $(tone 440) -c:v libx264 -preset ultrafast -pix_fmt yuv420p \
    -c:a aac -b:a 128k -movflags +faststart -metadata title="Harbour at dawn" \
    -metadata creation_time=2015-06-07T08:09:10Z Videos/harbour.mp4
  encode $(picture 720x576 25) $(tone 440) -c:v mpeg2video -b:v 4M -c:a mp2 -b:a 192k \
    -f mpegts Videos/evening-news.ts
  encode $(picture 640x360 24) $(tone 330) -c:v libx264 -preset ultrafast -pix_fmt yuv420p \
    -c:a ac3 -b:a 192k Videos/short-film.mkv
  encode $(picture 640x480 30) $(tone 220) -c:v mpeg4 -vtag XVID -b:v 900k \
    -c:a libmp3lame -b:a 128k Videos/holiday.avi
}

# song FILE TITLE TRACK HZ ENCODER-ARGUMENT...
song() {
  local file=$1 title=$2 track=$3 hertz=$4
  shift 4
  encode $(tone "$hertz") -ac 2 "$@" -metadata title="$title" -metadata artist="The Oscillators" \
    -metadata album="Tones" -metadata track="$track" -metadata date=2015 -metadata genre=Electronic \
    "Music/Tones/$file"
}

songs() {
  song 01-first-tone.mp3 "First Tone" 1 440 -c:a libmp3lame -b:a 192k -id3v2_version 3
  song 02-second-tone.flac "Second Tone" 2 494 -c:a flac
  song 03-third-tone.m4a "Third Tone" 3 523 -c:a aac -b:a 160k
  dsd_song >"Music/Tones/04-silence.dsf"
}

# little BYTES VALUE: a little-endian number.
little() {
  local i
  for ((i = 0; i < $1; i++)); do printf "\\x$(printf %02x $((($2 >> (8 * i)) & 255)))"; done
}

# text_frame ID TEXT: an ID3v2.3 text frame in Latin-1 (texts below 127 characters).
text_frame() { printf '%s\0\0\0%b\0\0\0%s' "$1" "\\x$(printf %02x $((${#2} + 1)))" "$2"; }

# One second of two-channel silence at 2.8224 MHz, one bit per sample, with an ID3v2 tag at the end.
dsd_song() {
  local rate=2822400 block=4096 blocks data tag
  blocks=$(((rate / 8 + block - 1) / block))
  data=$((blocks * block * 2))
  tag="$scratch/tag"
  { text_frame TIT2 "Silence"; text_frame TPE1 "The Oscillators"; text_frame TALB "Tones"
    text_frame TYER 2015; text_frame TRCK 4; text_frame TCON Electronic; } >"$tag"
  local size
  size=$(stat -c %s "$tag")
  printf 'DSD '; little 8 28; little 8 $((28 + 52 + 12 + data + 10 + size)); little 8 $((28 + 52 + 12 + data))
  printf 'fmt '; little 8 52; little 4 1; little 4 0; little 4 2; little 4 2; little 4 $rate
  little 4 1; little 8 $rate; little 4 $block; little 4 0
  printf 'data'; little 8 $((12 + data))
  head -c $data /dev/zero | tr '\0' '\151'  # 0x69: as many ones as zeros
  printf 'ID3\3\0\0\0\0%b%b' "\\x$(printf %02x $((size >> 7)))" "\\x$(printf %02x $((size & 127)))"
  cat "$tag"
}

photos() {
  encode -f lavfi -i testsrc2=size=1600x1200:duration=1:rate=1 -frames:v 1 -q:v 3 Photos/pattern.jpg
  encode -f lavfi -i smptebars=size=800x600:duration=1:rate=1 -frames:v 1 Photos/bars.png
  encode -f lavfi -i mandelbrot=size=500x500:rate=1 -frames:v 1 Music/Tones/cover.jpg
}

dvd() {
  encode $(picture 720x576 25) $(tone 440) -target pal-dvd -b:v 3M "$scratch/title.mpg"
  rm -rf "Videos/Sample DVD"
  VIDEO_FORMAT=PAL dvdauthor -o "Videos/Sample DVD" -t "$scratch/title.mpg" >"$scratch/dvd.log" 2>&1 &&
    VIDEO_FORMAT=PAL dvdauthor -o "Videos/Sample DVD" -T >>"$scratch/dvd.log" 2>&1 ||
    { cat "$scratch/dvd.log" >&2; return 1; }
}

jobs=()
for part in videos songs photos dvd; do
  $part &
  jobs+=($!)
done
for job in "${jobs[@]}"; do wait "$job"; done
printf '%s\n' "$kVersion" >.complete
