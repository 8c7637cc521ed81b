#!/usr/bin/env bash
# fuzz-seeds.sh FOLDER: makes the fuzzers' seeds in FOLDER, with a folder per fuzzer. Does nothing
# if they exist.
set -euo pipefail
[ $# -eq 1 ] || { echo "usage: fuzz-seeds.sh FOLDER" >&2; exit 2; }
[ -e "$1/.complete" ] && exit 0
rm -rf "$1"
mkdir -p "$1"
cd "$1"

# Media well below 100 kB each. ffmpeg may lack an encoder, and then that seed is left out.
encode() {
  timeout 60 ffmpeg -nostdin -hide_banner -loglevel quiet -y "$@" || rm -f "${!#}"
}

# bytes HEXADECIMAL...: prints these bytes.
bytes() { printf "$(printf '%s' "$@" | sed 's/../\\x&/g')"; }
# zeros COUNT
zeros() { head -c "$1" /dev/zero; }

readonly kPicture=(-f lavfi -i "testsrc2=size=32x32:rate=5:duration=1")
readonly kTone=(-f lavfi -i "sine=frequency=440:sample_rate=44100:duration=0.3")

videos() {
  mkdir -p probe media_info
  local x264=(-c:v libx264 -preset ultrafast -pix_fmt yuv420p)
  encode "${kPicture[@]}" "${kTone[@]}" "${x264[@]}" -c:a aac -metadata title=Title \
    -metadata creation_time=2015-06-07T08:09:10Z probe/faststart.mp4
  encode "${kPicture[@]}" "${x264[@]}" -f mov -metadata com.apple.quicktime.content.identifier=id \
    -movflags use_metadata_tags probe/quicktime.mov
  encode "${kPicture[@]}" "${kTone[@]}" -c:v mpeg2video -c:a mp2 -f mpegts probe/mpeg2.ts
  encode "${kPicture[@]}" "${x264[@]}" -f mpegts -mpegts_m2ts_mode 1 probe/h264.m2ts
  encode "${kPicture[@]}" -c:v mpeg2video -f vob probe/mpeg2.vob
  encode "${kPicture[@]}" "${kTone[@]}" "${x264[@]}" -c:a ac3 probe/h264.mkv
  encode "${kPicture[@]}" -c:v mpeg4 -vtag XVID probe/xvid.avi
  encode "${kPicture[@]}" "${kTone[@]}" -c:v wmv2 -c:a wmav2 probe/wmv.wmv
  encode "${kPicture[@]}" -c:v flv probe/flash.flv
  encode "${kPicture[@]}" -s 128x96 -c:v h263 probe/phone.3gp
  cp probe/* media_info/
}

# Videos with all kinds of details, and what their first pictures carry.
details() {
  mkdir -p details picture_metadata
  local hdr=master-display='G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)'
  cp probe/* details/
  encode "${kPicture[@]}" "${kTone[@]}" -c:v libx264 -pix_fmt yuv420p -c:a aac -metadata:s:a \
    language=deu -metadata:s:a title=Ton -metadata date=2015-06-07T08:09:10+0200 \
    -metadata location=+48.8577+002.295/ -metadata season_number=2 -f ismv details/tags.mp4
  encode "${kPicture[@]}" "${kTone[@]}" -c:v libvpx-vp9 -pix_fmt yuv420p10le -color_trc smpte2084 \
    -metadata DIRECTOR=Somebody details/tags.mkv
  encode "${kPicture[@]}" -c:v libx265 -pix_fmt yuv420p10le -x265-params \
    "log-level=none:hdr-opt=1:repeat-headers=1:$hdr:max-cll=1000,400" details/hdr10.mp4
  encode "${kPicture[@]}" -c:v libx265 -pix_fmt yuv420p10le -frames:v 1 -x265-params \
    "log-level=none:hdr-opt=1:repeat-headers=1:$hdr:max-cll=1000,400" picture_metadata/hdr10.hevc
  encode "${kPicture[@]}" -c:v libx264 -frames:v 1 picture_metadata/plain.h264
  encode "${kPicture[@]}" -c:v mpeg2video -frames:v 1 picture_metadata/plain.m2v
  encode "${kPicture[@]}" -c:v libaom-av1 -cpu-used 8 -frames:v 1 picture_metadata/plain.obu
  { bytes 000001b2; printf GA94; bytes 0343ff fc942c; } >picture_metadata/captions
  { bytes 00000001 4e01 0409 b5003c0001040140 00 80; } >picture_metadata/dynamic
  printf '+48.8577+002.295+035.000/' >picture_metadata/position
  printf '48°51′27.7″N 2°17′42″E 35m' >picture_metadata/degrees
  printf '2015-06-07T08:09:10.5+0200' >picture_metadata/date
}

stream_headers() {
  mkdir -p stream_headers signatures
  encode "${kPicture[@]}" -c:v libx264 -preset ultrafast -pix_fmt yuv420p stream_headers/plain.h264
  encode "${kPicture[@]}" -c:v libx264 -pix_fmt yuv422p10le stream_headers/high.h264
  encode "${kTone[@]}" stream_headers/frames.mp3
  cp probe/* stream_headers/frames.mp3 signatures/
}

# Songs with a picture, because the key-frame search treats a picture as a video stream.
covers() {
  local picture=media_info/picture.jpg block i
  encode -f lavfi -i color=red:s=32x24 -frames:v 1 "$picture"
  [ -e "$picture" ] || return 0
  block=$({ bytes 00000003 0000000a; printf image/jpeg
    bytes 00000000 00000020 00000018 00000018 00000000 "$(printf %08x "$(stat -c %s "$picture")")"
    cat "$picture"; } | base64 --wrap=0)
  encode "${kTone[@]}" -c:a libvorbis -metadata "METADATA_BLOCK_PICTURE=$block" media_info/cover.ogg
  for i in mp3 flac m4a wma; do
    encode "${kTone[@]}" -i "$picture" -map 0 -map 1 -c:v copy -disposition:v attached_pic \
      "media_info/cover.$i"
  done
  rm "$picture"
  encode "${kPicture[@]}" -c:v libtheora media_info/theora.ogv
}

songs_and_photos() {
  mkdir -p song_photo
  local i
  encode "${kTone[@]}" -c:a libmp3lame -metadata title=Title song_photo/tone.mp3
  encode "${kTone[@]}" -c:a flac song_photo/tone.flac
  encode "${kTone[@]}" -c:a aac song_photo/tone.m4a
  encode "${kTone[@]}" -c:a wmav2 song_photo/tone.wma
  for i in wav aiff au ogg ac3 wv; do encode "${kTone[@]}" -ar 44100 "song_photo/tone.$i"; done
  for i in jpg png gif bmp tiff; do encode "${kPicture[@]}" -frames:v 1 "song_photo/picture.$i"; done
}

# Photos of different kinds, small enough for many rounds.
pictures() {
  mkdir -p picture
  local i
  for i in rgb24 rgba64be pal8 gray monob; do
    encode "${kPicture[@]}" -frames:v 1 -pix_fmt "$i" "picture/$i.png"
  done
  for i in yuvj420p yuvj444p; do
    encode "${kPicture[@]}" -frames:v 1 -pix_fmt "$i" "picture/$i.jpg"
  done
  for i in rgb24 rgba64le pal8 yuv420p; do
    encode "${kPicture[@]}" -frames:v 1 -pix_fmt "$i" "picture/$i.tiff"
  done
  for i in bgra bgr24 rgb565le pal8; do
    encode "${kPicture[@]}" -frames:v 1 -pix_fmt "$i" "picture/$i.bmp"
  done
  encode "${kPicture[@]}" -frames:v 1 -pix_fmt yuva420p picture/lossy.webp
  encode "${kPicture[@]}" -frames:v 1 -pix_fmt bgra -lossless 1 picture/lossless.webp
  encode "${kPicture[@]}" picture/animation.gif
}

# Photos with tags of every kind, as far as exiftool can write the format.
photo_tags() {
  mkdir -p photo_tags
  local i tags=(-Make=Canon "-Model=Canon EOS R5" "-DateTimeOriginal=2015:06:07 08:09:10"
    -OffsetTimeOriginal=+02:00 -ISO=400 -ExposureTime=1/250 -GPSLatitude=46.5 -GPSLatitudeRef=N
    -GPSLongitude=8 -GPSLongitudeRef=E -XMP-dc:Title=Title -XMP-dc:Subject=a -XMP-dc:Subject=b
    -XMP-xmp:Rating=4 -IPTC:Keywords=c "-RegionInfo={RegionList=[{Area={W=0.2,H=0.2,X=0.3,Y=0.4,Unit=normalized},Name=Ann,Type=Face}]}")
  for i in jpg png tiff gif avif jxl; do
    encode "${kPicture[@]}" -frames:v 1 "photo_tags/photo.$i"
    [ ! -e "photo_tags/photo.$i" ] ||
      exiftool -q -q -m -overwrite_original "${tags[@]}" "photo_tags/photo.$i" || true
  done
  mkdir -p xmp
  exiftool -q -q -b -XMP photo_tags/photo.jpg >xmp/elements || true
  exiftool -q -q -api Compact=Shorthand -tagsFromFile photo_tags/photo.jpg -XMP:all \
    xmp/attributes.xmp || true
  # Only the tags of each, which are what is worth changing.
  exiftool -q -q -b -Exif photo_tags/photo.jpg >photo_tags/exif.tiff || true
  { bytes ffd8ffe1; printf '%b' "$(printf '\\x%02x\\x%02x' $((($(stat -c %s photo_tags/exif.tiff) + 8) / 256)) $((($(stat -c %s photo_tags/exif.tiff) + 8) % 256)))"
    printf Exif; zeros 2; cat photo_tags/exif.tiff; bytes ffd9; } >photo_tags/exif.jpg
}

boxes() {
  mkdir -p mp4_boxes
  local brand
  for brand in 'qt  ' isom mp42 M4V\  3gp4 avc1 M4A\  XAVC; do
    { bytes 00000018; printf 'ftyp%s' "$brand"; bytes 00000000; printf isommp42
      bytes 00000010; printf free; zeros 8
      bytes 00000001; printf mdat; bytes 0000000000000018; zeros 8
      bytes 00000010; printf moov; zeros 8; } >"mp4_boxes/${brand// /_}"
  done
  { bytes 00000018; printf 'ftypisom'; zeros 12; bytes 00000010; printf moov; zeros 8
    bytes 00000020; printf mdat; zeros 24; } >mp4_boxes/moov-first
}

packets() {
  mkdir -p ts_packets
  local i
  for i in 1 2 3 4; do bytes 47; zeros 187; done >ts_packets/188
  for i in 1 2 3; do bytes 0000000047; zeros 187; done >ts_packets/192
  for i in 1 2 3; do bytes 0102030447; zeros 187; done >ts_packets/192-stamped
}

# The first packets of VP9 streams, which IVF files keep behind headers of 32 and 12 bytes.
vp9() {
  mkdir -p vp9
  local format
  for format in yuv420p yuv422p gbrp yuv420p10le yuv444p12le; do
    encode "${kPicture[@]}" -frames:v 1 -c:v libvpx-vp9 -pix_fmt "$format" -aq-mode 3 "vp9/$format.ivf"
    [ -e "vp9/$format.ivf" ] || continue
    tail -c +45 "vp9/$format.ivf" >"vp9/$format"
    rm "vp9/$format.ivf"
  done
}

# A DSF and a DFF file of one block of silence, each with an ID3v2.4 tag.
dsd() {
  mkdir -p dsd
  local tag=dsd/tag
  { printf 'ID3'; bytes 04000000000018; printf TIT2; bytes 000000060000 03; printf 'Title'
    printf TPE1; zeros 0; } >"$tag"
  { printf 'DSD '; bytes 1c00000000000000 5c20000000000000 5c20000000000000
    printf 'fmt '; bytes 3400000000000000 01000000 00000000 02000000 02000000 00112b00 01000000
    bytes 0080000000000000 00100000 00000000
    printf data; bytes 0c20000000000000; zeros 8192; cat "$tag"; } >dsd/song.dsf
  { printf FRM8; bytes 0000000000000088; printf 'DSD FVER'; bytes 0000000000000004 01050000
    printf PROP; bytes 0000000000000034; printf 'SND FS  '; bytes 0000000000000004 002b1100
    printf CHNL; bytes 0000000000000002 0002; printf 'CMPR'; bytes 0000000000000004; printf 'DSD '
    printf 'DSD '; bytes 0000000000000010; zeros 16
    printf 'ID3 '; bytes 0000000000000022; cat "$tag"; } >dsd/song.dff
  cp dsd/song.dsf dsd/song.dff song_photo/
  rm "$tag"
}

# Songs of all kinds with tags and covers. frames FRAME CONTENT... prints frames of ID3v2.3.
frames() {
  while [ $# -ge 2 ]; do
    printf '%s' "$1"; bytes "$(printf %08x "$(printf "$2" | wc -c)")" 0000; printf "$2"
    shift 2
  done
}

song_tags() {
  mkdir -p song_tags
  local i tags=(-metadata title=Title -metadata artist=One -metadata album=Album -metadata track=3/12
    -metadata date=1999-12-31 -metadata genre=Rock -metadata comment=Comment
    -metadata replaygain_track_gain='-7.5 dB' -metadata CHAPTER001=00:00:01.000
    -metadata CHAPTER001NAME=One)
  for i in mp3 flac ogg opus m4a wma wv wav aiff spx mka; do
    encode "${kTone[@]}" "${tags[@]}" -ar 48000 "song_tags/tags.$i"
  done
  encode "${kTone[@]}" "${tags[@]}" -c:a flac -f ogg song_tags/flac.ogg
  encode "${kTone[@]}" "${tags[@]}" -write_id3v2 1 song_tags/id3.aiff
  for i in media_info/cover.* song_photo/song.*; do [ ! -e "$i" ] || cp "$i" song_tags/; done
  frames TXXX '\0BARCODE\000123' UFID 'http://musicbrainz.org\0id' COMM '\0eng\0text' \
    USLT '\0eng\0text' POPM 'a\0\377' RVA2 'track\0\1\1\0\20\200\0' IPLS '\0producer\0Name' \
    TCON '\0(17)(31)Other' TYER '\0001999' TDAT '\0003112' TIME '\0002359' \
    APIC '\0image/png\0\3\0\211PNG' CHAP 'c\0\0\0\0\0\0\0\1\0zzzzzzzzTIT2\0\0\0\2\0\0\0a' \
    >song_tags/frames
  { printf 'ID3'; bytes 030000 0000; i=$(stat -c %s song_tags/frames)
    bytes "$(printf %02x%02x $((i >> 7)) $((i & 127)))"; cat song_tags/frames; } >song_tags/frames.mp3
  { printf APETAGEX; bytes d0070000 56000000 02000000 00000000 0000000000000000
    bytes 04000000 00000000; printf 'Track'; bytes 00; printf '3/12'
    bytes 0a000000 02000000; printf 'Cover Art (Front)'; bytes 00; printf 'a.png'; bytes 00 89504e47
    printf APETAGEX; bytes d0070000 56000000 02000000 00000000 0000000000000000
    printf TAG; zeros 90; printf 1999; zeros 28; bytes 000311; } >song_tags/ape
}

# An index file with two program chains, the second one hour long.
dvd() {
  mkdir -p dvd
  { printf 'DVDVIDEO-VTS'; zeros 192; bytes 00000001; zeros 1840
    bytes 0002 0000 00000037 81000000 00000018 82000000 00000028
    bytes 00000000 00000100; zeros 8; bytes 00000000 01000040; zeros 2000; } >dvd/index
}

# The same and a playlist, each after the number of its name.
disc_index() {
  mkdir -p disc_index
  { bytes 01; cat dvd/index; } >disc_index/title_set
  { bytes 00; printf 'DVDVIDEO-VMG'; zeros 184; bytes 00000001; zeros 1848
    bytes 0002 0000 0000001f 000100050000 0101 00000000 000100010000 0201 00000000; } >disc_index/titles
  { bytes 02; printf MPLS0200; bytes 00000028 00000084; zeros 24
    bytes 00000058 0000 0001 0000 0050; printf 00001M2TS; bytes 0001 00 019bfcc0 01a2da80; zeros 12
    bytes 002e 0000 01 01 00 0000000000 00000000 09 01 1100000000000000 05 1b61000000
    bytes 09 01 1100000000000000 05 8161; printf eng
    bytes 00000010 0001 ff01 0000 019bfcc0 ffff 00000000; } >disc_index/playlist
}

# text NAME TEXT: makes a seed of TEXT (with backslash escapes as in printf) for the fuzzer NAME.
text() {
  mkdir -p "$1"
  printf "%b" "$2" >"$1/$(printf '%s' "$2" | sha1sum | cut -c1-12)"
}

texts() {
  local i
  for i in 2015-06-07T08:09:10.000000Z '2015:06:07 08:09:10' 20150607 07/06/2015 2015/06/07 \
    2015-06-07T08:09:10+0200; do text datetime "$i"; done
  for i in a.mp4 b.JPG c.mp3 d.dsf index.bdmv VIDEO_TS.IFO e.tar.iso cover.jpg .mkv x.m2ts y.heic
  do text filename "\\017$i"; done
  for i in MPEG-4 'MPEG-4\0isom' H.264 AAC DIVX_XVID MKV PROFILE_H264 UNKNOWN; do
    text identifiers "$i"
  done
  for i in "a b'c" 'The Artist / Album' 'UNKNOWN' '\xc3\x89tude "x"'; do text host_names "$i"; done
  text config '[KOLUMSERVER]\nENABLE = TRUE\nMODE = 2\nDAILYBUILD_HH=0x10\nMC_VERSION="1 ; x"\n[THUMBNAIL]\nMIN_WIDTH=50\nPHOTO_BLACKLIST=a:b::c:\n[PelmoCore]\nDeviceType=1\n'
  text config '[THUMBNAIL]\nthumbnail:quality = 3 # x\nVIDEO_BLACKLIST = "a;b" \\\\\n  c\n'
  text setcfg '[S]\nkey = "old" ; why\n[T]\nkey=x\n'
  text xml '<?xml version="1.0"?><ID3TAG><TITLE>a &amp; b</TITLE><YEAR>1999</YEAR><DURATION>12</DURATION><CHANNEL>2</CHANNEL><FREQUENCY>2822400</FREQUENCY></ID3TAG>'
  local place='<output><reversegeocode language="en"><result osm_type="way" osm_id="7">Paris</result><addressparts><city>Paris</city><country>France</country></addressparts></reversegeocode></output>'
  text xml "$place"
  text osm_answer "$place"
  text osm_answer '<error>no place</error>'
  text answer '\001\0\0\0\0\0\0\0\004\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0text\0'
  text answer '\002\0\0\0\0\0\0\0\0377\0377\0377\0377\0377\0377\0377\0377'
  mkdir -p dlna
  for i in 1 2 3 4 5 6 7; do
    bytes "0${i}000000" "0${i}000000" d0020000 40020000 00093d00 00093d00 64000000 28000000 03000000 \
      19000000 01000000 905f0100 >"dlna/$i"
  done
}

videos
details
stream_headers
covers
songs_and_photos
pictures
photo_tags
boxes
packets
vp9
dsd
song_tags
dvd
disc_index
texts
touch .complete
