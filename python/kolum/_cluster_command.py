"""The command "kolum-cluster"."""

from __future__ import annotations

import argparse
import contextlib
import json
import os
import shutil
import signal
import sys
import tempfile
import threading
from typing import Any, Iterator

from . import _remote
from ._batches import Limits
from ._coordinator import READERS, ClusterError, Progress, Summary

_DESCRIPTION = """Describes the media in folders that are new or changed, on all machines of a Dask cluster,
and keeps what it finds in a library of this machine. It may be stopped, or killed, at any time;
the same command goes on where it was."""

_EXAMPLES = """examples:
  kolum-cluster scan --local 4 /share
  kolum-cluster scan --scheduler tcp://head:8786 --library media.db /share
  kolum-cluster scan --scheduler tcp://head:8786 --map /share=/mnt/nas --readers 32 /share
"""

_UNITS = {"": 1, "K": 1 << 10, "M": 1 << 20, "G": 1 << 30, "T": 1 << 40}

# Keys of the summary's JSON, their labels, their values, and whether they are shown when they are 0.
_COUNTS = (("new", "New", "", True), ("changed", "Changed", "", True), ("described", "Described", "", True),
           ("failed", "Failed", "", True), ("skipped", "Skipped", "no machine could read them just now", False),
           ("gone", "Gone", "removed before they were read", False),
           ("refused", "Refused", "changed while they were read", False),
           ("problems", "Problems", "folders that cannot be read", False),
           ("batches", "Batches", "", True), ("redone", "Redone", "batches that were handed out again", False))



def _pair(text: str) -> tuple[str, str]:
    here, sign, there = text.partition("=")
    if not (here and sign and there):
        raise argparse.ArgumentTypeError(f"{text!r} is not of the form NAME=VALUE")
    return here, there


def _at_least_one(text: str) -> int:
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number from 1")
    return int(text)


def _readers(text: str) -> tuple[str, int]:
    server, _, number = text.rpartition("=")
    return server, _at_least_one(number)


def _bytes(text: str) -> int:
    number, unit = (text[:-1], text[-1].upper()) if text[-1:].isalpha() else (text, "")
    if unit not in _UNITS:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number of bytes, such as 16G")
    return _at_least_one(number) * _UNITS[unit]


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="kolum-cluster", description="Scans libraries by many machines, with Dask.")
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")
    scan = commands.add_parser(
        "scan", help="describes the media in folders, as \"kolum scan\" does",
        description=_DESCRIPTION, epilog=_EXAMPLES, formatter_class=argparse.RawDescriptionHelpFormatter)
    scan.add_argument("roots", metavar="ROOT", nargs="+", help="folders of media, as this machine sees them")
    cluster = scan.add_mutually_exclusive_group(required=True)
    cluster.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask scheduler, such as tcp://head:8786")
    cluster.add_argument("--local", metavar="N", type=_at_least_one,
                         help="starts a cluster of N processes on this machine")
    scan.add_argument("--library", metavar="FILE", help="the library; else that of \"kolum scan\"")
    scan.add_argument("--map", metavar="FROM=TO", type=_pair, action="append", default=[],
                      help="FROM is mounted as TO on the machines; may be repeated")
    scan.add_argument("--resource", metavar="ROOT=NAME", type=_pair, action="append", default=[],
                      help="only machines with this Dask resource see ROOT; may be repeated")
    scan.add_argument("--readers", metavar="[SERVER=]N", type=_readers, action="append", default=[],
                      help="files of each storage server, or of this one, that all machines together read at a time "
                      f"({READERS})")
    scan.add_argument("--batch-files", metavar="N", type=_at_least_one, default=Limits.files,
                      help=f"files in a batch at most ({Limits.files})")
    scan.add_argument("--batch-bytes", metavar="BYTES", type=_bytes, default=Limits.bytes,
                      help="bytes in a batch at most, unless one file has more (16G)")
    scan.add_argument("--exclude", metavar="GLOB", action="append", default=[],
                      help="leaves out matching files and folders")
    scan.add_argument("--all", action="store_true", help="decides by the files' content, not by their names")
    scan.add_argument("--fingerprint", action="store_true", help="a number to find copies by, from some of each file's bytes")
    scan.add_argument("--places", action="store_true", help="the nearest known place for positions, without a network")
    scan.add_argument("--wait", action="store_true", help="waits while another process writes to the library")
    scan.add_argument("--patience", metavar="SECONDS", type=_at_least_one, default=240,
                      help="a batch without any answer for so long is tried again (240)")
    scan.add_argument("--json", action="store_true", help="prints the summary as JSON")
    scan.add_argument("--progress", choices=["json", "none"], help="a line of JSON twice a second; no progress at all")
    return parser


def _camel(name: str) -> str:
    first, *others = name.split("_")
    return first + "".join(word.capitalize() for word in others)


def progress_object(progress: Progress) -> dict[str, Any]:
    values = {_camel(name): value for name, value in vars(progress).items()}
    return {**values, "elapsed": round(progress.elapsed, 1), "filesPerSecond": round(progress.per_second, 1)}


def summary_object(summary: Summary) -> dict[str, Any]:
    values = {_camel(name): value for name, value in vars(summary).items()}
    return {**values, "elapsed": round(summary.elapsed, 3),
            "failedByReason": [{"code": code, "count": count} for code, count in summary.failed_by_reason.most_common()],
            "machines": [{"machine": name, "files": files} for name, files in sorted(summary.machines.items())]}


def _printable(text: str) -> str:
    return "".join(c if c.isprintable() else c.encode("unicode_escape", "surrogatepass").decode() for c in text)


def summary_text(summary: Summary) -> str:
    rows = [(label, f"{getattr(summary, key):,}" + (f", {remark}" if remark else ""))
            for key, label, remark, is_always in _COUNTS if is_always or getattr(summary, key)]
    rows += [(f"  {code}", f"{count:,}") for code, count in summary.failed_by_reason.most_common()]
    files = summary.described + summary.failed
    rate = files / summary.elapsed if summary.elapsed > 0 else 0
    rows.append(("Time", f"{summary.elapsed:,.2f} s, {rate:,.0f} files/s"))
    rows += [("Machines" if not number else "", f"{name}: {count:,} files")
             for number, (name, count) in enumerate(sorted(summary.machines.items()))]
    if summary.library:
        rows.append(("Library", summary.library))
    width = max(len(label) for label, _ in rows)
    title = "Stopped" if summary.stopped else "Scanned"
    return "\n".join([title, *(f"  {_printable(label):{width}}  {_printable(value)}".rstrip() for label, value in rows)])


def progress_line(progress: Progress) -> str:
    total = f"{'' if progress.is_found_final else 'at least '}{progress.found:,} files"
    parts = [f"{progress.done:,} of {total}", f"{progress.per_second:,.0f}/s", f"{progress.in_flight} batches at hand",
             f"{progress.machines} machines"]
    parts += [f"{progress.failed:,} failed"] * bool(progress.failed)
    parts += [f"{progress.skipped:,} skipped"] * bool(progress.skipped)
    return ", ".join(parts)


class _Screen:
    """What people see while a scan runs."""

    def __init__(self, form: str | None) -> None:
        self._form = form
        self._has_line = form is None and sys.stderr.isatty() and os.environ.get("TERM", "dumb") != "dumb"

    def progress(self, progress: Progress) -> None:
        if self._form == "json":
            print(json.dumps({"progress": progress_object(progress)}), flush=True)
        elif self._has_line:
            width = shutil.get_terminal_size().columns - 1
            print("\r\x1b[K" + progress_line(progress)[:width], end="", file=sys.stderr, flush=True)

    def note(self, text: str) -> None:
        self.clear()
        print(f"kolum-cluster: {_printable(text.removeprefix('kolum: '))}", file=sys.stderr, flush=True)

    def clear(self) -> None:
        if self._has_line:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)


@contextlib.contextmanager
def _interruption() -> Iterator[tuple[threading.Event, list[int]]]:
    """Set by Ctrl-C and SIGTERM, with the signal; a second one ends the process."""
    stop, came = threading.Event(), []

    def handle(number: int, frame: object) -> None:
        came.append(number)
        stop.set()
        signal.signal(number, signal.SIG_DFL)

    previous = {number: signal.signal(number, handle) for number in (signal.SIGINT, signal.SIGTERM)}
    try:
        yield stop, came
    finally:
        for number, handler in previous.items():
            signal.signal(number, handler)


@contextlib.contextmanager
def _client(scheduler: str | None, local: int | None) -> Iterator[Any]:
    try:
        import distributed
    except ImportError as error:
        raise ClusterError(f"Dask is missing ({error}); apt-get install python3-distributed, or pip install distributed") \
            from error
    import logging
    for name in ("distributed", "asyncio"):
        logging.getLogger(name).setLevel(logging.CRITICAL)
    with contextlib.ExitStack() as stack:
        where: Any = scheduler
        if local:
            place = stack.enter_context(tempfile.TemporaryDirectory(prefix="kolum-cluster-", ignore_cleanup_errors=True))
            where = stack.enter_context(distributed.LocalCluster(
                n_workers=local, threads_per_worker=1, dashboard_address="127.0.0.1:0", local_directory=place,
                silence_logs=logging.CRITICAL))
        try:
            client = distributed.Client(where, set_as_default=False)
        except (OSError, ValueError) as error:
            raise ClusterError(f"no scheduler answers at {scheduler}: {error}") from error
        yield stack.enter_context(client)


def _scan(chosen: argparse.Namespace, screen: _Screen, stop: threading.Event) -> Summary:
    from .cluster import scan
    with _client(chosen.scheduler, chosen.local) as client:
        return scan(client, chosen.roots, chosen.library, map=dict(chosen.map), resources=dict(chosen.resource),
                    readers=dict(chosen.readers), limits=Limits(chosen.batch_files, chosen.batch_bytes),
                    exclude=chosen.exclude, by_content=chosen.all, fingerprint=chosen.fingerprint,
                    places=chosen.places, wait=chosen.wait, patience=chosen.patience,
                    progress=screen.progress, note=screen.note, stop=stop)


def run(arguments: list[str] | None = None) -> int:
    """The exit status: 0 all done, 1 something failed."""
    chosen = _parser().parse_args(arguments)
    screen = _Screen(chosen.progress)
    with _interruption() as (stop, came):
        try:
            summary = _scan(chosen, screen, stop)
        except (ClusterError, _remote.MachineError) as error:
            screen.note(str(error))
            return 1
        screen.clear()
        is_json = chosen.json or chosen.progress == "json"
        print(json.dumps({"summary": summary_object(summary)}) if is_json else summary_text(summary), flush=True)
    if came:
        signal.raise_signal(came[0])
    return 0 if summary.is_complete else 1
