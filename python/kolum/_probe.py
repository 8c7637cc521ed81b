"""Describing one file."""

from __future__ import annotations

import json
import os
from typing import IO, Any, Literal, Mapping

from . import _native
from ._base import build
from ._documents import Document, Photo, Song, Video

Kind = Literal["music", "video", "photo"]
File = str | bytes | os.PathLike | IO[Any]

_CLASSES: dict[str, type[Document]] = {"music": Song, "video": Video, "photo": Photo}


class KolumError(Exception):
    """What is wrong with a file."""

    def __init__(self, file: str, code: str, reason: str) -> None:
        super().__init__(f"{file}: {reason}")
        self.file = file
        self.code = code
        """For programs: "not-media", "reader-crashed", ...; docs/tool.md lists them."""
        self.reason = reason
        """In words."""

    def __reduce__(self):
        return type(self), (self.file, self.code, self.reason)


class NotFoundError(KolumError, FileNotFoundError):
    """There is no such file."""


class NotPermittedError(KolumError, PermissionError):
    """The file may not be read."""


_ERRORS: dict[str, type[KolumError]] = {
    "not-found": NotFoundError,
    "permission-denied": NotPermittedError,
}


def document_of(raw: Mapping[str, Any]) -> Document:
    """The object for a JSON document. Raises KolumError for one with an error."""
    if error := raw.get("error"):
        kind = _ERRORS.get(error["code"], KolumError)
        raise kind(raw.get("file", ""), error["code"], error["reason"])
    kind_name = raw.get("kind", {}).get("name", "")
    return build(_CLASSES.get(kind_name, Document), raw)


def _options(kind: Kind | None, by_content: bool, details: bool, fingerprint: bool, places: bool,
             audio_stream: int, deadline: float | None, memory: int | None):
    options = _native.ffi.new("KoLUM_DescribeOptions*")
    options.size = _native.ffi.sizeof("KoLUM_DescribeOptions")
    options.flags = (_native.DETAILS * details | _native.BY_CONTENT * by_content
                     | _native.FINGERPRINT * fingerprint | _native.PLACES * places)
    options.kind = _native.KINDS[kind] if kind else 0
    options.audioStream = audio_stream
    options.deadline = max(1, round(deadline * 1000)) if deadline else 0
    options.memory = memory or 0
    return options


def probe(file: File, *, kind: Kind | None = None, by_content: bool = False, details: bool = True,
          fingerprint: bool = False, places: bool = False, audio_stream: int = 0,
          deadline: float | None = None, memory: int | None = None) -> Document:
    """Describes a file: a Song, a Video or a Photo.

    "file" is a path, or an object with a descriptor that is open for reading; its position stays
    where it is. "kind" forces one whatever the name says, "by_content" looks into the file to find
    out. Without "details", tags and streams are left out; "fingerprint" adds a number to find
    copies by, "places" the nearest known place for a position, by GeoNames (CC BY 4.0). A worker process reads the file, for
    "deadline" seconds (30) and with "memory" bytes of address space (1 GiB) at most; other threads
    run meanwhile. Raises KolumError for a file that cannot be described, which may also be a
    FileNotFoundError or PermissionError, and ValueError for arguments that make no sense: an empty
    path, a negative audio stream, an object that is open but no file.
    """
    options = _options(kind, by_content, details, fingerprint, places, audio_stream, deadline, memory)
    text = _native.ffi.new("char**")
    if hasattr(file, "fileno"):
        name = getattr(file, "name", "")
        path = os.fsencode(name) if isinstance(name, (str, bytes)) and name else b"file"
        result = _native.lib.KoLUM_DescribeFd(file.fileno(), path, options, text)
    else:
        path = _native.path_bytes(file)
        if b"\0" in path:
            raise ValueError("a path with a NUL")
        result = _native.lib.KoLUM_Describe(path, options, text)
    if result == _native.NO_DOCUMENT:
        raise ValueError(f"{file!r} cannot be described with these arguments")
    return document_of(json.loads(_native.take(text[0])))
