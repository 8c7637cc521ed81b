#!/usr/bin/env python3
"""Writes tags into songs and reads them, with Mutagen.

    song_tags.py write COVER FILE...   puts every tag that the file's format has into it
    song_tags.py read FILE             prints what it finds, under the names of media::SongTags

Its name's extension says what a file is; "name.v23.mp3" gets ID3v2.3.
"""

import base64
import json
import struct
import sys

from mutagen import aiff, apev2, asf, flac, id3, mp3, mp4, oggopus, oggvorbis, wave

TRACK_ID = "11111111-aaaa-4bbb-8ccc-000000000001"
RECORDING_ID = "22222222-aaaa-4bbb-8ccc-000000000002"
RELEASE_ID = "33333333-aaaa-4bbb-8ccc-000000000003"
GROUP_ID = "44444444-aaaa-4bbb-8ccc-000000000004"
WORK_ID = "55555555-aaaa-4bbb-8ccc-000000000005"
ARTIST_IDS = ["66666666-aaaa-4bbb-8ccc-000000000006", "77777777-aaaa-4bbb-8ccc-000000000007"]
ALBUM_ARTIST_IDS = ["88888888-aaaa-4bbb-8ccc-000000000008"]
ACOUST_ID = "99999999-aaaa-4bbb-8ccc-000000000009"

# The names of Vorbis comments, which APE and free texts elsewhere use, too.
NAMED = {
    "TITLE": ["Tïtle \u4e16\u754c \U0001F3B5"],
    "ALBUM": ["The Album"],
    "ARTIST": ["First Artist", "Second Artist"],
    "ALBUMARTIST": ["Album Artist"],
    "COMPOSER": ["Composer A", "Composer B"],
    "CONDUCTOR": ["The Conductor"],
    "LYRICIST": ["The Lyricist"],
    "GENRE": ["Rock", "Jazz"],
    "TITLESORT": ["Title, The"],
    "ALBUMSORT": ["Album, The"],
    "ARTISTSORT": ["Artist, First"],
    "ALBUMARTISTSORT": ["Artist, Album"],
    "COMPOSERSORT": ["A, Composer"],
    "DATE": ["1999-12-31"],
    "ORIGINALDATE": ["1998-02"],
    "COMMENT": ["A comment\nof two lines"],
    "LANGUAGE": ["eng"],
    "MUSICBRAINZ_TRACKID": [RECORDING_ID],
    "MUSICBRAINZ_RELEASETRACKID": [TRACK_ID],
    "MUSICBRAINZ_ALBUMID": [RELEASE_ID],
    "MUSICBRAINZ_RELEASEGROUPID": [GROUP_ID],
    "MUSICBRAINZ_WORKID": [WORK_ID],
    "MUSICBRAINZ_ARTISTID": ARTIST_IDS,
    "MUSICBRAINZ_ALBUMARTISTID": ALBUM_ARTIST_IDS,
    "ACOUSTID_ID": [ACOUST_ID],
    "ISRC": ["USRC17607839"],
    "LABEL": ["The Label"],
    "CATALOGNUMBER": ["CAT-1", "CAT-2"],
    "BARCODE": ["0123456789012"],
    "COPYRIGHT": ["1999 The Label"],
    "ENCODER": ["An Encoder"],
    "ENCODEDBY": ["Somebody"],
    "BPM": ["120"],
    "KEY": ["Am"],
    "MOOD": ["Calm"],
    "COMPILATION": ["1"],
    "REPLAYGAIN_TRACK_GAIN": ["-7.50 dB"],
    "REPLAYGAIN_TRACK_PEAK": ["0.987654"],
    "REPLAYGAIN_ALBUM_GAIN": ["+1.25 dB"],
    "REPLAYGAIN_ALBUM_PEAK": ["1.000000"],
}
LYRICS = "La la la"

# Field of media::SongTags: name above, and whether the field is a list.
FIELDS = {
    "title": ("TITLE", False), "album": ("ALBUM", False), "artists": ("ARTIST", True),
    "albumArtists": ("ALBUMARTIST", True), "composers": ("COMPOSER", True),
    "conductors": ("CONDUCTOR", True), "lyricists": ("LYRICIST", True), "genres": ("GENRE", True),
    "titleSort": ("TITLESORT", False), "albumSort": ("ALBUMSORT", False),
    "artistSorts": ("ARTISTSORT", True), "albumArtistSorts": ("ALBUMARTISTSORT", True),
    "composerSorts": ("COMPOSERSORT", True), "date": ("DATE", False),
    "originalDate": ("ORIGINALDATE", False), "comments": ("COMMENT", True),
    "languages": ("LANGUAGE", True), "recording": ("MUSICBRAINZ_TRACKID", False),
    "trackId": ("MUSICBRAINZ_RELEASETRACKID", False), "release": ("MUSICBRAINZ_ALBUMID", False),
    "releaseGroup": ("MUSICBRAINZ_RELEASEGROUPID", False), "work": ("MUSICBRAINZ_WORKID", False),
    "artistIds": ("MUSICBRAINZ_ARTISTID", True),
    "albumArtistIds": ("MUSICBRAINZ_ALBUMARTISTID", True), "acoustId": ("ACOUSTID_ID", False),
    "isrcs": ("ISRC", True), "labels": ("LABEL", True), "catalogNumbers": ("CATALOGNUMBER", True),
    "barcode": ("BARCODE", False), "copyright": ("COPYRIGHT", False),
    "encoder": ("ENCODER", False), "encodedBy": ("ENCODEDBY", False), "key": ("KEY", False),
    "moods": ("MOOD", True),
}
NUMBERS = {
    "beatsPerMinute": "BPM", "trackGain": "REPLAYGAIN_TRACK_GAIN",
    "trackPeak": "REPLAYGAIN_TRACK_PEAK", "albumGain": "REPLAYGAIN_ALBUM_GAIN",
    "albumPeak": "REPLAYGAIN_ALBUM_PEAK",
}

ID3_FRAMES = {
    "TITLE": "TIT2", "ALBUM": "TALB", "ARTIST": "TPE1", "ALBUMARTIST": "TPE2", "COMPOSER": "TCOM",
    "CONDUCTOR": "TPE3", "LYRICIST": "TEXT", "GENRE": "TCON", "TITLESORT": "TSOT",
    "ALBUMSORT": "TSOA", "ARTISTSORT": "TSOP", "ALBUMARTISTSORT": "TSO2", "COMPOSERSORT": "TSOC",
    "DATE": "TDRC", "ORIGINALDATE": "TDOR", "LANGUAGE": "TLAN", "ISRC": "TSRC", "LABEL": "TPUB",
    "COPYRIGHT": "TCOP", "ENCODER": "TSSE", "ENCODEDBY": "TENC", "BPM": "TBPM", "KEY": "TKEY",
    "MOOD": "TMOO", "COMPILATION": "TCMP",
}
ID3_FREE = {
    "MUSICBRAINZ_RELEASETRACKID": "MusicBrainz Release Track Id",
    "MUSICBRAINZ_ALBUMID": "MusicBrainz Album Id",
    "MUSICBRAINZ_RELEASEGROUPID": "MusicBrainz Release Group Id",
    "MUSICBRAINZ_WORKID": "MusicBrainz Work Id",
    "MUSICBRAINZ_ARTISTID": "MusicBrainz Artist Id",
    "MUSICBRAINZ_ALBUMARTISTID": "MusicBrainz Album Artist Id",
    "ACOUSTID_ID": "Acoustid Id", "CATALOGNUMBER": "CATALOGNUMBER", "BARCODE": "BARCODE",
    "REPLAYGAIN_TRACK_GAIN": "replaygain_track_gain",
    "REPLAYGAIN_TRACK_PEAK": "replaygain_track_peak",
    "REPLAYGAIN_ALBUM_GAIN": "REPLAYGAIN_ALBUM_GAIN",
    "REPLAYGAIN_ALBUM_PEAK": "REPLAYGAIN_ALBUM_PEAK",
}
MP4_ITEMS = {
    "TITLE": "\xa9nam", "ALBUM": "\xa9alb", "ARTIST": "\xa9ART", "ALBUMARTIST": "aART",
    "COMPOSER": "\xa9wrt", "GENRE": "\xa9gen", "TITLESORT": "sonm", "ALBUMSORT": "soal",
    "ARTISTSORT": "soar", "ALBUMARTISTSORT": "soaa", "COMPOSERSORT": "soco", "DATE": "\xa9day",
    "COMMENT": "\xa9cmt", "COPYRIGHT": "cprt", "ENCODER": "\xa9too",
}
MP4_FREE = dict(ID3_FREE, CONDUCTOR="CONDUCTOR", LYRICIST="LYRICIST", LANGUAGE="LANGUAGE",
                MUSICBRAINZ_TRACKID="MusicBrainz Track Id", ISRC="ISRC", LABEL="LABEL",
                ENCODEDBY="ENCODEDBY", KEY="initialkey", MOOD="MOOD", ORIGINALDATE="ORIGINALDATE")
ASF_ATTRIBUTES = {
    "TITLE": "Title", "ALBUM": "WM/AlbumTitle", "ARTIST": "Author", "ALBUMARTIST": "WM/AlbumArtist",
    "COMPOSER": "WM/Composer", "CONDUCTOR": "WM/Conductor", "LYRICIST": "WM/Writer",
    "GENRE": "WM/Genre", "TITLESORT": "WM/TitleSortOrder", "ALBUMSORT": "WM/AlbumSortOrder",
    "ARTISTSORT": "WM/ArtistSortOrder", "ALBUMARTISTSORT": "WM/AlbumArtistSortOrder",
    "COMPOSERSORT": "WM/ComposerSortOrder", "DATE": "WM/Year",
    "ORIGINALDATE": "WM/OriginalReleaseTime", "COMMENT": "Description", "LANGUAGE": "WM/Language",
    "MUSICBRAINZ_TRACKID": "MusicBrainz/Track Id",
    "MUSICBRAINZ_RELEASETRACKID": "MusicBrainz/Release Track Id",
    "MUSICBRAINZ_ALBUMID": "MusicBrainz/Album Id",
    "MUSICBRAINZ_RELEASEGROUPID": "MusicBrainz/Release Group Id",
    "MUSICBRAINZ_WORKID": "MusicBrainz/Work Id", "MUSICBRAINZ_ARTISTID": "MusicBrainz/Artist Id",
    "MUSICBRAINZ_ALBUMARTISTID": "MusicBrainz/Album Artist Id", "ACOUSTID_ID": "Acoustid/Id",
    "ISRC": "WM/ISRC", "LABEL": "WM/Publisher", "CATALOGNUMBER": "WM/CatalogNo",
    "BARCODE": "WM/Barcode", "COPYRIGHT": "Copyright", "ENCODER": "WM/EncodingSettings",
    "ENCODEDBY": "WM/EncodedBy", "BPM": "WM/BeatsPerMinute", "KEY": "WM/InitialKey",
    "MOOD": "WM/Mood", "COMPILATION": "WM/IsCompilation",
    "REPLAYGAIN_TRACK_GAIN": "REPLAYGAIN_TRACK_GAIN",
    "REPLAYGAIN_TRACK_PEAK": "REPLAYGAIN_TRACK_PEAK",
    "REPLAYGAIN_ALBUM_GAIN": "REPLAYGAIN_ALBUM_GAIN",
    "REPLAYGAIN_ALBUM_PEAK": "REPLAYGAIN_ALBUM_PEAK",
}
APE_NAMES = {"DATE": "Year", "ALBUMARTIST": "Album Artist", "KEY": "Key"}

COVER = b""
DESCRIPTION = "The front"


def picture():
    cover = flac.Picture()
    cover.type, cover.mime, cover.desc, cover.data = 3, "image/png", DESCRIPTION, COVER
    return cover


# --- Writing


def fill_id3(tags, encoding):
    for name, frame in ID3_FRAMES.items():
        tags.add(getattr(id3, frame)(encoding=encoding, text=NAMED[name]))
    for name, description in ID3_FREE.items():
        tags.add(id3.TXXX(encoding=encoding, desc=description, text=NAMED[name]))
    tags.add(id3.TRCK(encoding=0, text="3/12"))
    tags.add(id3.TPOS(encoding=0, text="1/2"))
    tags.add(id3.COMM(encoding=encoding, lang="eng", desc="", text=NAMED["COMMENT"]))
    tags.add(id3.USLT(encoding=encoding, lang="deu", desc="", text=LYRICS))
    tags.add(id3.UFID(owner="http://musicbrainz.org", data=RECORDING_ID.encode()))
    tags.add(id3.TMCL(encoding=encoding, people=[["guitar", "The Guitarist"]]))
    tags.add(id3.TIPL(encoding=encoding, people=[["producer", "The Producer"]]))
    tags.add(id3.POPM(email="a@example.org", rating=196, count=1))
    tags.add(id3.APIC(encoding=encoding, mime="image/png", type=3, desc=DESCRIPTION, data=COVER))
    for number, (start, end, title) in enumerate([(0, 1500, "One"), (1500, 3000, "Two")]):
        tags.add(id3.CHAP(element_id="c%d" % number, start_time=start, end_time=end,
                          sub_frames=[id3.TIT2(encoding=encoding, text=title)]))
    tags.add(id3.CTOC(element_id="toc", flags=id3.CTOCFlags.TOP_LEVEL | id3.CTOCFlags.ORDERED,
                      child_element_ids=["c0", "c1"], sub_frames=[]))


def write_id3(song, **options):
    if song.tags is None:
        song.add_tags()
    fill_id3(song.tags, 3)
    song.save(**options)


def write_v23(path):
    tags = id3.ID3()
    fill_id3(tags, 1)
    tags.update_to_v23()
    tags.save(path, v2_version=3, v23_sep=None)


def write_named(song):
    for name, values in NAMED.items():
        song[name] = values
    song["TRACKNUMBER"], song["TRACKTOTAL"] = "3", "12"
    song["DISCNUMBER"], song["TOTALDISCS"] = "1", "2"
    song["LYRICS"] = LYRICS
    song["PERFORMER"] = ["The Guitarist (guitar)"]
    song["PRODUCER"] = ["The Producer"]
    song["CHAPTER001"], song["CHAPTER001NAME"] = "00:00:00.000", "One"
    song["CHAPTER002"], song["CHAPTER002NAME"] = "00:00:01.500", "Two"
    if hasattr(song, "add_picture"):
        song.add_picture(picture())
    else:
        song["METADATA_BLOCK_PICTURE"] = base64.b64encode(picture().write()).decode()
    song.save()


def write_mp4(path):
    song = mp4.MP4(path)
    for name, item in MP4_ITEMS.items():
        song[item] = NAMED[name]
    for name, free in MP4_FREE.items():
        song["----:com.apple.iTunes:" + free] = [
            mp4.MP4FreeForm(value.encode()) for value in NAMED[name]]
    song["tmpo"], song["cpil"], song["pgap"], song["pcst"] = [120], True, True, False
    song["trkn"], song["disk"], song["\xa9lyr"] = [(3, 12)], [(1, 2)], LYRICS
    song["covr"] = [mp4.MP4Cover(COVER, mp4.MP4Cover.FORMAT_PNG)]
    song.save()


def write_asf(path):
    song = asf.ASF(path)
    for name, attribute in ASF_ATTRIBUTES.items():
        song[attribute] = NAMED[name]
    song["WM/IsCompilation"] = asf.ASFBoolAttribute(True)
    song["WM/TrackNumber"], song["WM/PartOfSet"] = asf.ASFDWordAttribute(3), "1/2"
    song["TRACKTOTAL"] = "12"
    song["WM/Lyrics"], song["WM/SharedUserRating"] = LYRICS, asf.ASFDWordAttribute(75)
    data = struct.pack("<bi", 3, len(COVER)) + "image/png\0".encode("utf-16-le")
    data += (DESCRIPTION + "\0").encode("utf-16-le") + COVER
    song["WM/Picture"] = asf.ASFByteArrayAttribute(data)
    song.save()


def write_ape(path):
    tags = apev2.APEv2()
    for name, values in NAMED.items():
        tags[APE_NAMES.get(name, name)] = values
    tags["Track"], tags["Disc"], tags["Lyrics"] = "3/12", "1/2", LYRICS
    tags["Performer"], tags["Producer"] = "The Guitarist (guitar)", "The Producer"
    tags["Cover Art (Front)"] = apev2.APEValue(
        DESCRIPTION.encode() + b"\0" + COVER, apev2.BINARY)
    tags.save(path)


def write(path):
    if path.endswith(".v23.mp3"):
        write_v23(path)
    elif path.endswith(".mp3"):
        write_id3(mp3.MP3(path), v1=0)
    elif path.endswith(".aiff"):
        write_id3(aiff.AIFF(path))
    elif path.endswith(".wav"):
        write_id3(wave.WAVE(path))
    elif path.endswith(".flac"):
        write_named(flac.FLAC(path))
    elif path.endswith(".ogg"):
        write_named(oggvorbis.OggVorbis(path))
    elif path.endswith(".opus"):
        write_named(oggopus.OggOpus(path))
    elif path.endswith(".m4a"):
        write_mp4(path)
    elif path.endswith(".wma"):
        write_asf(path)
    else:
        write_ape(path)


# --- Reading: everything becomes values under the names above


def cover(mime, kind, description, data):
    return {"mimeType": mime, "type": kind, "description": description, "bytes": len(data)}


def pictures(blocks):
    return [cover(p.mime, "front cover" if p.type == 3 else "", p.desc, p.data) for p in blocks]


def read_id3(tags):
    found = {name: [str(text) for text in tags[frame].text]
             for name, frame in ID3_FRAMES.items() if frame in tags}
    for frame in tags.getall("TXXX"):
        for name, description in ID3_FREE.items():
            if frame.desc.lower() == description.lower():
                found[name] = list(frame.text)
    if "TCON" in tags:
        found["GENRE"] = tags["TCON"].genres
    found["COMMENT"] = [text for frame in tags.getall("COMM") if not frame.desc
                        for text in frame.text]
    for frame in tags.getall("UFID"):
        found["MUSICBRAINZ_TRACKID"] = [frame.data.decode()]
    result = {"track": str(tags["TRCK"]), "disc": str(tags["TPOS"])}
    lyrics = tags.getall("USLT")
    result["hasLyrics"] = bool(lyrics)
    if lyrics:
        result["lyricsLanguage"] = lyrics[0].lang
    result["performers"] = sorted(
        [name, role] for frame in tags.getall("TMCL") + tags.getall("TIPL") + tags.getall("IPLS")
        for role, name in frame.people)
    result["covers"] = [cover(p.mime, "front cover" if p.type == 3 else "", p.desc, p.data)
                        for p in tags.getall("APIC")]
    result["chapters"] = [
        [c.start_time / 1000, c.end_time / 1000, str(c.sub_frames["TIT2"])]
        for c in sorted(tags.getall("CHAP"), key=lambda c: c.start_time)]
    # Four of five stars.
    result["rating"] = {196: 80}[tags.getall("POPM")[0].rating]
    return found, result


def credited(text):
    name, _, role = text.rpartition(" (")
    return [name, role.rstrip(")")] if name else [text, ""]


def clock(text):
    hours, minutes, seconds = text.split(":")
    return int(hours) * 3600 + int(minutes) * 60 + float(seconds)


def read_named(song):
    tags = {key.upper(): values for key, values in song.tags.as_dict().items()}
    found = {name: tags[name] for name in NAMED if name in tags}
    blocks = song.pictures if hasattr(song, "pictures") else [
        flac.Picture(base64.b64decode(text)) for text in tags["METADATA_BLOCK_PICTURE"]]
    return found, {
        "track": tags["TRACKNUMBER"][0] + "/" + tags["TRACKTOTAL"][0],
        "disc": tags["DISCNUMBER"][0] + "/" + tags["TOTALDISCS"][0],
        "hasLyrics": "LYRICS" in tags,
        "performers": sorted([credited(text) for text in tags["PERFORMER"]] +
                             [[text, "producer"] for text in tags["PRODUCER"]]),
        "covers": pictures(blocks),
        "chapters": [[clock(tags["CHAPTER00%d" % i][0]), None, tags["CHAPTER00%dNAME" % i][0]]
                     for i in (1, 2)],
    }


def read_mp4(path):
    tags = mp4.MP4(path).tags
    found = {name: tags[item] for name, item in MP4_ITEMS.items()}
    for name, free in MP4_FREE.items():
        found[name] = [value.decode() for value in tags["----:com.apple.iTunes:" + free]]
    found["BPM"], found["COMPILATION"] = [str(tags["tmpo"][0])], [str(int(tags["cpil"]))]
    return found, {
        "track": "%d/%d" % tags["trkn"][0], "disc": "%d/%d" % tags["disk"][0],
        "hasLyrics": "\xa9lyr" in tags, "isGapless": tags["pgap"], "isPodcast": tags["pcst"],
        "covers": [cover("image/png" if c.imageformat == c.FORMAT_PNG else "", "", "", bytes(c))
                   for c in tags["covr"]],
    }


def read_asf(path):
    tags = asf.ASF(path).tags
    found = {name: [str(value) for value in tags[attribute]]
             for name, attribute in ASF_ATTRIBUTES.items()}
    found["COMPILATION"] = [str(int(tags["WM/IsCompilation"][0].value))]
    data = tags["WM/Picture"][0].value
    kind, size = struct.unpack_from("<bi", data)
    mime, description = data[5:len(data) - size].decode("utf-16-le").split("\0")[:2]
    return found, {
        "track": str(tags["WM/TrackNumber"][0]) + "/" + str(tags["TRACKTOTAL"][0]),
        "disc": str(tags["WM/PartOfSet"][0]), "hasLyrics": "WM/Lyrics" in tags,
        # Four of five stars.
        "rating": {75: 80}[tags["WM/SharedUserRating"][0].value],
        "covers": [cover(mime, "front cover" if kind == 3 else "", description, data[-size:])],
    }


def read_ape(path):
    tags = apev2.APEv2(path)
    found = {name: list(tags[APE_NAMES.get(name, name)]) for name in NAMED}
    description, data = tags["Cover Art (Front)"].value.split(b"\0", 1)
    return found, {
        "track": str(tags["Track"]), "disc": str(tags["Disc"]), "hasLyrics": "Lyrics" in tags,
        "performers": sorted([credited(text) for text in tags["Performer"]] +
                             [[text, "producer"] for text in tags["Producer"]]),
        # APE has no MIME types.
        "covers": [cover("image/png", "front cover", description.decode(), data)],
    }


def read(path):
    if path.endswith(".mp3"):
        found, result = read_id3(id3.ID3(path))
    elif path.endswith(".aiff"):
        found, result = read_id3(aiff.AIFF(path).tags)
    elif path.endswith(".wav"):
        found, result = read_id3(wave.WAVE(path).tags)
    elif path.endswith(".flac"):
        found, result = read_named(flac.FLAC(path))
    elif path.endswith(".ogg"):
        found, result = read_named(oggvorbis.OggVorbis(path))
    elif path.endswith(".opus"):
        found, result = read_named(oggopus.OggOpus(path))
    elif path.endswith(".m4a"):
        found, result = read_mp4(path)
    elif path.endswith(".wma"):
        found, result = read_asf(path)
    else:
        found, result = read_ape(path)
    for key, (name, is_list) in FIELDS.items():
        if name in found:
            result[key] = found[name] if is_list else found[name][0]
    for key, name in NUMBERS.items():
        if name in found:
            result[key] = float(found[name][0].split()[0])
    if "COMPILATION" in found:
        result["isCompilation"] = found["COMPILATION"] == ["1"]
    return result


if sys.argv[1] == "write":
    with open(sys.argv[2], "rb") as file:
        COVER = file.read()
    for song_path in sys.argv[3:]:
        write(song_path)
else:
    print(json.dumps(read(sys.argv[2])))
