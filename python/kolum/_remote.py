"""What a scan by many machines runs on them. Nothing here needs Dask."""

from __future__ import annotations

import functools
import json
import os
import selectors
import shutil
import signal
import subprocess
import tempfile
import time
import zlib
from collections import Counter
from dataclasses import dataclass, field
from typing import Sequence

from ._batches import Mapped, mapped, name_in, with_name

TRANSIENT = {"not-found", "too-many-open-files", "system-error", "no-reader"}
"""Failures that say something about the machine or the moment, not about the file."""

_LIBRARIES = ("libavformat", "libavcodec", "libavutil")


class MachineError(Exception):
    """A machine cannot do its part."""


class VersionError(MachineError):
    """A machine has another version."""


class BatchFailed(MachineError):
    """A batch ended without an answer for each of its files."""


@dataclass(frozen=True)
class Task:
    """A batch, as it is sent to a machine."""

    root: str
    names: tuple[bytes, ...]
    map: Mapped = ()
    version: str = ""
    most_jobs: int = 1
    options: tuple[str, ...] = ()
    """Of "kolum probe"."""
    patience: float = 240
    """Seconds without any answer after which the batch counts as stuck."""


@dataclass
class Answers:
    """What a machine found out about a batch."""

    lines: bytes = b""
    """Compressed lines of JSON, under the coordinator's names."""
    not_read: list[tuple[int, str, str]] = field(default_factory=list)
    """Files that this machine could not read just now: number in the batch, code, reason."""
    failures: Counter = field(default_factory=Counter)
    """Failures by their codes."""
    machine: str = ""
    address: str = ""
    root: str = ""
    """Where the machine looked for the files."""
    sees_root: bool = True
    seconds: float = 0


def tool() -> str:
    """The kolum tool of this machine."""
    return os.environ.get("KOLUM_TOOL", "kolum")


@functools.lru_cache(maxsize=8)
def _version_of(program: str, state: object) -> str:
    try:
        name = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout.strip()
        text = subprocess.run([program, "doctor", "--json"], capture_output=True, text=True).stdout
        items = [json.loads(line) for line in text.splitlines()]
        states = {item["name"]: item.get("state", "?") for item in items if item["kind"] == "library"}
    except (OSError, subprocess.CalledProcessError, ValueError, KeyError) as error:
        raise MachineError(f"{program} does not run: {error}") from error
    return ", ".join([name, *(f"{library} {states.get(library, '?')}" for library in _LIBRARIES)])


def version() -> str:
    """kolum and FFmpeg, as this machine has them: what decides about the answers."""
    program = shutil.which(tool())
    if program is None:
        raise MachineError(f"{tool()} does not run: there is no such program")
    status = os.stat(program)
    return _version_of(program, (status.st_ino, status.st_size, status.st_mtime_ns))


def threads() -> int:
    """How many batches this machine takes at a time."""
    try:
        from distributed import get_worker
        return get_worker().state.nthreads
    except (ImportError, ValueError):
        return 1


def jobs() -> int:
    """How many files this machine reads at a time for one batch."""
    return max(1, len(os.sched_getaffinity(0)) // threads())


def greet() -> dict[str, object]:
    """What the coordinator wants to know of a machine first."""
    try:
        return {"version": version(), "jobs": jobs()}
    except MachineError as error:
        return {"error": str(error)}


def _lines_of(process: subprocess.Popen, patience: float) -> list[bytes]:
    """All that a process prints; it may be silent for "patience" seconds only."""
    output = process.stdout
    assert output is not None
    parts: list[bytes] = []
    with selectors.DefaultSelector() as selector:
        selector.register(output, selectors.EVENT_READ)
        while selector.select(patience):
            part = os.read(output.fileno(), 1 << 16)
            if not part:
                return b"".join(parts).split(b"\n")[:-1]
            parts.append(part)
    raise BatchFailed(f"kolum said nothing for {patience:g} seconds")


def _end(process: subprocess.Popen) -> None:
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
    if process.stdout:
        process.stdout.close()
    process.wait()


def probe(names: Sequence[bytes], most_jobs: int, options: Sequence[str], patience: float) -> list[bytes]:
    """The lines of "kolum probe" about some files, in their order."""
    command = [tool(), "probe", *options, "--json", "--jobs", str(max(1, min(most_jobs, jobs()))), "-0", "-"]
    with tempfile.TemporaryFile() as names_file, tempfile.TemporaryFile() as errors:
        names_file.write(b"".join(name + b"\0" for name in names))
        names_file.seek(0)
        process = subprocess.Popen(command, stdin=names_file, stdout=subprocess.PIPE, stderr=errors,
                                   start_new_session=True)
        try:
            lines = _lines_of(process, patience)
            process.wait()
        finally:
            _end(process)
        if process.returncode not in (0, 1) or len(lines) != len(names):
            errors.seek(0)
            said = errors.read()[-300:].decode(errors="replace").strip().splitlines()
            raise BatchFailed(f"kolum ended with status {process.returncode} after {len(lines)} of {len(names)} files"
                              + (f": {said[-1]}" if said else ""))
    return lines


def _require_version(task: Task) -> None:
    here = version()
    if task.version and here != task.version:
        raise VersionError(f"{whoami()[0]} has {here}; the coordinator has {task.version}")


def whoami() -> tuple[str, str]:
    """This machine's name with that of its Dask worker, and the worker's address."""
    node = os.uname().nodename
    try:
        from distributed import get_worker
        worker = get_worker()
        return f"{node} ({worker.name})", worker.address
    except (ImportError, ValueError):
        return node, ""


def _take(answers: Answers, number: int, line: bytes, there: bytes, name: bytes) -> bytes:
    """The line about a file under the coordinator's name; empty if it says nothing about the file."""
    try:
        said = json.loads(line)
        is_right = name_in(said) == there
    except (ValueError, KeyError) as error:
        raise BatchFailed(f"kolum's answer makes no sense: {error}") from error
    if not is_right:
        raise BatchFailed("kolum's answers are in another order")
    if error := said.get("error"):
        if error["code"] in TRANSIENT:
            answers.not_read.append((number, error["code"], error["reason"]))
            return b""
        answers.failures[error["code"]] += 1
    if there == name:
        return line + b"\n"
    return json.dumps(with_name(said, name), ensure_ascii=False, separators=(",", ":")).encode() + b"\n"


def describe(task: Task) -> Answers:
    """Describes a batch by this machine's own kolum, whose readers no file can harm."""
    begin = time.monotonic()
    _require_version(task)
    name, address = whoami()
    root = mapped(os.fsencode(task.root), task.map)
    answers = Answers(machine=name, address=address, root=os.fsdecode(root),
                      sees_root=os.path.lexists(root))
    if answers.sees_root:
        there = [mapped(each, task.map) for each in task.names]
        lines = probe(there, task.most_jobs, task.options, task.patience)
        taken = [_take(answers, number, *parts) for number, parts in enumerate(zip(lines, there, task.names))]
        answers.lines = zlib.compress(b"".join(taken), 1)
    answers.seconds = time.monotonic() - begin
    return answers
