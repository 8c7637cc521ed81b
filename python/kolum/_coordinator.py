"""The coordinator of a scan by many machines: it walks, hands out batches, and is the only one that writes."""

from __future__ import annotations

import collections
import contextlib
import os
import queue
import threading
import time
import uuid
from collections import Counter
from dataclasses import dataclass, field
from typing import Any, Callable, Collection, Mapping

from . import _remote
from ._answers import Checked, Nonsense, checked, greeting, shortened
from ._batches import Batch, Found, Limits, Mapped
from ._filters import ClusterError, Walk, Writer

READERS = 16
_TRIES = 3
_MACHINES_WITHIN = 30.0
_LOOK_EVERY = 2.0
_REPORT_EVERY = 0.5
_EVENTS_AT_A_TIME = 64


class VersionMismatch(ClusterError):
    """Machines have different versions of kolum or FFmpeg."""


@dataclass(frozen=True)
class Options:
    """How a scan is made; "kolum.cluster.scan" describes them."""

    map: Mapped = ()
    resources: Mapping[str, str] = field(default_factory=dict)
    readers: Mapping[str, int] = field(default_factory=dict)
    most_readers: int = READERS
    limits: Limits = Limits()
    exclude: tuple[str, ...] = ()
    by_content: bool = False
    fingerprint: bool = False
    places: bool = False
    wait: bool = False
    patience: float = 240
    ahead: int | None = None

    def of_probe(self) -> tuple[str, ...]:
        """As options of "kolum probe"."""
        chosen = (("--all", self.by_content), ("--fingerprint", self.fingerprint), ("--places", self.places))
        return tuple(word for word, is_chosen in chosen if is_chosen)

    def readers_of(self, server: str) -> int:
        return self.readers.get(server, self.most_readers)


@dataclass
class Progress:
    """How far a scan is."""

    found: int = 0
    done: int = 0
    failed: int = 0
    skipped: int = 0
    in_flight: int = 0
    machines: int = 0
    elapsed: float = 0
    is_found_final: bool = False

    @property
    def per_second(self) -> float:
        return self.done / self.elapsed if self.elapsed > 0 else 0


@dataclass
class Summary:
    """What a scan has done."""

    new: int = 0
    changed: int = 0
    described: int = 0
    failed: int = 0
    skipped: int = 0
    """Files that no machine could read just now; the next scan tries them again."""
    gone: int = 0
    """Files that were removed before a machine read them."""
    refused: int = 0
    """Files that changed while they were read; the next scan reads them again."""
    problems: int = 0
    """Folders that cannot be read."""
    failed_by_reason: Counter = field(default_factory=Counter)
    batches: int = 0
    redone: int = 0
    """Batches that were handed out again."""
    machines: Counter = field(default_factory=Counter)
    """Files by machine."""
    bytes_sent: int = 0
    """Names, without what Dask adds."""
    bytes_received: int = 0
    """Answers, as they come: compressed."""
    elapsed: float = 0
    stopped: bool = False
    library: str = ""

    @property
    def is_complete(self) -> bool:
        return not (self.failed or self.skipped or self.refused or self.problems or self.stopped)


Report = Callable[[Progress], None]
Note = Callable[[str], None]


def _workers_of(client: Any) -> dict[str, dict]:
    """All workers by their addresses; none while the scheduler is away."""
    try:
        try:
            return client.scheduler_info(n_workers=-1)["workers"]
        except TypeError:  # Earlier releases have no such argument, and no limit.
            return client.scheduler_info()["workers"]
    except OSError:
        return {}


def _roots_of(roots: Collection[str | os.PathLike]) -> list[str]:
    """Absolute, and none twice."""
    return list({os.path.realpath(root): os.path.abspath(os.fspath(root)) for root in roots}.values())


class Coordinator:
    """One scan."""

    def __init__(self, client: Any, roots: Collection[str | os.PathLike], library: str | None, options: Options,
                 report: Report, note: Note, stop: threading.Event) -> None:
        self._client, self._options, self._report, self._note, self._stop = client, options, report, note, stop
        self._library = library
        self._roots = _roots_of(roots)
        self._events: queue.SimpleQueue = queue.SimpleQueue()
        self._waiting: dict[str, collections.deque[Batch]] = {}
        self._in_flight: dict[str, tuple[Batch, Any, frozenset[str]]] = {}
        self._running: Counter = Counter()
        self._blind: dict[str, set[str]] = collections.defaultdict(set)
        self._walks: dict[str, Walk] = {}
        self._walking = 0
        self._workers: dict[str, dict] = {}
        self._most_jobs = 1
        self._version = ""
        self._begin = self._looked_at = self._reported_at = time.monotonic()
        self._is_over = False
        self.summary = Summary(library=library or "")
        self.progress = Progress()

    # ---- The whole

    def run(self) -> Summary:
        """Until everything is in the library, or "stop" is set."""
        self._await_machines()
        self._greet()
        self._writer = Writer(self._library, self._options.wait)
        try:
            self._start_walks()
            self._loop()
            self._close(self._writer.finish())
        finally:
            self._leave()
        return self.summary

    def _loop(self) -> None:
        while not self._is_done() and not self._stop.is_set():
            self._submit()
            self._take_events()
            self._look_now_and_then()
        self.summary.stopped = self._stop.is_set()

    def _is_done(self) -> bool:
        return self._walking == 0 and not self._in_flight and not any(self._waiting.values()) and self._events.empty()

    def _close(self, counts: Mapping[str, int]) -> None:
        self.summary.described = counts["added"]
        self.summary.failed = counts["failures"]
        self.summary.refused = counts["refused"]
        self.summary.elapsed = time.monotonic() - self._begin
        for remark in self._writer.remarks:
            self._note(remark)

    def _leave(self) -> None:
        self._is_over = True
        for walk in self._walks.values():
            walk.stop()
        futures = [future for _, future, _ in self._in_flight.values()]
        if futures and self._client.status == "running":
            with contextlib.suppress(OSError, TimeoutError):  # The scheduler may be leaving, too.
                self._client.cancel(futures)
        self._writer.abandon()

    # ---- Machines

    def _await_machines(self) -> None:
        deadline = time.monotonic() + _MACHINES_WITHIN
        while not self._look():
            if time.monotonic() > deadline or self._stop.is_set():
                raise ClusterError("the scheduler has no machines; dask worker SCHEDULER on each of them")
            time.sleep(0.1)

    def _greet(self) -> None:
        """Asks all machines for their versions. Those that come later are asked with their first batch."""
        self._version = self._own_version()
        answers = self._greetings()
        for address, answer in answers.items():
            name = self._name_of(address)
            try:
                version, jobs = greeting(answer)
            except Nonsense as error:
                raise ClusterError(f"{name}: {error}") from error
            if version != self._version:
                raise VersionMismatch(f"{name} has {shortened(version)}; the coordinator has {self._version}")
            self._most_jobs = max(self._most_jobs, jobs)

    def _greetings(self) -> dict[str, dict]:
        try:
            return self._client.run(_remote.greet)
        except Exception:
            for address in self._workers:
                self._require_package(address)
            raise

    def _require_package(self, address: str) -> None:
        try:
            self._client.run(_remote.greet, workers=[address])
        except Exception as error:  # Dask passes the worker's error on as a text.
            raise ClusterError(f"{self._name_of(address)} cannot load the Python package kolum: {error}") from error

    def _name_of(self, address: str) -> str:
        return f"{self._workers.get(address, {}).get('name', 'a machine')} at {address}"

    @staticmethod
    def _own_version() -> str:
        try:
            return _remote.version()
        except _remote.MachineError as error:
            raise ClusterError(str(error)) from error

    def _look(self) -> int:
        """Which machines there are, and how many."""
        if self._client.status not in ("running", "connecting", "newly-created"):
            raise ClusterError("the scheduler does not answer any more; the same command goes on where this one was")
        if self._client.status == "running":
            self._workers = _workers_of(self._client)
        self.progress.machines = len(self._workers)
        self._looked_at = time.monotonic()
        return len(self._workers)

    def _look_now_and_then(self) -> None:
        if time.monotonic() - self._looked_at < _LOOK_EVERY:
            return
        self._look()
        self._writer.require_alive()
        for walk in self._walks.values():
            walk.window.resize(self._ahead())
        self._take_back()

    def _take_back(self) -> None:
        """Batches that only machines might take that have left."""
        for key, (batch, future, allowed) in list(self._in_flight.items()):
            if allowed and self._client.status == "running" and not allowed & self._workers.keys():
                self._settle(key)
                future.cancel()
                self._again(batch)

    def _slots(self) -> int:
        return max(1, sum(worker["nthreads"] for worker in self._workers.values()))

    def _ahead(self) -> int:
        return self._options.ahead or 2 * self._slots() + 2

    # ---- Batches out

    def _start_walks(self) -> None:
        for root in self._roots:
            self._require_resource(root)
            walk = Walk(root, self._stale_options(), self._options.limits, self._events, self._ahead())
            self._walks[root] = walk
            self._walking += 1
            walk.start()

    def _stale_options(self) -> list[str]:
        chosen = [word for glob in self._options.exclude for word in ("--exclude", glob)]
        chosen += ["--all"] if self._options.by_content else []
        return chosen + (["--library", self._library] if self._library else [])

    def _require_resource(self, root: str) -> None:
        name = self._options.resources.get(root)
        if name and not self._those_for(root):
            raise ClusterError(f"no machine has the resource {name} for {root}; dask worker --resources {name}=1")

    def _most_running(self, server: str) -> int:
        """Batches of a server at a time, so that no more of its files than allowed are read in all the cluster."""
        return max(1, self._options.readers_of(server) // self._jobs_for(server))

    def _jobs_for(self, server: str) -> int:
        return max(1, min(self._most_jobs, self._options.readers_of(server)))

    def _submit(self) -> None:
        if self._client.status != "running":
            return
        for server, waiting in self._waiting.items():
            while waiting and self._running[server] < self._most_running(server):
                self._hand_out(waiting.popleft())

    def _hand_out(self, batch: Batch) -> None:
        task = _remote.Task(batch.root, tuple(found.name for found in batch.files), self._options.map, self._version,
                            self._jobs_for(batch.server), self._options.of_probe(), self._options.patience)
        allowed = self._seeing(batch.root)
        resource = self._options.resources.get(batch.root)
        key = f"kolum-batch-{uuid.uuid4()}"
        future = self._client.submit(
            _remote.describe, task, key=key, pure=False, workers=sorted(allowed) or None,
            resources={resource: 1} if resource else None)
        self.summary.bytes_sent += sum(map(len, task.names))
        self._in_flight[key] = batch, future, allowed
        self._running[batch.server] += 1
        self.progress.in_flight += 1
        future.add_done_callback(lambda done: self._events.put(("answer", done.key)))

    def _seeing(self, root: str) -> frozenset[str]:
        """The machines that may see a root; empty if nothing is known against any."""
        those = self._those_for(root)
        return frozenset(those - self._blind[root]) if those & self._blind[root] else frozenset()

    def _those_for(self, root: str) -> set[str]:
        """The machines with the resource of a root, or all."""
        name = self._options.resources.get(root)
        return {address for address, worker in self._workers.items() if not name or worker.get("resources", {}).get(name)}

    # ---- Answers in

    def _take_events(self) -> None:
        try:
            event, value = self._events.get(timeout=_REPORT_EVERY)
            for _ in range(_EVENTS_AT_A_TIME):
                getattr(self, "_on_" + event)(value)
                self._submit()
                event, value = self._events.get_nowait()
            getattr(self, "_on_" + event)(value)
        except queue.Empty:
            pass
        self._tell()

    def _tell(self) -> None:
        now = time.monotonic()
        self.progress.elapsed = now - self._begin
        if now - self._reported_at >= _REPORT_EVERY:
            self._reported_at = now
            self._report(self.progress)

    def _on_batch(self, batch: Batch) -> None:
        new = sum(found.is_new for found in batch.files)
        self.progress.found += len(batch.files)
        self.summary.new += new
        self.summary.changed += len(batch.files) - new
        self._waiting.setdefault(batch.server, collections.deque()).append(batch)

    def _on_problem(self, line: str) -> None:
        self.summary.problems += 1
        self._note(line)

    def _on_walked(self, walk: Walk) -> None:
        self._walking -= 1
        self.progress.is_found_final = self._walking == 0
        if walk.failure:
            raise ClusterError(walk.failure)

    def _on_answer(self, key: str) -> None:
        if key not in self._in_flight or self._is_over:
            return
        batch, future = self._settle(key)
        status = future.status
        if status == "finished":
            self._take(batch, future)
        elif status == "error":
            self._fail(batch, self._error_of(future))
        else:  # The scheduler has gone and forgotten it.
            self._again(batch)

    @staticmethod
    def _error_of(future: Any) -> BaseException:
        try:
            return future.exception(timeout=30)
        except Exception as error:  # The scheduler has left with it.
            return error

    def _settle(self, key: str) -> tuple[Batch, Any]:
        batch, future, _ = self._in_flight.pop(key)
        self._running[batch.server] -= 1
        self.progress.in_flight -= 1
        return batch, future

    def _again(self, batch: Batch) -> None:
        self.summary.redone += 1
        self._waiting.setdefault(batch.server, collections.deque()).appendleft(batch)

    def _take(self, batch: Batch, future: Any) -> None:
        try:
            packed: _remote.Answers = future.result(timeout=30)
        except Exception as error:  # The machine left with its answer, or the scheduler did.
            return self._retry(batch, f"its answer was lost: {type(error).__name__}: {shortened(error)}")
        try:
            answers = checked(packed, batch.files)
        except Nonsense as error:
            return self._retry(batch, str(error))
        if self._is_blind(batch, answers):
            return self._send_elsewhere(batch, future, answers)
        self._writer.add(answers.lines)
        for number, code, reason in answers.not_read:
            self._skip(batch.files[number], f"{reason} ({code}, on {answers.machine})")
        for number, why in answers.refused:
            self._skip(batch.files[number], f"{why} (on {answers.machine})")
        self.summary.bytes_received += len(packed.lines)
        self.summary.batches += 1
        self.summary.machines[answers.machine] += len(batch.files)
        self.summary.failed_by_reason.update(answers.failures)
        self.progress.failed += sum(answers.failures.values())
        self._finish(batch)

    def _is_blind(self, batch: Batch, answers: Checked) -> bool:
        """Nothing is there for the machine, but something is for the coordinator."""
        if not answers.sees_root:
            return True
        codes = {code for _, code, _ in answers.not_read}
        return (len(answers.not_read) == len(batch.files) and codes == {"not-found"}
                and any(os.path.lexists(found.name) for found in batch.files))

    def _is_from(self, address: str, future: Any) -> bool:
        """Whether an answer is of the machine that it names."""
        try:
            return address in self._client.who_has([future]).get(future.key, ())
        except Exception:  # The scheduler has left.
            return False

    def _send_elsewhere(self, batch: Batch, future: Any, answers: Checked) -> None:
        """To machines that may see the folder."""
        if not self._is_from(answers.address, future):
            return self._retry(batch, "its answer is not of the machine that it names")
        if answers.address not in self._blind[batch.root]:
            self._note(f"{answers.machine} does not see the files below {answers.root}")
        self._blind[batch.root].add(answers.address)
        self._look()
        if not self._those_for(batch.root) - self._blind[batch.root]:
            raise ClusterError(f"no machine sees the files below {batch.root}; --map says where they are mounted there")
        self._again(batch)

    def _skip(self, found: Found, why: str) -> None:
        if not os.path.lexists(found.name):
            self.summary.gone += 1
            return
        self.summary.skipped += 1
        self.progress.skipped += 1
        self._note(f"{os.fsdecode(found.name)}: {why}")

    def _finish(self, batch: Batch) -> None:
        self.progress.done += len(batch.files)
        self._walks[batch.root].window.leave()

    def _fail(self, batch: Batch, error: BaseException) -> None:
        if isinstance(error, _remote.VersionError):
            raise VersionMismatch(shortened(error))
        if isinstance(error, ImportError):
            raise ClusterError(f"a machine cannot load the Python package kolum: {shortened(error)}")
        self._retry(batch, shortened(error))

    def _retry(self, batch: Batch, why: str) -> None:
        """Once more; then in halves, until the file that is to blame is alone and can be skipped."""
        self._note(f"a batch of {len(batch.files)} files failed: {why}")
        if batch.tries + 1 < _TRIES:
            return self._again(batch.again())
        if len(batch.files) == 1:
            self._skip(batch.files[0], why)
            return self._finish(batch)
        self._walks[batch.root].window.squeeze_in()
        for half in batch.halves():
            self._again(half)
