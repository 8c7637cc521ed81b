"""The filters of a scan by many machines that run at the coordinator: the walk and the only writer."""

from __future__ import annotations

import json
import queue
import subprocess
import threading
from typing import Sequence

from . import _remote
from ._batches import Limits, Servers, batches, found_in


class ClusterError(Exception):
    """A scan by many machines cannot go on. What it has found is kept; the next one goes on there."""


class Window:
    """How many batches one walk may be ahead of the answers."""

    def __init__(self, size: int) -> None:
        self._size, self._inside = size, 0
        self._changed = threading.Condition()
        self._is_closed = False

    def enter(self) -> bool:
        """Waits for a place. False: there will be none."""
        with self._changed:
            self._changed.wait_for(lambda: self._is_closed or self._inside < self._size)
            self._inside += 1
            return not self._is_closed

    def squeeze_in(self) -> None:
        """Takes a place even if there is none."""
        with self._changed:
            self._inside += 1

    def leave(self) -> None:
        with self._changed:
            self._inside -= 1
            self._changed.notify_all()

    def resize(self, size: int) -> None:
        with self._changed:
            self._size = size
            self._changed.notify_all()

    def close(self) -> None:
        with self._changed:
            self._is_closed = True
            self._changed.notify_all()


class Walk(threading.Thread):
    """"kolum library stale" of one root, whose files become batches."""

    def __init__(self, root: str, options: Sequence[str], limits: Limits, events: queue.SimpleQueue, size: int) -> None:
        super().__init__(daemon=True, name=f"walk {root}")
        self.root, self.window = root, Window(size)
        self.failure: str | None = None
        self._limits, self._events = limits, events
        self._process = subprocess.Popen(
            [_remote.tool(), "library", "stale", "--json", *options, "--", root],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)
        self._errors = threading.Thread(target=self._read_errors, daemon=True)

    def run(self) -> None:
        self._errors.start()
        try:
            self._read_names()
        except Exception as error:  # The scan ends with it.
            self.failure = f"{type(error).__name__}: {error}"
        self._errors.join()
        if self._process.wait() not in (0, 1) and not self.failure:
            self.failure = f"the walk of {self.root} ended with status {self._process.returncode}"
        self._events.put(("walked", self))

    def _read_names(self) -> None:
        output = self._process.stdout
        assert output is not None
        servers = Servers()
        for batch in batches(self.root, (found_in(line, servers) for line in output), self._limits):
            if not self.window.enter():
                return
            self._events.put(("batch", batch))

    def _read_errors(self) -> None:
        assert self._process.stderr is not None
        for line in self._process.stderr:
            self._events.put(("problem", line.decode(errors="replace").rstrip()))

    def stop(self) -> None:
        self.window.close()
        if self._process.poll() is None:
            self._process.kill()


class Writer:
    """"kolum library add": the library's only writer."""

    def __init__(self, library: str | None, wait: bool) -> None:
        self._errors: list[str] = []
        self._process = subprocess.Popen(
            [_remote.tool(), "library", "add", "--json", *(["--wait"] if wait else []),
             *(["--library", library] if library else [])],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)
        self._reader = threading.Thread(target=self._read_errors, daemon=True)
        self._reader.start()

    def _read_errors(self) -> None:
        assert self._process.stderr is not None
        for line in self._process.stderr:
            self._errors = [*self._errors[-20:], line.decode(errors="replace").rstrip()]

    def add(self, lines: bytes) -> None:
        """All lines of a batch."""
        assert self._process.stdin is not None
        try:
            self._process.stdin.write(lines)
            self._process.stdin.flush()
        except BrokenPipeError:
            raise self._failure() from None

    def require_alive(self) -> None:
        if self._process.poll() is not None:
            raise self._failure()

    def finish(self) -> dict[str, int]:
        """Waits until all is committed, and counts."""
        assert self._process.stdin is not None and self._process.stdout is not None
        try:
            self._process.stdin.close()
        except BrokenPipeError:
            pass
        said = self._process.stdout.read()
        if self._process.wait() not in (0, 1) or not said:
            raise self._failure()
        return json.loads(said)

    @property
    def remarks(self) -> list[str]:
        self._reader.join()
        return self._errors

    def abandon(self) -> None:
        """Keeps what was added."""
        try:
            self.finish()
        except (ClusterError, ValueError, OSError):
            pass

    def _failure(self) -> ClusterError:
        self._process.wait()
        self._reader.join()
        return ClusterError("; ".join(self._errors) or "kolum library add ended")
