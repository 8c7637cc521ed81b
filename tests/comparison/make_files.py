#!/usr/bin/env python3
"""Makes the files on which the suite compares `kolum probe` with other readers.

    make_files.py FOLDER

FOLDER gets one file of each kind in FILES, with every tag that a document knows and that the kind
can hold. FFmpeg, ExifTool and Mutagen write them; what those cannot write (a camera's raw file, a
HEIC picture, the boxes of phones) is put together here, byte by byte.
"""

import json
import os
import struct
import subprocess
import sys

from mutagen import flac, id3, mp4

FILES = ("film.mp4", "film.mkv", "phone.mov", "song.flac", "song.mp3", "photo.jpg", "photo.nef",
         "photo.heic")

TAKEN = "2021:08:14 17:03:21"
IDS = {name: f"{digit * 8}-aaaa-4bbb-8ccc-00000000000{digit}" for name, digit in
       zip(("track", "recording", "release", "group", "work", "artist", "albumArtist", "acoust"),
           "12345678")}


def run(*command):
    """The program's output; with its messages in the exception if it fails."""
    done = subprocess.run(command, capture_output=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]}: {done.stderr.decode(errors='replace')}")
    return done.stdout


def ffmpeg(*arguments):
    run("ffmpeg", "-nostdin", "-v", "error", "-y", "-bitexact", *arguments)


def exiftool(path, *tags):
    """Writes TAGS, and complains about those that a file of this kind does not have."""
    run("exiftool", "-config", "", "-q", "-m", "-overwrite_original", *tags, path)


def box(kind, content):
    return struct.pack(">I4s", len(content) + 8, kind) + content


def full_box(kind, version, flags, content):
    return box(kind, struct.pack(">I", version << 24 | flags) + content)


def box_at(data, position):
    """Type, begin of the content and end of the box at POSITION."""
    size, kind = struct.unpack_from(">I4s", data, position)
    return kind, position + 8, position + size


def find_box(data, *path):
    """The (begin of the box, of its content, end) of the first box on PATH."""
    begin, end = 0, len(data)
    found = None
    for wanted in path:
        while begin < end:
            kind, content, box_end = box_at(data, begin)
            if kind == wanted:
                break
            begin = box_end
        else:
            raise RuntimeError(f"no box {wanted}")
        found = (begin, content, box_end)
        begin, end = content, box_end
    return found


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def cover(folder, name, size="64x48", colour="red"):
    path = os.path.join(folder, name)
    ffmpeg("-f", "lavfi", "-i", f"color={colour}:s={size}", "-frames:v", "1", path)
    return path


# --- Videos

SUBTITLES = "1\n00:00:00,000 --> 00:00:01,000\n{}\n\n2\n00:00:01,200 --> 00:00:01,900\n{}\n"


def subtitles(folder, language, text):
    path = os.path.join(folder, f"{language}.srt")
    write(path, SUBTITLES.format(text, text).encode())
    return path


def colours(primaries, transfer, matrix):
    """Older releases of FFmpeg take them from the options, newer ones from the pictures."""
    return ("-vf", f"setparams=color_primaries={primaries}:color_trc={transfer}:"
            f"colorspace={matrix}:range=tv",
            "-color_primaries", primaries, "-color_trc", transfer, "-colorspace", matrix,
            "-color_range", "tv")


CHAPTERS = """;FFMETADATA1
[CHAPTER]
TIMEBASE=1/1000
START=0
END=1000
title=The beginning
[CHAPTER]
TIMEBASE=1/1000
START=1000
END=2000
title=The end
"""


def chapters(folder):
    path = os.path.join(folder, "chapters.txt")
    write(path, CHAPTERS.encode())
    return path


def make_film_mp4(folder, work, path):
    """A film of two languages with a cover that is larger than its picture."""
    video = ("testsrc2=s=320x180:r=24000/1001:d=2", "sine=frequency=440:duration=2")
    ffmpeg("-f", "lavfi", "-i", video[0], "-f", "lavfi", "-i", video[1],
           "-f", "lavfi", "-i", "sine=frequency=880:duration=2", "-i",
           subtitles(work, "fre", "Bonjour"), "-i", chapters(work),
           "-map", "0:v", "-map", "1:a", "-map", "2:a", "-map", "3:s", "-map_metadata", "4",
           "-c:v", "libx264", "-profile:v", "high", "-level", "3.0", "-pix_fmt", "yuv420p",
           *colours("bt709", "bt709", "bt709"), "-aspect", "16:9", "-g", "24",
           "-c:a", "aac", "-ar", "48000", "-b:a", "96k", "-ac:a:0", "2", "-ac:a:1", "1",
           "-c:s", "mov_text",
           "-metadata", "creation_time=2021-08-14T15:03:21Z",
           "-metadata:s:a:0", "language=eng", "-metadata:s:a:1", "language=ger",
           "-metadata:s:s:0", "language=fre", "-metadata:s:v:0", "handler_name=The picture",
           "-metadata:s:a:0", "title=Stereo", "-metadata:s:a:1", "title=Commentary",
           "-disposition:a:0", "default", "-disposition:a:1", "0", path)
    song = mp4.MP4(path)
    song.update({
        "\xa9nam": ["Harbour at dawn"], "\xa9ART": ["Ada Example"], "\xa9day": ["2020-03-04"],
        "\xa9gen": ["Documentary"], "desc": ["Ships leave a harbour."],
        "ldes": ["Ships leave a harbour while the sun comes up."], "\xa9cmt": ["Filmed twice"],
        "cprt": ["2020 Example Films"], "tvsh": ["Harbours"], "tvsn": [2], "tves": [5],
        "tven": ["S02E05"], "tvnn": ["Example TV"], "\xa9too": ["Example Encoder 1.0"],
        "stik": [10],
        "covr": [mp4.MP4Cover(read(cover(work, "large.jpg", "640x480")),
                              mp4.MP4Cover.FORMAT_JPEG)],
    })
    song.save()


def make_film_mkv(folder, work, path):
    """HDR10, three languages of sound and of subtitles, a font and a cover."""
    font = os.path.join(work, "Sans.ttf")
    write(font, b"\0\1\0\0" + bytes(60))
    light = ("colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:range=limited:hdr10=1:"
             "master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)"
             "L(10000000,50):max-cll=1000,400:repeat-headers=1:log-level=none")
    inputs = ["-f", "lavfi", "-i", "testsrc2=s=320x180:r=24:d=2"]
    maps = ["-map", "0:v"]
    for i, language in enumerate(("eng", "ger", "jpn")):
        inputs += ["-f", "lavfi", "-i", f"sine=frequency={220 * (i + 1)}:duration=2"]
        maps += ["-map", f"{i + 1}:a"]
    for i, language in enumerate(("eng", "ger", "fre")):
        inputs += ["-i", subtitles(work, language, f"Text {i}")]
        maps += ["-map", f"{i + 4}:s"]
    ffmpeg(*inputs, "-i", chapters(work), *maps, "-map_metadata", "7",
           "-c:v", "libx265", "-pix_fmt", "yuv420p10le", "-x265-params", light,
           *colours("bt2020", "smpte2084", "bt2020nc"),
           "-c:a:0", "ac3", "-b:a:0", "192k", "-ac:a:0", "6", "-c:a:1", "flac", "-c:a:2", "aac",
           "-ar:a", "48000", "-c:s", "srt",
           "-metadata", "title=Harbour in colour", "-metadata", "artist=Ada Example",
           "-metadata", "date_released=2020-03-04", "-metadata", "genre=Documentary",
           "-metadata", "description=Ships leave a harbour.", "-metadata", "comment=Graded twice",
           "-metadata", "copyright=2020 Example Films", "-metadata", "director=Bea Example",
           "-metadata", "synopsis=Ships leave a harbour while the sun comes up.",
           "-metadata", "creation_time=2021-08-14T15:03:21Z",
           "-metadata:s:v:0", "title=Main picture", "-metadata:s:v:0", "language=und",
           "-metadata:s:a:0", "language=eng", "-metadata:s:a:0", "title=Surround",
           "-metadata:s:a:1", "language=ger", "-metadata:s:a:1", "title=Deutsch",
           "-metadata:s:a:2", "language=jpn", "-metadata:s:a:2", "title=Commentary",
           "-metadata:s:s:0", "language=eng", "-metadata:s:s:0", "title=Full",
           "-metadata:s:s:1", "language=ger", "-metadata:s:s:1", "title=Forced",
           "-metadata:s:s:2", "language=fre", "-metadata:s:s:2", "title=For the deaf",
           "-disposition:v:0", "default", "-disposition:a:0", "default", "-disposition:a:1", "0",
           "-disposition:a:2", "comment", "-disposition:s:0", "0", "-disposition:s:1", "forced",
           "-disposition:s:2", "hearing_impaired",
           "-attach", font, "-metadata:s:t:0", "mimetype=font/ttf",
           "-attach", cover(work, "cover.jpg"), "-metadata:s:t:1", "mimetype=image/jpeg",
           "-metadata:s:t:1", "filename=cover.jpg", path)


# The keys of QuickTime's metadata that phones write.
PHONE_KEYS = (
    ("com.apple.quicktime.make", "Example"),
    ("com.apple.quicktime.model", "Phone 12"),
    ("com.apple.quicktime.software", "14.7.1"),
    ("com.apple.quicktime.creationdate", "2021-08-14T17:03:21+0200"),
    ("com.apple.quicktime.location.ISO6709", "+54.3233+010.1228+012.500/"),
    ("com.apple.quicktime.content.identifier", "6B29FC40-CA47-1067-B31D-00DD010662DA"),
    ("com.apple.quicktime.title", "Harbour by phone"),
    ("com.apple.quicktime.description", "Ships, filmed by phone"),
)


def phone_metadata():
    """A meta box as phones write it: names, and values that refer to them by number."""
    keys = b"".join(box(b"mdta", name.encode()) for name, _ in PHONE_KEYS)
    values = b"".join(
        box(struct.pack(">I", i + 1), box(b"data", struct.pack(">II", 1, 0) + value.encode()))
        for i, (_, value) in enumerate(PHONE_KEYS))
    handler = full_box(b"hdlr", 0, 0, bytes(4) + b"mdta" + bytes(14))
    return box(b"meta", handler + full_box(b"keys", 0, 0, struct.pack(">I", len(PHONE_KEYS)) + keys)
               + box(b"ilst", values))


def make_phone_mov(folder, work, path):
    """A phone's video: upright by a matrix, with place, camera and the zone of its date."""
    plain = os.path.join(work, "plain.mov")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=s=320x180:r=30:d=2", "-f", "lavfi", "-i",
           "sine=frequency=440:duration=2", "-c:v", "libx265", "-tag:v", "hvc1",
           "-pix_fmt", "yuv420p", "-x265-params", "log-level=none",
           *colours("bt709", "bt709", "bt709"), "-c:a", "aac", "-ar", "44100", "-ac", "1",
           "-metadata", "creation_time=2021-08-14T15:03:21Z", plain)
    data = bytearray(read(plain))
    _, header, _ = find_box(data, b"moov", b"trak", b"tkhd")
    one = 0x10000
    # Turned clockwise by 90 degrees.
    struct.pack_into(">9i", data, header + 40, 0, one, 0, -one, 0, 0, 180 * one, 0, 0x40000000)
    # The index is at the end of the file, and nothing behind it moves.
    begin, _, end = find_box(data, b"moov")
    assert end == len(data)
    data += phone_metadata()
    struct.pack_into(">I", data, begin, len(data) - begin)
    write(path, data)


# --- Songs

SONG = {
    "TITLE": ["Tide"], "ALBUM": ["Harbour songs"], "ARTIST": ["Ada Example", "Bea Example"],
    "ALBUMARTIST": ["The Examples"], "COMPOSER": ["Cid Example"], "CONDUCTOR": ["Dan Example"],
    "LYRICIST": ["Eve Example"], "GENRE": ["Folk", "Jazz"], "TITLESORT": ["Tide, The"],
    "ALBUMSORT": ["Songs, Harbour"], "ARTISTSORT": ["Example, Ada"],
    "ALBUMARTISTSORT": ["Examples, The"], "COMPOSERSORT": ["Example, Cid"],
    "DATE": ["2019-11-30"], "ORIGINALDATE": ["2018-02-01"], "COMMENT": ["Recorded twice"],
    "LANGUAGE": ["eng"], "MUSICBRAINZ_TRACKID": [IDS["recording"]],
    "MUSICBRAINZ_RELEASETRACKID": [IDS["track"]], "MUSICBRAINZ_ALBUMID": [IDS["release"]],
    "MUSICBRAINZ_RELEASEGROUPID": [IDS["group"]], "MUSICBRAINZ_WORKID": [IDS["work"]],
    "MUSICBRAINZ_ARTISTID": [IDS["artist"]], "MUSICBRAINZ_ALBUMARTISTID": [IDS["albumArtist"]],
    "ACOUSTID_ID": [IDS["acoust"]], "ISRC": ["USRC17607839"], "LABEL": ["Example Records"],
    "CATALOGNUMBER": ["EX-1"], "BARCODE": ["0123456789012"], "COPYRIGHT": ["2019 Example Records"],
    "ENCODER": ["Example Encoder 1.0"], "ENCODEDBY": ["Fay Example"], "BPM": ["120"],
    "KEY": ["Am"], "MOOD": ["Calm"], "COMPILATION": ["1"],
    "REPLAYGAIN_TRACK_GAIN": ["-7.50 dB"], "REPLAYGAIN_TRACK_PEAK": ["0.987654"],
    "REPLAYGAIN_ALBUM_GAIN": ["-6.25 dB"], "REPLAYGAIN_ALBUM_PEAK": ["0.999999"],
}
LYRICS = "High tide\nlow tide"


def make_song_flac(folder, work, path):
    ffmpeg("-f", "lavfi", "-i", "sine=frequency=440:duration=2:sample_rate=96000", "-ac", "2",
           "-c:a", "flac", "-sample_fmt", "s32", "-bits_per_raw_sample", "24", path)
    song = flac.FLAC(path)
    song.delete()
    song.update(dict(SONG, LYRICS=[LYRICS], TRACKNUMBER=["3"], TRACKTOTAL=["12"],
                     DISCNUMBER=["1"], DISCTOTAL=["2"], PERFORMER=["Gus Example (drums)"]))
    picture = flac.Picture()
    picture.data, picture.type, picture.mime = read(cover(work, "front.jpg")), 3, "image/jpeg"
    picture.width, picture.height, picture.depth, picture.desc = 64, 48, 24, "Front"
    song.add_picture(picture)
    song.save()


ID3_TEXTS = {
    "TITLE": "TIT2", "ALBUM": "TALB", "ARTIST": "TPE1", "ALBUMARTIST": "TPE2", "COMPOSER": "TCOM",
    "CONDUCTOR": "TPE3", "LYRICIST": "TEXT", "GENRE": "TCON", "TITLESORT": "TSOT",
    "ALBUMSORT": "TSOA", "ARTISTSORT": "TSOP", "ALBUMARTISTSORT": "TSO2", "COMPOSERSORT": "TSOC",
    "DATE": "TDRC", "ORIGINALDATE": "TDOR", "LANGUAGE": "TLAN", "ISRC": "TSRC", "LABEL": "TPUB",
    "COPYRIGHT": "TCOP", "ENCODER": "TSSE", "ENCODEDBY": "TENC", "BPM": "TBPM", "KEY": "TKEY",
    "MOOD": "TMOO", "COMPILATION": "TCMP",
}
ID3_FREE_TEXTS = {
    "MUSICBRAINZ_RELEASETRACKID": "MusicBrainz Release Track Id",
    "MUSICBRAINZ_ALBUMID": "MusicBrainz Album Id",
    "MUSICBRAINZ_RELEASEGROUPID": "MusicBrainz Release Group Id",
    "MUSICBRAINZ_WORKID": "MusicBrainz Work Id", "MUSICBRAINZ_ARTISTID": "MusicBrainz Artist Id",
    "MUSICBRAINZ_ALBUMARTISTID": "MusicBrainz Album Artist Id", "ACOUSTID_ID": "Acoustid Id",
    "CATALOGNUMBER": "CATALOGNUMBER", "BARCODE": "BARCODE",
    "REPLAYGAIN_TRACK_GAIN": "REPLAYGAIN_TRACK_GAIN",
    "REPLAYGAIN_TRACK_PEAK": "REPLAYGAIN_TRACK_PEAK",
    "REPLAYGAIN_ALBUM_GAIN": "REPLAYGAIN_ALBUM_GAIN",
    "REPLAYGAIN_ALBUM_PEAK": "REPLAYGAIN_ALBUM_PEAK",
}
# What is left of the frames of ID3v2.4 (and the usual ones beside it): with a value each, so that
# no frame can be there without somebody having decided whether a document shows it.
ID3_OTHER_FRAMES = (
    id3.TIT1(3, ["Songs of the sea"]), id3.TIT3(3, ["Live"]), id3.TPE4(3, ["Hal Example"]),
    id3.TOAL(3, ["First harbour songs"]), id3.TOPE(3, ["Ida Example"]),
    id3.TOLY(3, ["Jon Example"]), id3.TOFN(3, ["tide.wav"]), id3.TOWN(3, ["Kim Example"]),
    id3.TSST(3, ["Side A"]), id3.TRSN(3, ["Radio Example"]), id3.TRSO(3, ["Lea Example"]),
    id3.TDRL(3, ["2019-12-01"]), id3.TDEN(3, ["2019-12-02T03:04:05"]),
    id3.TDTG(3, ["2019-12-03T04:05:06"]), id3.TDLY(3, ["0"]), id3.TLEN(3, ["2000"]),
    id3.TFLT(3, ["MPG/3"]), id3.TMED(3, ["DIG"]), id3.TPRO(3, ["2019 Example Records"]),
    id3.TMCL(3, [["drums", "Gus Example"]]), id3.TIPL(3, [["producer", "Max Example"]]),
    id3.MVNM(3, ["First movement"]), id3.MVIN(3, ["1/4"]), id3.GRP1(3, ["A group"]),
    id3.WCOM("http://example.org/buy"), id3.WCOP("http://example.org/copyright"),
    id3.WOAF("http://example.org/file"), id3.WOAR("http://example.org/artist"),
    id3.WOAS("http://example.org/source"), id3.WORS("http://example.org/radio"),
    id3.WPAY("http://example.org/pay"), id3.WPUB("http://example.org/label"),
    id3.WXXX(3, "A page", "http://example.org/page"),
    id3.POPM("ada@example.org", 196, 12), id3.PCNT(12),
    id3.USER(3, "eng", "Free to play"), id3.OWNE(3, "EUR1", "20191130", "A shop"),
    id3.PRIV("example.org", b"\1\2"), id3.UFID("http://example.org", b"7"),
    id3.MCDI(b"+96"), id3.PCST(0),
    id3.SYLT(3, "eng", 2, 1, "Tide", [("High", 0), ("low", 1000)]),
    id3.ETCO(2, [(2, 0)]), id3.GEOB(3, "text/plain", "note.txt", "A note", b"note"),
    id3.RVA2("track", 1, -7.5, 0.98), id3.COMR(3, "EUR1", "20301231", "http://example.org", 1,
                                              "A shop", "Tide", "", b""),
    id3.TKWD(3, ["sea"]), id3.TCAT(3, ["Music"]), id3.TDES(3, ["A podcast"]),
    id3.TGID(3, ["http://example.org/1"]), id3.WFED("http://example.org/feed"),
)


def make_song_mp3(folder, work, path):
    ffmpeg("-f", "lavfi", "-i", "sine=frequency=440:duration=2:sample_rate=44100", "-ac", "2",
           "-c:a", "libmp3lame", "-b:a", "128k", path)
    tags = id3.ID3()
    for name, texts in SONG.items():
        if name in ID3_TEXTS:
            tags.add(getattr(id3, ID3_TEXTS[name])(3, texts))
        elif name in ID3_FREE_TEXTS:
            tags.add(id3.TXXX(3, ID3_FREE_TEXTS[name], texts))
    for frame in ID3_OTHER_FRAMES:
        tags.add(frame)
    tags.add(id3.TRCK(3, ["3/12"]))
    tags.add(id3.TPOS(3, ["1/2"]))
    tags.add(id3.COMM(3, "eng", "", SONG["COMMENT"]))
    tags.add(id3.USLT(3, "eng", "", LYRICS))
    tags.add(id3.UFID("http://musicbrainz.org", IDS["recording"].encode()))
    tags.add(id3.APIC(3, "image/jpeg", 3, "Front", read(cover(work, "front.jpg"))))
    tags.add(id3.CTOC("toc", 3, ["one", "two"], [id3.TIT2(3, ["Contents"])]))
    last = 0xFFFFFFFF
    tags.add(id3.CHAP("one", 0, 1000, last, last, [id3.TIT2(3, ["The beginning"])]))
    tags.add(id3.CHAP("two", 1000, 2000, last, last, [id3.TIT2(3, ["The end"])]))
    tags.save(path, v1=0)


# --- Photos

CAMERA = (
    "-EXIF:Model=Camera 5", "-EXIF:Software=Firmware 1.2",
    f"-EXIF:DateTimeOriginal={TAKEN}", f"-EXIF:CreateDate={TAKEN}",
    "-EXIF:ModifyDate=2021:08:15 09:00:00", "-EXIF:OffsetTimeOriginal=+02:00",
    "-EXIF:OffsetTimeDigitized=+02:00", "-EXIF:OffsetTime=+02:00",
    "-EXIF:SubSecTimeOriginal=25", "-EXIF:SubSecTimeDigitized=25", "-EXIF:SubSecTime=50",
    "-EXIF:ExposureTime=1/250", "-EXIF:FNumber=5.6", "-EXIF:ISO=400",
    "-EXIF:ExposureCompensation=-0.3333", "-EXIF:ExposureProgram#=3", "-EXIF:MeteringMode#=5",
    "-EXIF:WhiteBalance#=1", "-EXIF:FocalLength=35", "-EXIF:FocalLengthIn35mmFormat=52",
    "-EXIF:Flash#=9", "-EXIF:LensMake=Example", "-EXIF:LensModel=35 mm f/1.8",
    "-EXIF:LensSerialNumber=L-77", "-EXIF:SerialNumber=C-42", "-EXIF:ColorSpace#=1",
    "-EXIF:Artist=Ada Example", "-EXIF:Copyright=2021 Ada Example",
    "-EXIF:ImageDescription=Ships leave a harbour.", "-EXIF:UserComment=Taken twice",
)
PLACE = (
    "-GPS:GPSLatitude=54.3233", "-GPS:GPSLatitudeRef=N", "-GPS:GPSLongitude=10.1228",
    "-GPS:GPSLongitudeRef=E", "-GPS:GPSAltitude=12.5", "-GPS:GPSAltitudeRef#=0",
    "-GPS:GPSImgDirection=123.5", "-GPS:GPSImgDirectionRef=T",
    "-GPS:GPSHPositioningError=4.5", "-GPS:GPSDateStamp=2021:08:14", "-GPS:GPSTimeStamp=15:03:21",
)
WORDS = (
    "-XMP-dc:Title=Harbour at dawn", "-XMP-photoshop:Headline=Ships leave",
    "-XMP-dc:Description=Ships leave a harbour.", "-XMP-dc:Subject=harbour", "-XMP-dc:Subject=dawn",
    "-XMP-lr:HierarchicalSubject=Places|Coast|Harbour", "-XMP-xmp:Rating=4",
    "-XMP-xmp:Label=Green", "-XMP-dc:Creator=Ada Example", "-XMP-dc:Rights=2021 Ada Example",
    "-XMP-photoshop:Credit=Example Press", "-XMP-iptcCore:Location=Old harbour",
    "-XMP-photoshop:City=Kiel", "-XMP-photoshop:State=Schleswig-Holstein",
    "-XMP-photoshop:Country=Germany", "-XMP-iptcCore:CountryCode=DE",
)
PEOPLE = ("-XMP-mwg-rs:RegionInfo={AppliedToDimensions={W=160,H=120,Unit=pixel},RegionList=[{Area="
          "{X=0.5,Y=0.4,W=0.2,H=0.3,Unit=normalized},Name=Bea Example,Type=Face}]}",)
IPTC = (
    "-IPTC:ObjectName=Harbour at dawn", "-IPTC:Headline=Ships leave",
    "-IPTC:Caption-Abstract=Ships leave a harbour.", "-IPTC:Keywords=harbour",
    "-IPTC:Keywords=dawn", "-IPTC:By-line=Ada Example", "-IPTC:CopyrightNotice=2021 Ada Example",
    "-IPTC:Credit=Example Press", "-IPTC:Sub-location=Old harbour", "-IPTC:City=Kiel",
    "-IPTC:Province-State=Schleswig-Holstein", "-IPTC:Country-PrimaryLocationName=Germany",
    "-IPTC:Country-PrimaryLocationCode=DEU", "-IPTC:CodedCharacterSet=UTF8",
)


def colour_profile(description):
    """A display's ICC profile, as small as a profile can be."""
    text = description.encode("utf-16-be")
    name = b"mluc" + bytes(4) + struct.pack(">II2s2sII", 1, 12, b"en", b"US", len(text), 28) + text
    white = b"XYZ " + bytes(4) + struct.pack(">3i", 0xF6D6, 0x10000, 0xD32D)
    tags = ((b"desc", name), (b"wtpt", white))
    at = 128 + 4 + 12 * len(tags)
    table, data = struct.pack(">I", len(tags)), b""
    for signature, content in tags:
        content += bytes(-len(content) % 4)
        table += struct.pack(">4sII", signature, at + len(data), len(content))
        data += content
    size = at + len(data)
    header = struct.pack(">I4sI4s4s4s6H4s4sI4s4sQI3i4s", size, b"exam", 0x04300000, b"mntr",
                         b"RGB ", b"XYZ ", 2020, 1, 2, 3, 4, 5, b"acsp", b"APPL", 0, b"EXAM",
                         b"CAM5", 0, 0, 0xF6D6, 0x10000, 0xD32D, b"exam")
    return header.ljust(128, b"\0") + table + data


def profile_file(work):
    path = os.path.join(work, "display.icc")
    write(path, colour_profile("Display of the suite"))
    return path


def make_photo_jpg(folder, work, path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=s=160x120", "-frames:v", "1", "-pix_fmt", "yuvj420p",
           path)
    exiftool(path, "-EXIF:Make=Example", "-EXIF:Orientation#=6", *CAMERA, *PLACE, *WORDS, *PEOPLE,
             *IPTC, f"-ICC_Profile<={profile_file(work)}")


def tiff_directory(entries, at, after=0):
    """A directory of (tag, type, values) at AT, with the values that do not fit behind it."""
    sizes = {1: ("B", 1), 2: ("s", 1), 3: ("H", 2), 4: ("I", 4)}
    table, data = struct.pack("<H", len(entries)), b""
    behind = at + 2 + 12 * len(entries) + 4
    for tag, kind, values in sorted(entries):
        letter, _ = sizes[kind]
        packed = values if kind == 2 else struct.pack(f"<{len(values)}{letter}", *values)
        table += struct.pack("<HHI", tag, kind, len(values))
        if len(packed) <= 4:
            table += packed.ljust(4, b"\0")
        else:
            table += struct.pack("<I", behind + len(data))
            data += packed + bytes(len(packed) % 2)
    return table + struct.pack("<I", after) + data


def make_photo_nef(folder, work, path):
    """A raw file as a camera writes it: the thumbnail first, the sensor's picture in a
    subdirectory. Its sensor is empty."""
    preview = read(cover(work, "preview.jpg", "160x120", "blue"))
    thumbnail = bytes(16 * 12 * 3)
    sensor_width, sensor_height = 64, 48
    sensor = bytes(sensor_width * sensor_height * 2)
    sizes = lambda width, height: [(0x100, 4, [width]), (0x101, 4, [height])]

    def file_with(at):
        main = [(0xFE, 4, [1]), *sizes(16, 12), (0x102, 3, [8, 8, 8]), (0x103, 3, [1]),
                (0x106, 3, [2]), (0x10F, 2, b"NIKON CORPORATION\0"), (0x110, 2, b"NIKON D1\0"),
                (0x111, 4, [at["thumbnail"]]), (0x112, 3, [8]), (0x115, 3, [3]),
                (0x116, 4, [12]), (0x117, 4, [len(thumbnail)]), (0x11C, 3, [1]),
                (0x14A, 4, [at["preview directory"], at["sensor directory"]])]
        of_preview = [(0xFE, 4, [1]), (0x103, 3, [6]), (0x201, 4, [at["preview"]]),
                      (0x202, 4, [len(preview)])]
        of_sensor = [(0xFE, 4, [0]), *sizes(sensor_width, sensor_height), (0x102, 3, [16]),
                     (0x103, 3, [1]), (0x106, 3, [32803]), (0x111, 4, [at["sensor"]]),
                     (0x115, 3, [1]), (0x116, 4, [sensor_height]), (0x117, 4, [len(sensor)]),
                     (0x11C, 3, [1]), (0x828D, 3, [2, 2]), (0x828E, 1, [0, 1, 1, 2])]
        data = bytearray(b"II*\0" + struct.pack("<I", 8))
        places = {}
        for name, content in (("main", main), ("preview directory", of_preview),
                              ("sensor directory", of_sensor), ("thumbnail", thumbnail),
                              ("preview", preview), ("sensor", sensor)):
            data += bytes(-len(data) % 2)
            places[name] = len(data)
            data += tiff_directory(content, len(data)) if isinstance(content, list) else content
        return places, bytes(data)

    names = ("preview directory", "sensor directory", "thumbnail", "preview", "sensor")
    places, _ = file_with(dict.fromkeys(names, 0))
    write(path, file_with(places)[1])
    exiftool(path, *CAMERA[1:], *PLACE, *WORDS)


def make_photo_heic(folder, work, path):
    """A picture of HEVC, turned by its container, with a colour profile there."""
    movie = os.path.join(work, "still.mp4")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=s=192x128", "-frames:v", "1", "-pix_fmt", "yuv420p",
           "-c:v", "libx265", "-x265-params", "log-level=none", "-tag:v", "hvc1", movie)
    data = read(movie)
    _, content, end = find_box(data, b"mdat")
    picture = data[content:end]
    _, content, _ = find_box(data, b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd")
    entry = content + 8  # version, flags and count are in front of it
    at = data.index(b"hvcC", entry) - 4
    _, _, end = box_at(data, at)
    properties = (
        data[at:end],
        full_box(b"ispe", 0, 0, struct.pack(">II", 192, 128)),
        full_box(b"pixi", 0, 0, b"\3\x08\x08\x08"),
        box(b"colr", b"prof" + colour_profile("Display of the suite")),
        box(b"irot", b"\3"),  # anticlockwise, in quarters
    )
    order = bytes([len(properties), 0x81, 2, 3, 4, 0x85])
    items = full_box(b"iinf", 0, 0, struct.pack(">H", 1) +
                     full_box(b"infe", 2, 0, struct.pack(">HH4sB", 1, 0, b"hvc1", 0)))

    def header(picture_at):
        return box(b"ftyp", b"heic" + bytes(4) + b"mif1heic") + full_box(
            b"meta", 0, 0,
            full_box(b"hdlr", 0, 0, bytes(4) + b"pict" + bytes(13)) +
            full_box(b"pitm", 0, 0, struct.pack(">H", 1)) +
            full_box(b"iloc", 1, 0, struct.pack(">HHHHHHII", 0x4400, 1, 1, 0, 0, 1, picture_at,
                                                len(picture))) +
            items + box(b"iprp", box(b"ipco", b"".join(properties)) +
                        full_box(b"ipma", 0, 0, struct.pack(">IH", 1, 1) + order)))

    write(path, header(len(header(0)) + 8) + box(b"mdat", picture))
    exiftool(path, "-EXIF:Make=Example", *CAMERA, *PLACE, *WORDS)


def make(folder):
    work = os.path.join(folder, "parts")
    os.makedirs(work, exist_ok=True)
    for name in FILES:
        path = os.path.join(folder, name)
        globals()["make_" + name.replace(".", "_")](folder, work, path)
        os.utime(path, (1628953401, 1628953401))


if __name__ == "__main__":
    make(sys.argv[1])
