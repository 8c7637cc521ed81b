"""Metadata of media files.

    import kolum
    song = kolum.probe("song.flac")
    print(song.title, song.duration)

Every file is read by a worker process in a sandbox: no file can harm the interpreter. docs/python.md
shows more, docs/document.md lists all keys of documents.
"""

from ._base import Container, Identifier
from ._documents import Document, Photo, Song, Video
from ._library import Library
from ._probe import KolumError, NotFoundError, NotPermittedError, document_of, probe
from ._scan import files, kind_of_name, scan

__all__ = [
    "Container",
    "Document",
    "Identifier",
    "KolumError",
    "Library",
    "NotFoundError",
    "NotPermittedError",
    "Photo",
    "Song",
    "Video",
    "document_of",
    "files",
    "kind_of_name",
    "probe",
    "scan",
]
