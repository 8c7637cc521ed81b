"""What a scan by many machines consists of: names, batches of them, and the servers that they are on."""

from __future__ import annotations

import functools
import json
import os
import re
from dataclasses import dataclass, field
from pathlib import Path
from typing import Iterable, Iterator, Mapping
from urllib.parse import quote_from_bytes, unquote_to_bytes

_NETWORK_TYPES = {"nfs", "nfs4", "cifs", "smb3", "smbfs", "9p", "afs", "ceph", "glusterfs", "lustre", "davfs"}


@dataclass(frozen=True)
class Found:
    """A file that the library does not know as it is now."""

    name: bytes
    is_new: bool = True
    size: int = 0
    server: str = ""


@dataclass(frozen=True)
class Batch:
    """Files of one server below one root, which one machine describes together."""

    root: str
    files: tuple[Found, ...]
    tries: int = 0
    """How often it has ended without an answer."""

    def halves(self) -> list[Batch]:
        """Two smaller ones, to find the file that is to blame."""
        middle = len(self.files) // 2
        return [Batch(self.root, part) for part in (self.files[:middle], self.files[middle:])]

    def again(self) -> Batch:
        return Batch(self.root, self.files, self.tries + 1)

    @property
    def server(self) -> str:
        return self.files[0].server


@dataclass(frozen=True)
class Limits:
    """How large a batch may be."""

    files: int = 256
    bytes: int = 16 << 30


@dataclass
class _Open:
    """A batch that is being filled."""

    files: list[Found] = field(default_factory=list)
    bytes: int = 0

    def is_full_with(self, found: Found, limits: Limits) -> bool:
        return bool(self.files) and (len(self.files) >= limits.files or self.bytes + found.size > limits.bytes)

    def add(self, found: Found) -> None:
        self.files.append(found)
        self.bytes += found.size


def batches(root: str, files: Iterable[Found], limits: Limits) -> Iterator[Batch]:
    """The files in batches, each of one server; what is left at the end makes smaller ones."""
    filling: dict[str, _Open] = {}
    for found in files:
        part = filling.setdefault(found.server, _Open())
        if part.is_full_with(found, limits):
            yield Batch(root, tuple(part.files))
            part = filling[found.server] = _Open()
        part.add(found)
    for part in filling.values():
        yield Batch(root, tuple(part.files))


def name_in(line: Mapping[str, object]) -> bytes:
    """The name in a line of JSON, byte for byte."""
    if "fileBytes" in line:
        return unquote_to_bytes(str(line["fileBytes"]))
    return str(line["file"]).encode()


def with_name(line: dict[str, object], name: bytes) -> dict[str, object]:
    """The line, about a file of another name."""
    renamed = {**line, "file": name.decode(errors="replace")}
    renamed.pop("fileBytes", None)
    if renamed["file"].encode() != name:
        renamed["fileBytes"] = quote_from_bytes(name)
    return renamed


Mapped = tuple[tuple[str, str], ...]


def mapped(path: bytes, names: Mapped) -> bytes:
    """Where a path of the coordinator is on the workers: the longest folder that is mapped counts."""
    for here, there in sorted(names, key=lambda pair: -len(pair[0])):
        begin = os.fsencode(here.rstrip("/"))
        if path == begin or path.startswith(begin + b"/"):
            return os.fsencode(there.rstrip("/")) + path[len(begin):] or b"/"
    return path


def _unescaped(text: str) -> str:
    return re.sub(r"\\([0-7]{3})", lambda digits: chr(int(digits[1], 8)), text)


def _server_of(kind: str, source: str) -> str:
    if kind == "cifs" or kind.startswith("smb"):
        return source.strip("/").split("/")[0] or source
    if ":" in source:
        return source.split(":/")[0]
    return f"{kind} {source}"


class Servers:
    """Which server, or which disk of this machine, a folder is on."""

    def __init__(self, mount_table: str | os.PathLike = "/proc/self/mountinfo") -> None:
        table = Path(mount_table).read_text(errors="surrogateescape")
        self._mounts = [self._parsed(line) for line in table.splitlines()]
        self.of_folder = functools.lru_cache(maxsize=65536)(self._of_folder)

    @staticmethod
    def _parsed(line: str) -> tuple[bytes, str]:
        before, _, after = line.partition(" - ")
        kind, source = after.split()[:2]
        words = before.split()
        place = os.fsencode(_unescaped(words[4]).rstrip("/") + "/")
        is_network = kind in _NETWORK_TYPES or kind.startswith("fuse.")
        return place, _server_of(kind, _unescaped(source)) if is_network else f"disk {words[2]}"

    def _of_folder(self, folder: bytes) -> str:
        path = folder.rstrip(b"/") + b"/"
        nearest, server = b"", "unknown"
        for place, name in self._mounts:
            if path.startswith(place) and len(place) >= len(nearest):
                nearest, server = place, name
        return server


def found_in(line: bytes, servers: Servers) -> Found:
    """The file in a line of "kolum library stale --json"."""
    said = json.loads(line)
    name = name_in(said)
    try:
        size = os.stat(name).st_size
    except OSError:
        size = 0
    return Found(name, said.get("change") == "new", size, servers.of_folder(os.path.dirname(name)))
