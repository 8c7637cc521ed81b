#!/usr/bin/python3
"""Compares the library with bare FFmpeg and other tools, and writes bench/RESULTS.md and bench/results.svg. Run it on
an otherwise idle machine. With --group it measures only that group (or several, or "all"), prints what it found, and
writes nothing.

Needs the packages of the groups build and bench (scripts/packages.txt) and a release build with
-DKOLUM_BUILD_BENCHMARKS=ON; the files are made by corpus.py, once.
"""
import argparse
import collections
import json
import math
import os
import pathlib
import re
import resource
import statistics
import subprocess
import tempfile

import corpus
import machine

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/release/bench"
OVERHEAD = BUILD / "probe_overhead"
TOOLS = {"`kolum probe`": [ROOT / "build/release/tools/kolum/kolum", "probe", "--all", "--json"],
         "`ffprobe`": ["ffprobe", "-v", "error", "-show_format", "-show_streams", "-of", "json"],
         "`mediainfo`": ["mediainfo"]}

# The entry that a host calls for each file of a kind, and the others that read such a file.
RECORD = {"video": "GetVideoMetadata1", "song": "GetAudioMetadata", "photo": "GetPhotoHW"}
OTHERS = {"video": ["GetVideoMetadata3", "GetMediaInfo", "GetAudioTrack", "GetSubtitleTrack", "GetDRMProtectedInfo",
                    "GetVideoRotationDegree", "getVideoKeyFrameTime"],
          "song": [], "photo": ["GetPhotoMetadata"]}
# The key-frame search is compared with a search, all else with reading the stream information.
FLOORS = {"getVideoKeyFrameTime": "search"}

CLASSES = {"videos": ["phone videos", "films", "transport streams"], "songs": ["songs", "songs with covers"],
           "photos": ["photos"], "small files": ["small files"]}
FLOOR_LIMITS = {"videos": 0.30, "songs": 0.30, "photos": 0.02}
KIND_LIMITS = {"video": 0.30, "song": 0.30, "photo": 0.02}
SEARCH_LIMIT = 1.03
FILE_LIMIT, FILE_SLACK = 1.5, 100  # the slack in microseconds
OTHER_LIMITS = {"videos": 8, "songs": 2, "photos": 10, "small files": 2}

SECONDS = 4  # a file that takes longer gets fewer rounds

# The allocator's calls vary from run to run.
MEMORY_CALLS = {"brk", "mmap", "munmap", "mremap", "madvise", "mprotect"}
FILE_CALLS = {"open", "stat", "lstat", "fstat", "newfstatat", "read", "pread64", "lseek", "close", "write", "ioctl"}
READS = {"read", "pread64", "preadv"}
ONCE = {"open", "fstat", "close"}


def output(*command):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{command[0]} failed: {done.stderr}")
    return done.stdout


def kind(path):
    suffix = path.suffix[1:]
    return "song" if suffix in corpus.SONGS else "photo" if suffix in corpus.PHOTOS else "video"


def title(path):
    return f"{path.parent.name}/{path.name}"


def measure(paths, rounds, seconds, entries_of):
    """{path: {entry: microseconds of processor time}}; ENTRIES_OF says which entries read a kind."""
    times = collections.defaultdict(dict)
    for name in RECORD:
        chosen = [path for path in paths if kind(path) == name]
        if chosen and entries_of(name):
            for line in output(OVERHEAD, "times", rounds, seconds, ",".join(entries_of(name)), *chosen).splitlines():
                path, entry, taken = line.split("\t")
                times[pathlib.Path(path)][entry] = float(taken)
    return times


def main_times(paths, rounds):
    """{path: {"floor", "libkolum", "MediaInfo": microseconds}}."""
    times = measure(paths, rounds, SECONDS, lambda name: ["floor", RECORD[name], "MediaInfo"])
    return {path: {"floor": row["floor"], "libkolum": row[RECORD[kind(path)]], "MediaInfo": row["MediaInfo"]}
            for path, row in times.items()}


def other_times(paths, rounds):
    """{entry: [(path, microseconds, floor's microseconds)]} of the other entries, and what opening alone takes."""
    floors = {"video": ["floor", "open", "search"], "song": [], "photo": ["floor"]}
    times = measure(paths, rounds, SECONDS, lambda name: floors[name] + OTHERS[name])
    entries = {entry: [(path, row[entry], row[FLOORS.get(entry, "floor")])
                       for path, row in times.items() if entry in row]
               for entry in sum(OTHERS.values(), [])}
    return entries, sum(row.get("open", 0) for row in times.values())


def process_times(path, command):
    """Processor time of a whole process, in microseconds. Its result does not count: the tool has no codec number for
    Opus and says so after it has read everything."""
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime
    taken = []
    for _ in range(3):
        before = used()
        subprocess.run([*command, path], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        taken.append((used() - before) * 1e6)
    return statistics.median(taken)


def system_calls(entry, path):
    """{name: count} of the system calls of one call, without the allocator's."""
    with tempfile.NamedTemporaryFile("r") as trace:
        output("strace", "-f", "-o", trace.name, OVERHEAD, "calls", entry, path)
        between = re.split(r"^\d+ +getppid\(.*$", trace.read(), flags=re.MULTILINE)[1]
    calls = collections.Counter()
    for name, arguments in re.findall(r"^\d+ +(\w+)\((.*)$", between, flags=re.MULTILINE):
        # glibc writes fstat() as newfstatat() with an empty name, and open() as openat().
        is_fstat = name == "newfstatat" and re.match(r'\d+, ""', arguments)
        is_memory = name in MEMORY_CALLS and (name != "mmap" or "MAP_ANONYMOUS" in arguments)
        if not is_memory:
            calls["fstat" if is_fstat else "open" if name == "openat" else name] += 1
    return calls


def needless_calls(path):
    """What a record's call asks of the system beyond one open, one fstat, reads and one close."""
    calls = system_calls(RECORD[kind(path)], path)
    return {name: count - (name in ONCE) for name, count in calls.items()
            if name not in READS and count > (name in ONCE)}


def calls_beyond(entry, floor, path):
    on_files = lambda calls: sum(count for name, count in calls.items() if name in FILE_CALLS)
    return on_files(system_calls(entry, path)) - on_files(system_calls(floor, path))


def memory(entry, path):
    return [int(number) for number in output(OVERHEAD, "memory", entry, path).split("\t")[1:]]


def small_steps(names, value):
    """{benchmark: value} of the steps that need no file."""
    report = json.loads(output(BUILD / "filetype_bench", "--benchmark_format=json", "--benchmark_filter=" + names,
                               "--benchmark_repetitions=5", "--benchmark_report_aggregates_only"))
    return {row["run_name"]: value(row) for row in report["benchmarks"] if row["aggregate_name"] == "median"}


def bar(name, measured, limit, unit="", smaller=True):
    met = measured <= limit if smaller else measured >= limit
    sign = "at most" if smaller else "at least"
    return f"| {name} | {sign} {limit:g}{unit} | {measured:.4g}{unit} | {'met' if met else '**not met**'} |"


def of_groups(times, groups, names):
    return {path: times[path] for name in names for path in groups.get(name, [])}


def total(times, who):
    return sum(row[who] for row in times.values())


def ratio(times, over, under):
    """Of the sums."""
    return total(times, over) / total(times, under)


def middle(times, over, under):
    return statistics.median(row[over] / row[under] for row in times.values())


def group_table(times, groups):
    lines = ["| Group | Files | Floor | libkolum | to the floor | MediaInfo | to libkolum |",
             "|---|--:|--:|--:|--:|--:|--:|"]
    for name in groups:
        rows = of_groups(times, groups, [name])
        floor, ours, other = (f"{total(rows, who) / 1000:,.2f}" for who in ("floor", "libkolum", "MediaInfo"))
        to_floor, to_ours = (f"{ratio(rows, *pair):.3g}x ({middle(rows, *pair):.3g}x)"
                             for pair in (("libkolum", "floor"), ("MediaInfo", "libkolum")))
        lines.append(f"| {name} | {len(rows)} | {floor} | {ours} | {to_floor} | {other} | {to_ours} |")
    return lines


def file_table(times, paths):
    lines = ["| File | Floor | libkolum | to the floor | MediaInfo | to libkolum |", "|---|--:|--:|--:|--:|--:|"]
    for path in paths:
        floor, ours, other = (times[path][who] for who in ("floor", "libkolum", "MediaInfo"))
        lines.append(f"| {title(path)} | {floor:,.0f} | {ours:,.0f} | {ours / floor:.3g}x | "
                     f"{other:,.0f} | {other / ours:.3g}x |")
    return lines


def beyond_slack(ours, floor):
    return max(0, ours - FILE_SLACK) / floor


def class_bars(times, groups):
    """The bars that need no more than the main measurement."""
    classes = {name: of_groups(times, groups, parts) for name, parts in CLASSES.items()}
    lines = [bar(f"Sum over {name}, relative to the floor", ratio(classes[name], "libkolum", "floor"), limit, "x")
             for name, limit in FLOOR_LIMITS.items() if classes[name]]
    worst, path = max((beyond_slack(row["libkolum"], row["floor"]), path) for path, row in times.items())
    lines.append(bar(f"Worst file minus {FILE_SLACK} µs ({title(path)}), relative to the floor", worst, FILE_LIMIT,
                     "x"))
    return lines + [bar(f"MediaInfo over {name}, relative to libkolum", ratio(classes[name], "MediaInfo", "libkolum"),
                        limit, "x", smaller=False)
                    for name, limit in OTHER_LIMITS.items() if classes[name]]


def call_bars(paths):
    lines = []
    for name in ("song", "photo"):
        needless = {path: needless_calls(path) for path in paths if kind(path) == name}
        if needless:
            worst = max(needless, key=lambda path: sum(needless[path].values()))
            seen = ", ".join(f"{count} {call}" for call, count in sorted(needless[worst].items()))
            where = f" ({title(worst)}: {seen})" if seen else ""
            lines.append(bar(f"System calls of `{RECORD[name]}` other than one open, one fstat, reads and one close, "
                             f"worst {name}{where}", sum(needless[worst].values()), 0))
    return lines


def entry_bars(paths, rounds):
    """The bars of the other entries, and how long the rotation takes relative to opening alone."""
    entries, opening = other_times(paths, rounds)
    lines, worst = [], (0, "")
    for entry, rows in entries.items():
        limit = SEARCH_LIMIT if entry in FLOORS else KIND_LIMITS[kind(rows[0][0])]
        floor = "the floor of a search" if entry in FLOORS else "the floor"
        sums = sum(row[1] for row in rows) / sum(row[2] for row in rows)
        lines.append(bar(f"Sum of `{entry}`, relative to {floor}", sums, limit, "x"))
        worst = max([worst] + [(beyond_slack(ours, base), f"`{entry}` on {title(path)}") for path, ours, base in rows])
    lines.append(bar(f"Worst file of these entries minus {FILE_SLACK} µs ({worst[1]}), relative to the floor",
                     worst[0], FILE_LIMIT, "x"))
    return lines, sum(row[1] for row in entries["GetVideoRotationDegree"]) / opening


def resource_bars(groups):
    """System calls beyond the floor, memory, threads."""
    files = {title(path): path for paths in groups.values() for path in paths}
    samples = {"GetVideoMetadata1": "phone-videos/h264-1080p.mp4", "GetMediaInfo": "films/h264-1080p.mkv",
               "GetAudioTrack": "transport-streams/h264-720p.ts", "GetAudioMetadata": "songs/vbr.mp3",
               "GetPhotoHW": "photos/camera-12mp.jpg"}
    calls = [(entry, "floor", name) for entry, name in samples.items()]
    calls += [("GetVideoMetadata1", "floor", "films/h264-1080p.mkv"),
              ("GetVideoRotationDegree", "open", "phone-videos/h264-1080p.mp4")]
    lines = [bar(f"System calls on files of `{entry}` ({name}), beyond the floor",
                 calls_beyond(entry, floor, files[name]), 3) for entry, floor, name in calls]
    grown = {entry: memory(entry, files[name]) for entry, name in samples.items()}
    more = max(grown[entry][0] - memory("floor", files[name])[0] for entry, name in samples.items())
    growth = int(output(OVERHEAD, "flat", 10000, files["small-files/mpeg4.avi"]))
    speed = float(output(OVERHEAD, "parallel", 60, files["small-files/h264.mp4"], files["small-files/h264.mkv"]))
    return lines + [bar("Memory beyond the floor", more, 1024, " KiB"),
                    bar("Threads left behind", max(threads for _, threads in grown.values()), 0),
                    bar("Memory growth over 10,000 probes", growth, 256, " KiB"),
                    bar("Speed of two threads relative to one", speed, 1.8, "x", smaller=False)]


def isolation_bars(groups):
    """Wall time that a call takes longer if a worker reads the file."""
    files = {title(path): path for paths in groups.values() for path in paths}
    samples = {"GetVideoMetadata1": ["phone-videos/h264-1080p.mp4", "films/h264-1080p.mkv",
                                     "transport-streams/h264-720p.ts", "small-files/mpeg4.avi"],
               "GetAudioMetadata": ["songs/vbr.mp3", "small-files/ring.ogg"],
               "GetPhotoHW": ["photos/camera-12mp.jpg"]}
    return [bar(f"Isolation of `{entry}` ({name}), beyond a call in the same process",
                float(output(OVERHEAD, "isolated", 100, entry, files[name])), 60, " µs")
            for entry, names in samples.items() for name in names]


def process_table(groups):
    lines = ["| Group | " + " | ".join(TOOLS) + " |", "|---|" + "--:|" * len(TOOLS)]
    for name, paths in groups.items():
        cells = [sum(process_times(path, command) for path in paths) / len(paths) for command in TOOLS.values()]
        lines.append(f"| {name} | " + " | ".join(f"{cell / 1000:,.1f}" for cell in cells) + " |")
    return lines


def svg(times, groups):
    """Horizontal bars: for each group the mean per file on a logarithmic scale from 10 µs on."""
    colours = {"floor": "#9aa5b1", "libkolum": "#2563eb", "MediaInfo": "#d97706"}
    left, decade, top = 130, 110, 46
    width = lambda value: decade * math.log10(max(value, 10) / 10)
    bars, y = [], top
    for name in groups:
        rows = of_groups(times, groups, [name])
        bars.append(f'<text x="8" y="{y + 21}" font-weight="bold">{name}</text>')
        for who, colour in colours.items():
            mean = total(rows, who) / len(rows)
            bars.append(f'<rect x="{left}" y="{y}" width="{width(mean):.1f}" height="10" fill="{colour}"/>'
                        f'<text x="{left + 6 + width(mean):.1f}" y="{y + 9}">{who} {mean:,.0f} µs</text>')
            y += 12
        y += 10
    scale = []
    for i, label in enumerate(("10 µs", "100 µs", "1 ms", "10 ms", "100 ms")):
        x = left + decade * i
        scale.append(f'<line x1="{x}" x2="{x}" y1="{top - 4}" y2="{y - 6}" stroke="#e5e7eb"/>'
                     f'<text x="{x}" y="{top - 8}" text-anchor="middle" fill="#6b7280">{label}</text>')
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="720" height="{y}" font-family="sans-serif" font-size="10">'
            '<rect width="100%" height="100%" fill="white"/><text x="8" y="18" font-size="14">Processor time to '
            'describe a file, mean of each group (logarithmic scale)</text>' + "".join(scale + bars) + "</svg>\n")


def quick(groups, rounds):
    paths = sum(groups.values(), [])
    times = main_times(paths, rounds)
    by_time = sorted(paths, key=lambda path: times[path]["libkolum"])
    print("\n".join(file_table(times, by_time) + [""] + group_table(times, groups) + [""] +
                    class_bars(times, groups) + call_bars(paths)))


def method(paths, rounds, load):
    """What was measured, and how."""
    entries = ", ".join(f"`{entry}` for {name}s" for name, entry in RECORD.items())
    size = sum(path.stat().st_size for path in paths) / 1e9
    return [f"Written by `bench/compare.py`. Machine: {machine.description()}. Load average (1 minute) before and after: "
            f"{load:.2f}, {os.getloadavg()[0]:.2f}; above about 1, other processes were running, and the speed of two "
            "threads, which is measured by the clock, means little.", "",
            "The floor opens the file and reads the stream information with the same FFmpeg and its default options, "
            f"and does nothing else. libkolum is the function that hosts call for such a file: {entries}. MediaInfo "
            "opens the file with its library's default options and is asked for a dozen fields. All three take turns "
            "in one process; each has an uncounted call before the counted one. Times are processor time of all "
            f"threads: for each file the median of at most {rounds} rounds (at least 5; no new ones after {SECONDS} "
            f"seconds), then sums. The {len(paths)} files ({size:.1f} GB), made by `bench/corpus.py`, are in the page "
            "cache.", ""]


def classification(names):
    lines = ["| Method | per name of 1,000 | per name of 1,000,000 |", "|---|--:|--:|"]
    for way, text in (("library", "`KoLUM_GetFilenameType`"), ("unorderedMap", "`std::unordered_map`"),
                      ("perfectHash", "perfect hash")):
        lines.append(f"| {text} | {names[way + '/1000']:.1f} ns | {names[way + '/1000000']:.1f} ns |")
    return lines


def write_results(groups, rounds):
    paths = sum(groups.values(), [])
    load = os.getloadavg()[0]
    times = main_times(paths, rounds)
    bars = class_bars(times, groups) + call_bars(paths)
    entries, rotation = entry_bars(paths, rounds)
    bars += entries + resource_bars(groups) + isolation_bars(groups)
    names = small_steps("library|unorderedMap|perfectHash", lambda row: 1e9 / row["items_per_second"])
    boxes = small_steps("brand|boxWalk", lambda row: row["cpu_time"] / 1000)
    bars.append(bar("Classification, four kinds, hot", names["library/1000"], 35, " ns"))
    bars += [bar(f"MP4 boxes: {name}", taken, 6, " µs") for name, taken in boxes.items()]
    processes = process_table(groups)
    by_floor = sorted(paths, key=lambda path: times[path]["libkolum"] / times[path]["floor"], reverse=True)
    by_other = sorted(paths, key=lambda path: times[path]["MediaInfo"] / times[path]["libkolum"])

    out = ["# Measured", ""] + method(paths, rounds, load)
    out += ["## By groups", "", "Milliseconds of processor time, sums. Relative times are those of the sums, and in "
            "parentheses the median of the files.", ""] + group_table(times, groups)
    out += ["", "![Processor time to describe a file](results.svg)", ""]
    out += ["## Limits", "", "| What | Limit | Measured | |", "|---|---|---|---|"] + bars
    out += ["", "The floor of `getVideoKeyFrameTime` opens a decoder, seeks and reads up to a key frame; that of "
            "`GetVideoRotationDegree`, where system calls count, only opens the file. The latter reads no stream "
            f"information: it takes {rotation:.3f} times as long as opening alone.", ""]
    out += ["## The files that gain least", "", "Microseconds. Relative to the floor:", ""]
    out += file_table(times, by_floor[:10])
    out += ["", "Relative to MediaInfo:", ""] + file_table(times, by_other[:10])
    out += ["", "## Whole processes", "", "Milliseconds of processor time per file, mean of each group.", ""]
    out += processes
    out += ["", "## Classification", ""] + classification(names)
    out += ["", "## To repeat", "",
            "    cmake --preset release -DKOLUM_BUILD_BENCHMARKS=ON && ninja -C build/release",
            f"    bench/compare.py --rounds {rounds}", "",
            "`bench/compare.py --group songs --rounds 21` prints the files of one group and writes nothing.", ""]
    (ROOT / "bench/RESULTS.md").write_text("\n".join(out), encoding="utf-8")
    (ROOT / "bench/results.svg").write_text(svg(times, groups), encoding="utf-8")
    print("\n".join(out))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=101, help="at most so many for each file (101)")
    parser.add_argument("--group", action="append", choices=list(corpus.FILES) + ["all"])
    chosen = parser.parse_args()
    groups = corpus.make_all()
    if chosen.group:
        quick({name: paths for name, paths in groups.items() if {name, "all"} & set(chosen.group)}, chosen.rounds)
    else:
        write_results(groups, chosen.rounds)


main()
