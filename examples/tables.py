#!/usr/bin/env python3
"""tables.py [--polars] FOLDER: a table of the albums in a folder, by pandas or by Polars."""

import sys
from typing import Any, Iterator

import kolum

COLUMNS = {"artist": str, "album": str, "title": str, "duration": float}


def songs(folder: str) -> Iterator[dict[str, Any]]:
    """Plain values by the names of columns: what pandas and Polars take without any adapter."""
    for song in kolum.scan(folder, kinds=["music"]):
        if isinstance(song, kolum.KolumError):
            print(song, file=sys.stderr)
        else:
            yield {column: getattr(song, column) for column in COLUMNS}


def by_pandas(folder: str):
    import pandas

    table = pandas.DataFrame(songs(folder), columns=list(COLUMNS))
    return table.groupby(["artist", "album"]).agg(songs=("title", "size"), seconds=("duration", "sum"))


def by_polars(folder: str):
    import polars

    # The types are given, because the first songs may lack what later ones have.
    table = polars.DataFrame(list(songs(folder)), schema=COLUMNS)
    return table.group_by("artist", "album", maintain_order=True).agg(
        songs=polars.col("title").len(), seconds=polars.col("duration").sum())


def main(arguments: list[str]) -> int:
    wants_polars = arguments[:1] == ["--polars"]
    folders = arguments[1:] if wants_polars else arguments
    if len(folders) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    print(by_polars(folders[0]) if wants_polars else by_pandas(folders[0]))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
