#!/usr/bin/python3
"""compare.py [ROUNDS]: compares the library with bare FFmpeg and other tools, and writes bench/RESULTS.md and
bench/results.svg. Run it on an otherwise idle machine.

Needs the packages of the groups build, test and bench (scripts/packages.txt) and a release build with
-DKOLUM_BUILD_BENCHMARKS=ON; makes its own files below build/bench-corpus.
"""
import collections
import json
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/release/bench"
CORPUS = ROOT / "build/bench-corpus"
OVERHEAD = BUILD / "probe_overhead"
ROUNDS = int(sys.argv[1]) if len(sys.argv) > 1 else 301

VIDEO = "-f lavfi -i testsrc2=size=1280x720:rate=25:duration=10"
TONE = "-f lavfi -i sine=frequency=440:duration=10"
H264 = VIDEO + " " + TONE + " -c:v libx264 -preset ultrafast -c:a aac"
MPEG2 = VIDEO + " " + TONE + " -c:v mpeg2video -b:v 4M -c:a mp2"
MPEG4 = VIDEO + " " + TONE + " -c:v mpeg4 -b:v 2M -c:a libmp3lame"
FILES = {
    "h264.mp4": H264, "fast-start.mp4": H264 + " -movflags +faststart", "quicktime.mov": H264,
    "h264.mkv": H264, "h264.ts": H264, "h264.m2ts": H264 + " -f mpegts -mpegts_m2ts_mode 1",
    "h264.flv": H264, "mpeg2.ts": MPEG2, "mpeg2.mpg": MPEG2, "xvid.avi": MPEG4 + " -vtag XVID",
    "vp9.mkv": VIDEO + " " + TONE + " -c:v libvpx -deadline realtime -c:a libvorbis",
    "wmv.wmv": VIDEO + " " + TONE + " -c:v wmv2 -c:a wmav2", "song.mp3": TONE, "song.flac": TONE,
    "song.m4a": TONE, "song.ogg": TONE + " -c:a libvorbis", "song.wav": TONE, "song.wma": TONE,
    "photo.jpg": "-f lavfi -i testsrc2=size=4000x3000:rate=1 -frames:v 1",
    "photo.png": "-f lavfi -i testsrc2=size=1920x1080:rate=1 -frames:v 1",
}


def output(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True).stdout


def make_corpus():
    CORPUS.mkdir(parents=True, exist_ok=True)
    for name, options in FILES.items():
        if not (CORPUS / name).exists():
            output("ffmpeg", "-nostdin", "-y", *options.split(), CORPUS / name)
    return [CORPUS / name for name in FILES]


def probe_times(paths):
    """{file: {entry: microseconds}}, and {entry: the entry that is its floor}."""
    times, floors = collections.defaultdict(dict), {}
    for line in output(OVERHEAD, "times", ROUNDS, *paths).splitlines():
        path, entry, floor, taken = line.split("\t")
        times[pathlib.Path(path).name][entry] = float(taken)
        floors[entry] = floor
    return times, floors


def process_times(paths, command):
    """Medians of one process per file, in microseconds."""
    medians = {}
    for path in paths:
        taken = []
        for _ in range(11):
            before = time.perf_counter()
            output(*command, path)
            taken.append((time.perf_counter() - before) * 1e6)
        medians[path.name] = statistics.median(taken)
    return medians


def system_calls(entry, path):
    """System calls on files per call of an entry, without those that a process makes once: those of
    six calls minus those of one. Other calls, by the allocator and FFmpeg's threads, vary from run to run."""
    files = "open,openat,stat,lstat,fstat,newfstatat,read,pread64,lseek,close,write,ioctl"
    def total(count):
        trace = subprocess.run(["strace", "-f", "-c", "-e", "trace=" + files, OVERHEAD, "calls", entry] + [path] * count,
                               check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               text=True).stderr
        return int(re.search(r"(\d+)(?:\s+\d+)? total", trace).group(1))
    return (total(6) - total(1)) / 5


def memory(entry, path):
    return [int(number) for number in output(OVERHEAD, "memory", entry, path).split("\t")[1:]]


def classification():
    report = json.loads(output(BUILD / "filetype_bench", "--benchmark_format=json",
                               "--benchmark_filter=library|unorderedMap|perfectHash",
                               "--benchmark_repetitions=5", "--benchmark_report_aggregates_only"))
    found = {}
    for row in report["benchmarks"]:
        if row["aggregate_name"] == "median":
            found[row["run_name"]] = 1e9 / row["items_per_second"]
    return found


def box_walk():
    report = json.loads(output(BUILD / "filetype_bench", "--benchmark_format=json",
                               "--benchmark_filter=brand|boxWalk", "--benchmark_repetitions=5",
                               "--benchmark_report_aggregates_only"))
    return {row["run_name"]: row["cpu_time"] / 1000 for row in report["benchmarks"]
            if row["aggregate_name"] == "median"}


def versions():
    found = {"FFmpeg": output("ffprobe", "-version").split()[2],
             "MediaInfo": output("mediainfo", "--Version").split("v")[-1].strip()}
    cpu = re.search(r"model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text()).group(1)
    return found, cpu


def bar(name, measured, limit, unit, smaller=True):
    met = measured <= limit if smaller else measured >= limit
    sign = "at most" if smaller else "at least"
    verdict = "met" if met else "**not met**"
    return f"| {name} | {sign} {limit:g}{unit} | {measured:.4g}{unit} | {verdict} |"


def svg(rows):
    """Horizontal bars, one group per file: microseconds on a logarithmic scale."""
    import math
    colours = {"floor": "#9aa5b1", "libkolum": "#2563eb", "MediaInfo": "#d97706",
               "ffprobe": "#059669", "mediainfo": "#b45309"}
    height, lines, y = 12, [], 40
    scale = lambda value: 60 * math.log10(max(value, 10) / 10)
    for name, values in rows:
        lines.append(f'<text x="8" y="{y + 10}" font-weight="bold">{name}</text>')
        for label, value in values.items():
            lines.append(f'<rect x="130" y="{y}" width="{scale(value):.1f}" height="{height - 2}" '
                         f'fill="{colours[label]}"/><text x="{136 + scale(value):.1f}" '
                         f'y="{y + 9}">{label} {value:,.0f} µs</text>')
            y += height
        y += 8
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="640" height="{y}" '
            f'font-family="sans-serif" font-size="10"><rect width="100%" height="100%" fill="white"/>'
            f'<text x="8" y="20" font-size="14">Time to describe a file (logarithmic scale)</text>'
            + "".join(lines) + "</svg>\n")


def main():
    paths = make_corpus()
    load_before = os.getloadavg()[0]
    times, floors = probe_times(paths)
    ffprobe = process_times(paths, ["ffprobe", "-v", "error", "-show_format", "-show_streams", "-of",
                                    "json"])
    mediainfo = process_times(paths, ["mediainfo"])
    tool = process_times(paths, [ROOT / "build/release/tools/kolum/kolum", "probe", "--json"])
    names = classification()
    boxes = box_walk()
    entries = [entry for entry in floors if entry not in ("floor", "open", "search", "MediaInfo")]

    overall, worst = {}, (0, "")
    for entry in entries:
        pairs = [(row[entry], row[floors[entry]], name) for name, row in times.items()
                 if entry in row]
        overall[entry] = sum(p[0] for p in pairs) / sum(p[1] for p in pairs)
        for ours, base, name in pairs:
            worst = max(worst, ((ours - 50) / base, f"{entry} on {name}"))
    rotations = [(row["GetVideoRotationDegree"], row["open"]) for row in times.values() if "open" in row]
    rotation_by_opening = sum(r[0] for r in rotations) / sum(r[1] for r in rotations)
    samples = {"GetVideoMetadata1": "h264.mp4", "GetMediaInfo": "h264.mkv",
               "GetAudioTrack": "h264.ts", "GetAudioMetadata": "song.mp3", "GetPhotoHW": "photo.jpg"}
    calls = {e: system_calls(e, CORPUS / n) - system_calls("floor", CORPUS / n)
             for e, n in samples.items()}
    calls["GetVideoMetadata1 (Matroska)"] = (system_calls("GetVideoMetadata1", CORPUS / "h264.mkv") -
                                             system_calls("floor", CORPUS / "h264.mkv"))
    rotation = (system_calls("GetVideoRotationDegree", CORPUS / "h264.mp4") -
                system_calls("open", CORPUS / "h264.mp4"))
    calls["GetVideoRotationDegree"] = rotation
    grown = {e: memory(e, CORPUS / n) for e, n in samples.items()}
    base = {n: memory("floor", CORPUS / n) for n in samples.values()}
    more = max(grown[e][0] - base[n][0] for e, n in samples.items())
    threads = max(number[1] for number in grown.values())
    flat = int(output(OVERHEAD, "flat", 10000, CORPUS / "xvid.avi"))
    two = float(output(OVERHEAD, "parallel", 60, CORPUS / "h264.mp4", CORPUS / "h264.mkv"))
    found, cpu = versions()

    out = ["# Measured", "",
           f"Written by `bench/compare.py` with {ROUNDS} rounds; medians. Machine: {cpu}, "
           f"{os.cpu_count()} CPUs, {platform.system()} {platform.release()}; "
           f"FFmpeg {found['FFmpeg']}, MediaInfo {found['MediaInfo']}, "
           f"{platform.freedesktop_os_release()['PRETTY_NAME']}. Load average (1 minute) before and "
           f"after: {load_before:.2f}, {os.getloadavg()[0]:.2f}; above about 1, other processes "
           "were running and the times, especially those of two threads, mean little.", "",
           "The floor is a program that opens the file and reads the stream information with the same "
           "FFmpeg, and does nothing else; its calls and ours alternate. The floor of `getVideoKeyFrameTime` "
           "opens a decoder, seeks and reads up to a key frame instead. `GetVideoRotationDegree` reads no "
           f"stream information: it takes {rotation_by_opening:.3f} times as long as opening alone.", "",
           "## Limits", "", "| What | Limit | Measured | |", "|---|---|---|---|"]
    for entry, ratio in overall.items():
        out.append(bar(f"`{entry}` relative to the floor, over the corpus", ratio, 1.03, ""))
    out.append(bar(f"Worst file minus 50 µs ({worst[1]}) relative to the floor", worst[0], 1.10, ""))
    for entry, number in calls.items():
        out.append(bar(f"System calls on files of `{entry}` beyond the floor", number, 3, ""))
    out.append(bar("Memory beyond the floor", more, 1024, " KiB"))
    out.append(bar("Threads left behind", threads, 0, ""))
    out.append(bar("Memory growth over 10,000 probes", flat, 256, " KiB"))
    out.append(bar("Speed of two threads relative to one", two, 1.8, "", smaller=False))
    out.append(bar("Classification, four kinds, hot", names["library/1000"], 35, " ns"))
    for name, taken in boxes.items():
        out.append(bar(f"MP4 boxes: {name}", taken, 6, " µs"))
    out += ["", "## Classification", "", "| Method | per name of 1,000 | per name of 1,000,000 |", "|---|---|---|"]
    for way, title in (("library", "`KoLUM_GetFilenameType`"), ("unorderedMap", "`std::unordered_map`"),
                       ("perfectHash", "perfect hash")):
        out.append(f"| {title} | {names[way + '/1000']:.1f} ns | {names[way + '/1000000']:.1f} ns |")
    out += ["", "## Probing", "", "Microseconds; in parentheses relative to the floor. The last three columns are whole processes.", "",
            "| File | floor | libkolum | MediaInfo | `kolum probe` | `ffprobe` | `mediainfo` |",
            "|---|---|---|---|---|---|---|"]
    rows = []
    for name, row in times.items():
        ours = next(row[e] for e in ("GetVideoMetadata1", "GetAudioMetadata", "GetPhotoHW") if e in row)
        cells = [ours, row["MediaInfo"], tool[name], ffprobe[name], mediainfo[name]]
        out.append(f"| {name} | {row['floor']:,.0f} | " +
                   " | ".join(f"{cell:,.0f} ({cell / row['floor']:.2f})" for cell in cells) + " |")
        rows.append((name, {"floor": row["floor"], "libkolum": ours, "MediaInfo": row["MediaInfo"],
                            "ffprobe": ffprobe[name], "mediainfo": mediainfo[name]}))
    out += ["", "![Time to describe a file](results.svg)", ""]
    (ROOT / "bench/RESULTS.md").write_text("\n".join(out), encoding="utf-8")
    (ROOT / "bench/results.svg").write_text(svg(rows), encoding="utf-8")
    print("\n".join(out[:40]))


main()
