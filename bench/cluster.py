#!/usr/bin/python3
"""Measures "kolum-cluster scan" with 1, 2 and 4 workers on this machine, and what each part of it costs per file, and
writes bench/CLUSTER.md. Run it on an otherwise idle machine; with --print it writes nothing.

Needs the packages of the groups build, test and bench (scripts/packages.txt) and a release build. The files are those of
bench/scan.py.
"""
import argparse
import json
import os
import pathlib
import socket
import subprocess
import sys
import tempfile
import time

import machine
from scan import KOLUM, PLACE, ROOT, make_files

WORKERS = (1, 2, 4)
ENVIRONMENT = {**os.environ, "PYTHONPATH": str(ROOT / "python"), "KOLUM_TOOL": str(KOLUM),
               "KOLUM_LIBRARY": str(ROOT / "build/release/src/libkolum.so.1")}
TICKS = os.sysconf("SC_CLK_TCK")


def processor_seconds(process):
    """Of a process that runs."""
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def start(*command):
    return subprocess.Popen([str(word) for word in command], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Cluster:
    """A scheduler and workers with one thread and one processor each."""

    def __init__(self, count, place):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.address = f"tcp://127.0.0.1:{port}"
        dask = [sys.executable, "-m", "dask"]
        self.scheduler = start(*dask, "scheduler", "--host", "127.0.0.1", "--port", port, "--no-dashboard")
        self.workers = [start("taskset", "-c", number % os.cpu_count(), *dask, "worker", self.address, "--nthreads", 1, "--name",
                              number, "--no-nanny", "--no-dashboard", "--local-directory", place) for number in range(count)]
        self._wait(count)

    def _wait(self, count):
        code = ("import sys, distributed\nwith distributed.Client(sys.argv[1], timeout=60) as client:\n"
                "    client.wait_for_workers(int(sys.argv[2]), timeout=60)")
        subprocess.run([sys.executable, "-c", code, self.address, str(count)], check=True)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        for process in [*self.workers, self.scheduler]:
            process.terminate()
            process.wait()


class Finished:
    """What a process has taken, with the processes that it has waited for."""

    def __init__(self, command, **options):
        begin = time.monotonic()
        process = subprocess.Popen([str(word) for word in command], env=ENVIRONMENT, **options)
        _, status, usage = os.wait4(process.pid, 0)
        self.seconds = time.monotonic() - begin
        self.processor = usage.ru_utime + usage.ru_stime
        self.memory = usage.ru_maxrss / 1024
        if os.waitstatus_to_exitcode(status) not in (0, 1):
            raise SystemExit(f"{command[0]} failed")


def scan(count, folder, place):
    library = pathlib.Path(place) / f"{count}.db"
    with Cluster(count, place) as cluster, tempfile.TemporaryFile("w+") as out:
        before = processor_seconds(cluster.scheduler)
        run = Finished([sys.executable, "-m", "kolum.cluster", "scan", "--scheduler", cluster.address, "--library", library,
                        "--json", "--readers", 64, folder], stdout=out)
        run.scheduler = processor_seconds(cluster.scheduler) - before
        out.seek(0)
        run.summary = json.loads(out.read().splitlines()[-1])["summary"]
    run.library = library
    return run


def filters(folder, library, place):
    """The walk and the writer alone."""
    lines = pathlib.Path(place) / "lines"
    with open(lines, "wb") as out:
        subprocess.run([KOLUM, "library", "export", "--json", "--library", library], stdout=out, check=True)
    with open(lines, "rb") as source:
        add = Finished([KOLUM, "library", "add", "--library", pathlib.Path(place) / "add.db"], stdin=source,
                       stdout=subprocess.DEVNULL)
    stale = Finished([KOLUM, "library", "stale", "-0", "--library", pathlib.Path(place) / "none.db", folder],
                     stdout=subprocess.DEVNULL)
    return stale, add, library.stat().st_size


def measure(count, place):
    folder = make_files(count)
    local = Finished([KOLUM, "scan", "--library", pathlib.Path(place) / "local.db", folder], stdout=subprocess.DEVNULL)
    runs = {number: scan(number, folder, place) for number in WORKERS}
    stale, add, size = filters(folder, runs[1].library, place)
    return local, runs, stale, add, size


def micro(seconds, count):
    return f"{1e6 * seconds / count:,.1f}"


def report(count, measured, load):
    local, runs, stale, add, size = measured
    one = runs[1]
    rows = [f"| `kolum scan` | {local.seconds:,.1f} | {count / local.seconds:,.0f} |"]
    rows += [f"| `kolum-cluster scan`, {number} worker{'s' * (number > 1)} | {run.summary['elapsed']:,.1f} | "
             f"{count / run.summary['elapsed']:,.0f} |" for number, run in runs.items()]
    python = one.processor - stale.processor - add.processor
    costs = [("Walk (`kolum library stale`), processor", micro(stale.processor, count) + " µs"),
             ("Writer (`kolum library add`), processor", micro(add.processor, count) + " µs"),
             ("Writer, by the clock (it waits for the disk)", micro(add.seconds, count) + " µs"),
             ("Coordinator's Python, with its start, processor", micro(python, count) + " µs"),
             ("Scheduler, processor", micro(one.scheduler, count) + " µs"),
             ("Names sent", f"{one.summary['bytesSent'] / count:,.0f} bytes"),
             ("Answers received, compressed", f"{one.summary['bytesReceived'] / count:,.0f} bytes"),
             ("Library", f"{size / count:,.0f} bytes")]
    return ["# Scanning by many machines", "",
            f"Written by `bench/cluster.py`. Machine: {machine.description()}. Load average (1 minute) before and after: "
            f"{load:.2f}, {os.getloadavg()[0]:.2f}; above about 1, other processes were running.", "",
            f"{count:,} small songs and photos, in the page cache. All workers, the scheduler, the coordinator and the writer "
            "share this machine's processors: more workers than processors cannot be faster here.", "",
            "| What | Seconds | Files per second |", "|---|--:|--:|", *rows, "", "## Per file", "",
            f"With one worker; batches of {-(-count // one.summary['batches'])} files.", "", "| What | |", "|---|--:|",
            *(f"| {name} | {value} |" for name, value in costs), "",
            f"The coordinator's process had {one.memory:,.0f} MiB at most.", ""]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--files", type=int, default=100_000, help="so many (100000)")
    parser.add_argument("--print", action="store_true", help="writes nothing")
    chosen = parser.parse_args()
    PLACE.mkdir(parents=True, exist_ok=True)
    load = os.getloadavg()[0]
    with tempfile.TemporaryDirectory(dir=PLACE) as place:
        text = "\n".join(report(chosen.files, measure(chosen.files, place), load))
    if not chosen.print:
        (ROOT / "bench/CLUSTER.md").write_text(text, encoding="utf-8")
    print(text)


if __name__ == "__main__":
    main()
