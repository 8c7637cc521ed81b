#!/usr/bin/python3
"""Measures "kolum scan" on 100,000 small songs and photos, beside other tools, and writes bench/SCAN.md. Run it on an
otherwise idle machine; with --print it writes nothing.

Needs the packages of the groups build, test and bench (scripts/packages.txt) and a release build. The files, links to
copies of the sample library, are made once below build; they need some hundred MB.
"""
import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

import machine

ROOT = pathlib.Path(__file__).resolve().parent.parent
KOLUM = ROOT / "build/release/tools/kolum/kolum"
PLACE = ROOT / "build/bench-scan"
SAMPLES = PLACE / "samples"
SUFFIXES = {".mp3", ".flac", ".m4a", ".ogg", ".wav", ".jpg", ".png", ".gif", ".bmp", ".webp"}
PER_FOLDER = 100
LINKS = 500  # per copy: real files have one name each, but a copy of every file would fill the disk

FIRST_LIMIT = 1500  # files per second
AGAIN_LIMIT = 100_000
PARALLEL_LIMIT = 1.7
MEMORY_LIMIT = 64  # MiB


def make_files(count):
    """A folder with COUNT files in folders of 100, made once."""
    folder = PLACE / f"{count}-files"
    if folder.exists():
        return folder
    subprocess.run([ROOT / "scripts/make-samples.sh", SAMPLES], check=True, stdout=subprocess.DEVNULL)
    samples = sorted(path for path in SAMPLES.rglob("*") if path.suffix in SUFFIXES)
    part = PLACE / f"part-{count}"
    shutil.rmtree(part, ignore_errors=True)
    copies = {}
    for i in range(count):
        into = part / f"{i // PER_FOLDER:05}"
        into.mkdir(parents=True, exist_ok=True)
        sample = samples[i % len(samples)]
        target = into / f"{i % PER_FOLDER:02}-{sample.name}"
        number = i // len(samples)
        if number % LINKS == 0:
            shutil.copyfile(sample, target)
            copies[sample] = target
        else:
            os.link(copies[sample], target)
    part.rename(folder)
    return folder


class Run:
    """A finished process: seconds by the clock, seconds of processors, MiB of memory at most, its output."""

    def __init__(self, command):
        with tempfile.TemporaryFile() as out:
            begin = time.monotonic()
            process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=out,
                                       stderr=subprocess.DEVNULL)
            _, status, usage = os.wait4(process.pid, 0)
            self.seconds = time.monotonic() - begin
            self.processor = usage.ru_utime + usage.ru_stime
            self.memory = usage.ru_maxrss / 1024
            out.seek(0)
            self.output = out.read().decode(errors="replace")
        if os.waitstatus_to_exitcode(status) not in (0, 1):
            raise SystemExit(f"{command[0]} failed")


class Scan(Run):
    def __init__(self, library, folder, jobs):
        super().__init__([KOLUM, "scan", "--json", "--progress", "none", "--jobs", jobs, "--library", library, folder])
        self.summary = json.loads(self.output.splitlines()[-1])["summary"]


def files_opened_again(library, folder):
    """How many of the folder's files a further scan opens, as the kernel sees it."""
    with tempfile.NamedTemporaryFile("r") as trace:
        subprocess.run(["strace", "-f", "-o", trace.name, "-e", "trace=open,openat,openat2", KOLUM, "scan", "--library",
                        library, folder], check=True, stdout=subprocess.DEVNULL)
        names = re.findall(r'"([^"]*)"', trace.read())
    return sum(pathlib.Path(name).suffix in SUFFIXES for name in names)


def row(name, run, files):
    return (f"| {name} | {files:,} | {run.seconds:,.2f} | {files / run.seconds:,.0f} | {run.processor:,.1f} | "
            f"{run.memory:,.0f} |")


def bar(name, measured, limit, unit="", smaller=False):
    met = measured <= limit if smaller else measured >= limit
    sign = "at most" if smaller else "at least"
    return f"| {name} | {sign} {limit:,}{unit} | {measured:,.4g}{unit} | {'met' if met else '**not met**'} |"


def others(folder, count):
    """The other tools, on the first COUNT files: they would take hours for all of them."""
    parts = sorted(path for path in folder.iterdir())[:count // PER_FOLDER]
    commands = {"`exiftool -r -json`": ["exiftool", "-r", "-json"], "`mediainfo --Output=JSON`": ["mediainfo",
                                                                                              "--Output=JSON"]}
    return [row(name, Run([*command, *parts]), count) for name, command in commands.items() if shutil.which(command[0])]


def measure(count, million):
    folder = make_files(count)
    rows, bars, load = [], [], os.getloadavg()[0]
    with tempfile.TemporaryDirectory(dir=PLACE) as place:
        first = {}
        subprocess.run(f"find {folder} -type f -exec cat {{}} + >/dev/null", shell=True, check=True)
        for jobs in (1, 2):
            library = pathlib.Path(place) / f"{jobs}.db"
            first[jobs] = Scan(library, folder, jobs)
            rows.append(row(f"`kolum scan`, first scan, {jobs} job{'s' * (jobs > 1)}", first[jobs], count))
        again = min((Scan(library, folder, 2) for _ in range(5)), key=lambda run: run.seconds)
        rows.append(row("`kolum scan`, nothing has changed", again, count))
        assert again.summary["unchanged"] == count, again.summary
        opened = files_opened_again(library, folder)
        memory = max(first[2].memory, again.memory)
        if million:
            large = make_files(1_000_000)
            run = Scan(library, large, 2)
            rows.append(row("`kolum scan`, first scan, 2 jobs", run, 1_000_000))
            again_large = Scan(library, large, 2)
            rows.append(row("`kolum scan`, nothing has changed", again_large, 1_000_000))
            memory = max(run.memory, again_large.memory)
        bars = [bar("Files per second of a first scan, 2 jobs", count / first[2].seconds, FIRST_LIMIT),
                bar("Files per second if nothing has changed", count / again.seconds, AGAIN_LIMIT),
                bar("Bytes read of media then", again.summary["bytesRead"], 0, smaller=True),
                bar("Media files opened then", opened, 0, smaller=True),
                bar("Speed of two jobs relative to one", first[1].seconds / first[2].seconds, PARALLEL_LIMIT, "x"),
                bar(f"Memory of the scan, {'1,000,000' if million else f'{count:,}'} files", memory, MEMORY_LIMIT,
                    " MiB", smaller=True)]
    return rows + others(folder, 2000), bars, load


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--files", type=int, default=100_000, help="so many (100000)")
    parser.add_argument("--million", action="store_true", help="also scans 1,000,000 files, for its memory")
    parser.add_argument("--print", action="store_true", help="writes nothing")
    chosen = parser.parse_args()
    PLACE.mkdir(parents=True, exist_ok=True)
    rows, bars, load = measure(chosen.files, chosen.million)
    text = ["# Scanning", "", f"Written by `bench/scan.py`. Machine: {machine.description()}. Load average (1 minute) "
            f"before and after: {load:.2f}, {os.getloadavg()[0]:.2f}; above about 1, other processes were running.", "",
            "The files are small songs and photos in folders of 100, links to copies of the sample library, and are in the "
            "page cache. Times are by the clock, of whole processes; \"processor\" is the time of all threads. The library "
            "is on the same disk as the files, and every commit waits for it.", "",
            "| What | Files | Seconds | Files per second | Processor | MiB of memory |", "|---|--:|--:|--:|--:|--:|"]
    text += rows + ["", "## Limits", "", "| What | Limit | Measured | |", "|---|---|---|---|"] + bars
    text += ["", "## To repeat", "", "    cmake --preset release && ninja -C build/release",
             "    bench/scan.py" + " --million" * chosen.million, ""]
    if not chosen.print:
        (ROOT / "bench/SCAN.md").write_text("\n".join(text), encoding="utf-8")
    print("\n".join(text))


if __name__ == "__main__":
    main()
