"""What programs say about a file, as a flat list of values.

A reading is a list of Value: the key as it is written in tables.py, the number of the stream or
chapter that it is about (None: the file), and the value. Keys are those of the program's own
output, with "_" for spaces; lists of objects are marked with "[]".
"""

import json
import re
import subprocess
from typing import NamedTuple, Optional

import mutagen
from mutagen import id3, mp4


class Value(NamedTuple):
    key: str
    index: Optional[int]
    value: object


def output(*command):
    """What a program prints, whatever its exit code: some fail for a file, but say something."""
    done = subprocess.run(command, capture_output=True, check=False, timeout=120)
    return done.stdout.decode("utf-8", errors="replace")


def flat(value, key="", index=None):
    """The leaves of a JSON document, and lists of plain values as they are."""
    if isinstance(value, dict):
        for name, part in value.items():
            name = name.replace(" ", "_")
            yield from flat(part, f"{key}.{name}" if key else name, index)
    elif isinstance(value, list) and any(isinstance(part, (dict, list)) for part in value):
        for i, part in enumerate(value):
            yield from flat(part, key + "[]", i if index is None else index)
    else:
        yield Value(key, index, value)


def document(kolum, path):
    """The document of a file. Objects are there as well as what is in them."""
    whole = json.loads(output(kolum, "probe", "--all", "--json", path))

    def objects(value, key="", index=None):
        if isinstance(value, dict):
            if key:
                yield Value(key, index, value)
            for name, part in value.items():
                yield from objects(part, f"{key}.{name}" if key else name, index)
        elif isinstance(value, list) and value and isinstance(value[0], dict):
            for i, part in enumerate(value):
                yield from objects(part, key + "[]", i if index is None else index)
        else:
            yield Value(key, index, value)

    for stream in whole.get("streams", []):
        stream.setdefault("marks", [])
    return list(objects(whole))


# How ffprobe and ExifTool write what they do not know.
UNKNOWN = ("0/0", "[0][0][0][0]", "0x0000", "0x0", -99, "und", [])


def exiftool(path):
    """Groups of tracks and chapters lose their number, which becomes the index."""
    tags = json.loads(output("exiftool", "-config", "", "-j", "-G1", "-n", path))[0]
    for name, value in tags.items():
        group, _, tag = name.rpartition(":")
        numbered = re.fullmatch(r"(Track|Chapter)(\d+)", group)
        named = re.fullmatch(r"Track(\d+)Name", tag)
        index = None
        if numbered:
            group, index = numbered[1], int(numbered[2]) - 1
        if named:
            tag, index = "TrackName", int(named[1]) - 1
        if value not in UNKNOWN:
            yield Value(f"{group}:{tag}", index, value)


def mediainfo(path):
    """Its menus are chapters: a key is a time, and the value a title."""
    for track in json.loads(output("mediainfo", "--Output=JSON", path))["media"]["track"]:
        kind = track.pop("@type")
        order = track.get("StreamOrder")
        chapter = 0
        for value in flat(track, kind, int(order) if order is not None else None):
            time = re.fullmatch(r"Menu\.extra\._(\d\d)_(\d\d)_(\d\d)_(\d\d\d)", value.key)
            if not time:
                yield value
                continue
            hours, minutes, seconds, thousandths = map(int, time.groups())
            start = hours * 3600 + minutes * 60 + seconds + thousandths / 1000
            yield Value("Menu.chapters[].start", chapter, start)
            yield Value("Menu.chapters[].title", chapter, value.value)
            chapter += 1


def ffprobe(path):
    """Streams that are covers are "covers[]". Dispositions are one key with the names of those that
    are set. Names of tags are in small letters."""
    report = json.loads(output("ffprobe", "-v", "quiet", "-of", "json", "-show_format",
                               "-show_streams", "-show_chapters", path))
    report.get("chapters", []).sort(key=lambda chapter: chapter["start"])
    streams = report.get("streams", [])
    covers = {i for i, stream in enumerate(streams) if stream["disposition"]["attached_pic"]}
    for key, index, value in flat(report):
        if key.startswith("streams[].") and index in covers:
            key = key.replace("streams[]", "covers[]")
        group, is_disposition, name = key.partition("disposition.")
        if is_disposition:
            if value:
                yield Value(group + "disposition", index, name)
        elif value not in UNKNOWN:
            yield Value(key.lower() if ".tags." in key else key, index, value)


def mutagen_texts(value):
    """Several values as a list, one as it is; pictures and binary data as their Python names."""
    if isinstance(value, (list, tuple)):
        texts = [mutagen_texts(part) for part in value]
        return texts[0] if len(texts) == 1 else texts
    if isinstance(value, bytes):
        return value.decode() if re.fullmatch(rb"[-0-9a-f]{36}", value) else f"({len(value)} bytes)"
    if isinstance(value, (int, float, str)):
        return value
    return str(value)


def mutagen_frame(frame):
    """What a frame of ID3 holds besides its encoding."""
    fields = {name: value for name, value in vars(frame).items()
              if name not in ("encoding", "HashKey", "lang", "desc", "sub_frames", "_frame_ids")}
    return next(iter(fields.values())) if len(fields) == 1 else list(fields.values())


def read_mutagen(path):
    """Tags by the names that the format gives them, and "info" for the sound."""
    try:
        song = mutagen.File(path)
    except mutagen.MutagenError:  # a HEIC picture, which begins like MP4
        return
    if song is None or song.tags is None:
        return
    for name in song.tags.keys():
        value = song.tags[name]
        if isinstance(value, id3.Frame):
            value = mutagen_frame(value)
        name = re.sub(r"[\x00-\x20]", "_", name)
        yield Value(f"tags.{name}", None, mutagen_texts(value))
    for picture in getattr(song, "pictures", ()):
        yield Value("pictures[].mime", None, picture.mime)
        yield Value("pictures[].desc", None, picture.desc)
        yield Value("pictures[].width", None, picture.width)
        yield Value("pictures[].height", None, picture.height)
        yield Value("pictures[].bytes", None, len(picture.data))
    for name, value in vars(song.info).items():
        yield Value(f"info.{name}", None, mutagen_texts(value))


READERS = {"ExifTool": exiftool, "MediaInfo": mediainfo, "ffprobe": ffprobe,
           "Mutagen": read_mutagen}
