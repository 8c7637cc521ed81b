"""Describing folders."""

from __future__ import annotations

import collections
import concurrent.futures
import os
from pathlib import Path
from typing import Collection, Iterable, Iterator

from . import _native
from ._documents import Document
from ._probe import Kind, KolumError, probe

_DISC_INDEXES = ("VIDEO_TS/VIDEO_TS.IFO", "BDMV/index.bdmv", "VIDEO_TS.IFO", "index.bdmv")


def kind_of_name(name: str | bytes | os.PathLike) -> Kind | None:
    """What the extension of a file's name says."""
    found = _native.lib.KoLUM_GetFilenameType(
        _native.path_bytes(os.path.basename(os.fspath(name))), _native.ffi.NULL,
        sum(_native.BITS.values()), _native.ffi.NULL)
    return next((kind for kind, number in _native.KINDS.items() if number == found), None)


def _disc_index(folder: str) -> str | None:
    for index in _DISC_INDEXES:
        if os.path.isfile(os.path.join(folder, index)):
            return os.path.join(folder, index)
    return None


def files(roots: Iterable[str | os.PathLike], kinds: Collection[Kind] | None = None) -> Iterator[str]:
    """The media files below folders, by their names and in their order; a disc is its index file.

    Hidden files and links to folders are left out, and so are folders that cannot be listed.
    """
    for root in roots:
        path = os.fspath(root)
        yield from _walk(path, kinds) if os.path.isdir(path) else [path]


def _walk(folder: str, kinds: Collection[Kind] | None) -> Iterator[str]:
    if index := _disc_index(folder):
        if kinds is None or "video" in kinds:
            yield index
        return
    try:
        entries = sorted(os.scandir(folder), key=lambda entry: os.fsencode(entry.name))
    except OSError:
        return
    for entry in entries:
        if entry.name.startswith(".") or entry.name == "@eaDir":
            continue
        if entry.is_dir(follow_symlinks=False):
            yield from _walk(entry.path, kinds)
        elif entry.is_file():
            kind = kind_of_name(entry.name)
            if kind is not None and (kinds is None or kind in kinds):
                yield entry.path


def scan(roots: str | os.PathLike | Iterable[str | os.PathLike], *, jobs: int | None = None,
         kinds: Collection[Kind] | None = None, details: bool = True, places: bool = False,
         deadline: float | None = None, memory: int | None = None) -> Iterator[Document | KolumError]:
    """Describes the media files below folders, several at a time and in their order.

    A file that cannot be described is an item, too: its KolumError. Each file is read by a worker
    process, so no file can harm this one. "jobs" is how many are read at a time (the number of
    processors); "kinds" leaves out others, "places" adds the nearest known place for each position.
    """
    if isinstance(roots, (str, bytes, Path, os.PathLike)):
        roots = [roots]
    jobs = jobs or os.cpu_count() or 1

    def describe(path: str) -> Document | KolumError:
        try:
            return probe(path, details=details, places=places, deadline=deadline, memory=memory)
        except KolumError as error:
            return error

    waiting: collections.deque[concurrent.futures.Future] = collections.deque()
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        try:
            for path in files(roots, kinds):
                waiting.append(pool.submit(describe, path))
                if len(waiting) >= 4 * jobs:
                    yield waiting.popleft().result()
            while waiting:
                yield waiting.popleft().result()
        finally:
            for future in waiting:
                future.cancel()
