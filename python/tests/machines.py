"""Schedulers and workers of Dask as processes of their own, and the command that uses them."""

from __future__ import annotations

import json
import os
import signal
import socket
import stat
import subprocess
import sys
import time
from pathlib import Path
from typing import Callable, Sequence

import kolum

FILES = 43
"""In the fixture "share"."""

_SETTINGS = {"DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT": "5s", "DASK_DISTRIBUTED__COMM__RETRY__COUNT": "0"}
_LIMIT = 90.0
"""Seconds that anything may take on a busy machine."""


def wait_until(is_so: Callable[[], object], limit: float = _LIMIT) -> None:
    end = time.monotonic() + limit
    while not is_so():
        assert time.monotonic() < end, "waited in vain"
        time.sleep(0.05)


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def is_open(port: int) -> bool:
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


class Machines:
    """A scheduler and its workers, which are ended at the end."""

    def __init__(self, place: Path) -> None:
        self.place, self.port = place, free_port()
        self.address = f"tcp://127.0.0.1:{self.port}"
        self._processes: list[subprocess.Popen] = []
        self._logs = 0
        self.scheduler = self.start_scheduler()

    def _start(self, command: Sequence[str], environment: dict[str, str] | None = None) -> subprocess.Popen:
        self._logs += 1
        with open(self.place / f"log-{self._logs}", "wb") as log:
            process = subprocess.Popen(command, env={**os.environ, **_SETTINGS, **(environment or {})}, stdin=subprocess.DEVNULL,
                                       stdout=log, stderr=log, cwd=self.place, start_new_session=True)
        self._processes.append(process)
        return process

    def start_scheduler(self) -> subprocess.Popen:
        process = self._start([sys.executable, "-m", "dask", "scheduler", "--host", "127.0.0.1", "--port", str(self.port),
                               "--no-dashboard"])
        wait_until(lambda: is_open(self.port))
        return process

    def worker(self, name: str, *options: str, tool: Path | None = None, before: Sequence[str] = (),
               environment: dict[str, str] | None = None) -> subprocess.Popen:
        """A worker with one thread; "tool" is its kolum, and "before" the command that runs it."""
        settings = {**(environment or {}), **({"KOLUM_TOOL": str(tool)} if tool else {})}
        process = self._start([*before, sys.executable, "-m", "dask", "worker", self.address, "--nthreads", "1", "--name", name,
                               "--no-nanny", "--no-dashboard", "--host", "127.0.0.1", "--local-directory", str(self.place),
                               *options], settings)
        log = self.place / f"log-{self._logs}"
        wait_until(lambda: "Registered to" in log.read_text(errors="replace") or process.poll() is not None)
        assert process.poll() is None, log.read_text(errors="replace")
        return process

    def scan(self, library: Path, *arguments: object) -> subprocess.Popen:
        """The command, at work."""
        return subprocess.Popen(
            [sys.executable, "-m", "kolum.cluster", "scan", "--scheduler", self.address, "--library", str(library), "--json",
             "--wait", *map(str, arguments)], env={**os.environ, **_SETTINGS}, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)

    def scanned(self, library: Path, *arguments: object, status: int = 0) -> Scanned:
        return finished(self.scan(library, *arguments), status)

    def end(self) -> None:
        for process in self._processes:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()


class Scanned:
    """What a command has said."""

    def __init__(self, out: str, err: str) -> None:
        self.err = err
        self.summary = json.loads(out.splitlines()[-1])["summary"] if out else {}
        self.by_machine = {item["machine"].split("(")[1].rstrip(")"): item["files"] for item in self.summary.get("machines", [])}


def finished(process: subprocess.Popen, status: int = 0) -> Scanned:
    try:
        out, err = process.communicate(timeout=_LIMIT)
    except subprocess.TimeoutExpired:
        process.kill()
        out, err = process.communicate()
        raise AssertionError(f"takes too long: {out}{err}") from None
    assert process.returncode == status, out + err
    return Scanned(out, err)


def program(path: Path, text: str) -> Path:
    """A kolum that does something first; $REAL is the real one."""
    path.write_text(f"#!/bin/bash\nREAL={os.environ['KOLUM_TOOL']!r}\n{text}\nexec \"$REAL\" \"$@\"\n")
    path.chmod(path.stat().st_mode | stat.S_IXUSR)
    return path


def content(library):
    """All that a library says of files; ids, and when it was found out, may differ."""
    with kolum.Library(library) as opened:
        return sorted(map(tuple, opened.query(
            "SELECT CAST(path AS BLOB), kind, size, modified, state, code, reason, document, inode, mtime_ns, "
            "ctime_ns, readers FROM files")))


def paths_in(library):
    with kolum.Library(library) as opened:
        return [row[0] for row in opened.query("SELECT CAST(path AS BLOB) FROM files")]


def scanned_here(folder, library):
    subprocess.run([os.environ["KOLUM_TOOL"], "scan", "--library", library, folder], capture_output=True)
    return library


def expect_all(library, share, tmp_path):
    assert content(library) == content(scanned_here(share, tmp_path / "here.db"))


def slow(path, log, seconds):
    """A kolum that notes when it probes."""
    return program(path, f'if [ "$1" = probe ]; then echo "begin $(date +%s.%N)" >>"{log}"; sleep {seconds};\n'
                         f'  "$REAL" "$@"; status=$?; echo "end $(date +%s.%N)" >>"{log}"; exit $status; fi')


def begun(log):
    return log.exists() and "begin" in log.read_text()


def most_at_a_time(log):
    """How many probes were at work at the same time."""
    events = sorted((float(line.split()[1]), line.split()[0]) for line in log.read_text().splitlines())
    running = most = 0
    for _, event in events:
        running += 1 if event == "begin" else -1
        most = max(most, running)
    return most
