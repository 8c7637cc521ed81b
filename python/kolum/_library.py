"""Libraries that "kolum scan" has made."""

from __future__ import annotations

import json
import os
import sqlite3
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Iterator
from urllib.parse import quote

from ._documents import Document
from ._probe import Kind, document_of

_ANY = object()
_SCHEMA = 2  # of the database; the first one with all columns that are used here


def default_path() -> Path:
    """The library of scans that were not given one."""
    data = os.environ.get("XDG_DATA_HOME", "")
    base = Path(data) if data.startswith("/") else Path.home() / ".local/share"
    return base / "kolum" / "library.db"


def _moment(nanoseconds: int) -> str:
    """In UTC, with as many decimals as are needed, as documents have it."""
    seconds, rest = divmod(nanoseconds, 10**9)
    text = datetime.fromtimestamp(seconds, timezone.utc).strftime("%Y-%m-%dT%H:%M:%S")
    return (f"{text}.{rest:09}".rstrip("0") if rest else text) + "Z"


def _has_text(text: str | bytes | None, part: str) -> bool | None:
    """Whether a text, or a path that is not UTF-8, has a part in any case."""
    if text is None:
        return None
    return part.lower() in (text if isinstance(text, str) else os.fsdecode(text)).lower()


class Library:
    """A library, to be read. Writing is for "kolum scan" and "kolum library".

    Its views ("files", "videos", "songs", "photos", "problems") are described in docs/library.md;
    query() takes any SQL over them.
    """

    def __init__(self, path: str | os.PathLike | None = None) -> None:
        self.path = Path(path) if path is not None else default_path()
        if not self.path.exists():
            raise FileNotFoundError(f"no library at {self.path}; kolum scan makes one")
        self._database = sqlite3.connect(
            f"file:{quote(str(self.path))}?mode=ro", uri=True, check_same_thread=False)
        self._database.row_factory = sqlite3.Row
        self._database.create_function("has_text", 2, _has_text, deterministic=True)
        version = self._database.execute("PRAGMA user_version").fetchone()[0]
        if version < _SCHEMA:
            self.close()
            raise ValueError(f"{self.path}: made by an earlier kolum; the next kolum scan brings it up to date")

    def __enter__(self) -> Library:
        return self

    def __exit__(self, *unused: object) -> None:
        self.close()

    def close(self) -> None:
        self._database.close()

    def query(self, sql: str, parameters: Any = ()) -> Iterator[sqlite3.Row]:
        """The rows of any SQL query; the values of a row by index or by name."""
        return iter(self._database.execute(sql, parameters))

    def find(self, *, kind: Kind | None = None, dlna: Any = _ANY, codec: str | None = None,
             text: str | None = None, where: str = "1", parameters: Any = ()) -> Iterator[Document]:
        """The documents of files.

        "dlna" is a DLNA profile, or None for files without one. "codec" is that of pictures or
        sound, such as "HEVC". "text" is looked for in paths and in the texts of all tags, in any case.
        "where" is an SQL expression over the columns of the view "files", with its "parameters".
        """
        conditions = ["document IS NOT NULL", f"({where})"]
        values = list(parameters)
        if kind is not None:
            conditions.append("kind = ?")
            values.append(kind)
        if dlna is None:
            conditions.append("dlna_profile IS NULL")
        elif dlna is not _ANY:
            conditions.append("dlna_profile = ?")
            values.append(dlna)
        if codec is not None:
            conditions.append("? IN (video_codec, audio_codec)")
            values.append(codec.upper())
        if text is not None:
            conditions.append("(has_text(path, ?) OR has_text(tags, ?))")
            values += [text, text]
        sql = f"SELECT path, size, mtime_ns, document FROM files WHERE {' AND '.join(conditions)} ORDER BY path"
        for path, size, mtime, document in self._database.execute(sql, values):
            name = path if isinstance(path, str) else os.fsdecode(path)
            yield document_of({"file": name, **json.loads(document), "size": size, "modified": _moment(mtime)})

    def __len__(self) -> int:
        return self._database.execute("SELECT count(*) FROM files").fetchone()[0]
