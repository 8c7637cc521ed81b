"""What comes from the machines of a cluster, as far as it can be believed.

A machine may be out of order, or in strange hands. Whatever it says must cost no more than its own
batch: nothing that it was not asked about reaches the library, and nothing fills the memory.
"""

from __future__ import annotations

import json
import re
import zlib
from collections import Counter
from dataclasses import dataclass, field
from typing import Any, Sequence

from ._batches import Found, name_in
from ._remote import TRANSIENT, Answers

SCHEMA = 2
"""Of the lines that this version of kolum writes."""

_MOST_BYTES = 64 << 20
"""Of a batch's lines. A batch with more is halved, as one that fails is."""
_LONGEST_LINE = (1 << 20) + 65536
"""That "kolum library add" takes."""
_LONGEST_TEXT = 300
_CODE = re.compile(r"[a-z][a-z0-9-]{0,63}")


class Nonsense(Exception):
    """An answer that no machine in order gives."""


@dataclass
class Checked:
    """What is left of an answer."""

    lines: bytes = b""
    """For "kolum library add": about files of the batch only, one line for each."""
    not_read: list[tuple[int, str, str]] = field(default_factory=list)
    """Files that the machine could not read just now: number in the batch, code, reason."""
    refused: list[tuple[int, str]] = field(default_factory=list)
    """Files whose lines are not believed, and why."""
    failures: Counter = field(default_factory=Counter)
    machine: str = ""
    address: str = ""
    root: str = ""
    sees_root: bool = True


def shortened(text: object) -> str:
    """For people; of any length before."""
    return str(text)[:_LONGEST_TEXT]


def checked(answers: Any, files: Sequence[Found]) -> Checked:
    """What an answer about a batch of files says; raises Nonsense."""
    if not isinstance(answers, Answers) or not isinstance(answers.sees_root, bool):
        raise Nonsense("its answer is of another kind")
    found = Checked(machine=_text(answers.machine), address=_text(answers.address), root=_text(answers.root),
                    sees_root=answers.sees_root, not_read=_not_read(answers.not_read, len(files)))
    if not found.sees_root:
        return found
    unread = {number for number, _, _ in found.not_read}
    read = [number for number in range(len(files)) if number not in unread]
    lines = _unpacked(answers.lines)
    if len(lines) != len(read):
        raise Nonsense(f"its answer has {len(lines)} lines for {len(read)} files")
    kept = []
    for number, line in zip(read, lines):
        why, code = _objection(line, files[number].name)
        if why:
            found.refused.append((number, why))
            continue
        kept.append(line + b"\n")
        found.failures.update([code] if code else [])
    found.lines = b"".join(kept)
    return found


def greeting(answer: Any) -> tuple[str, int]:
    """The version of a machine and how many files it reads at a time; raises Nonsense."""
    if not isinstance(answer, dict):
        raise Nonsense("its greeting is of another kind")
    if "error" in answer:
        raise Nonsense(shortened(answer["error"]))
    version, jobs = answer.get("version"), answer.get("jobs")
    if not isinstance(version, str) or type(jobs) is not int or jobs < 1:
        raise Nonsense("its greeting makes no sense")
    return version, jobs


def _text(value: object) -> str:
    if not isinstance(value, str):
        raise Nonsense("its answer has no texts where they belong")
    return shortened(value)


def _not_read(value: Any, files: int) -> list[tuple[int, str, str]]:
    is_right = isinstance(value, list) and len(value) <= files and all(
        isinstance(item, tuple) and len(item) == 3 and type(item[0]) is int and 0 <= item[0] < files
        and isinstance(item[1], str) and item[1] in TRANSIENT for item in value)
    if not is_right or len({number for number, _, _ in value}) != len(value):
        raise Nonsense("its answer names files that it was not asked about")
    return [(number, code, _text(reason)) for number, code, reason in value]


def _unpacked(packed: object) -> list[bytes]:
    """The lines, however many are claimed to be in so few bytes."""
    if not isinstance(packed, bytes):
        raise Nonsense("its answer has no lines")
    unpacker = zlib.decompressobj()
    try:
        text = unpacker.decompress(packed, _MOST_BYTES)
    except zlib.error as error:
        raise Nonsense(f"its answer cannot be unpacked: {error}") from error
    if unpacker.unconsumed_tail:
        raise Nonsense(f"its answer has more than {_MOST_BYTES >> 20} MiB")
    if not unpacker.eof or unpacker.unused_data or (text and not text.endswith(b"\n")):
        raise Nonsense("its answer is not whole")
    return text.split(b"\n")[:-1]


def _objection(line: bytes, name: bytes) -> tuple[str, str]:
    """Why a line about a file is not believed, or the code of the failure that it reports."""
    if len(line) > _LONGEST_LINE:
        return f"its answer has {len(line)} bytes", ""
    try:
        said = json.loads(line)
    except (ValueError, RecursionError):
        return "its answer is not JSON", ""
    if not isinstance(said, dict) or said.get("schema") != SCHEMA:
        return "its answer is of another schema", ""
    if not isinstance(said.get("file"), str) or not isinstance(said.get("fileBytes", ""), str) or not _is_about(said, name):
        return "its answer is about another file", ""
    if "error" not in said:
        return ("", "") if isinstance(said.get("kind"), dict) else ("its answer says nothing", "")
    error = said["error"]
    if not isinstance(error, dict) or not isinstance(error.get("reason"), str) or not _is_code(error.get("code")):
        return "its answer reports a failure without a reason", ""
    return "", error["code"]


def _is_about(said: dict[str, object], name: bytes) -> bool:
    try:
        return name_in(said) == name
    except ValueError:  # Half a pair of surrogates.
        return False


def _is_code(value: object) -> bool:
    return isinstance(value, str) and _CODE.fullmatch(value) is not None and value not in TRANSIENT
