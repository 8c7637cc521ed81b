#!/usr/bin/env python3
"""Prints docs/comparison.md, from the tables of the comparison.

    make_page.py >docs/comparison.md
"""

import readings
import tables

HEAD = """# Documents compared with other readers

<!-- Written by scripts/make-comparison.sh from tests/comparison/tables.py. -->

The suite makes eight files with every tag that a document knows: a film as MP4 with a large cover, a
film as Matroska in HDR with three languages, a phone's video, a song as FLAC, a song as MP3 with every
frame of ID3, a JPEG photo, a camera's raw photo and a HEIC photo. It then asks `kolum probe`,
ExifTool, MediaInfo, ffprobe and Mutagen about each, and holds every value that these show against the
[document](document.md): either a key of the document says the same, or one of the tables below says
why not. A value in no table fails the suite, and so does a row that has nothing to say.

`tests/comparison/compare.py KOLUM FOLDER` runs it by hand; [tests/comparison/tables.py
](../tests/comparison/tables.py) is where a row is added. Keys of other programs are written as these
print them, without the numbers of tracks and chapters; streams that are covers are `covers[]` for
ffprobe. "*" stands for anything.
"""

DIFFERENT = """
## What differs

Both show a value, and they are not the same.

| File | Key | Other reader | Why |
|---|---|---|---|
"""

LEFT_OUT = """
## What a document leaves out

| Why | Values |
|---|---|
"""

SAME = """
## What is the same

| Key | ExifTool | MediaInfo | ffprobe | Mutagen |
|---|---|---|---|---|
"""


def cell(text):
    return text.replace("|", "\\|")


def keys(row, reader):
    return [key.lstrip("?") for key in getattr(row, reader).split()]


def code(names):
    return ", ".join(f"`{cell(name)}`" for name in names)


def by_reader(row):
    parts = [f"{reader}: {code(keys(row, reader))}" for reader in readings.READERS
             if keys(row, reader)]
    return "; ".join(parts)


def different():
    for row in tables.DIFFERENT:
        cells = (cell(row.files), code(row.key.split()), by_reader(row), cell(row.reason))
        yield f"| {' | '.join(cells)} |"


def left_out():
    for row in tables.LEFT_OUT:
        where = "" if row.files == "*" else f" ({cell(row.files)})"
        yield f"| {cell(row.reason)}{where} | {by_reader(row)} |"


def same():
    """One line for each key of the document, in the order of the table."""
    lines = {}
    for row in tables.SAME:
        line = lines.setdefault(row.key, {reader: [] for reader in readings.READERS})
        for reader, found in line.items():
            found += [key for key in keys(row, reader) if key not in found]
    for key, line in lines.items():
        yield f"| {code(key.split())} | " + " | ".join(map(code, line.values())) + " |"


def main():
    print(HEAD + DIFFERENT + "\n".join(different()))
    print(LEFT_OUT + "\n".join(left_out()))
    print(SAME + "\n".join(same()))


if __name__ == "__main__":
    main()
