"""What a measurement was made on."""
import os
import pathlib
import platform
import re
import shutil
import subprocess


def version(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False).stdout


def description():
    """The machine and the releases of the programs that are compared; those that are missing are left out."""
    cpu = re.search(r"model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text()).group(1)
    tools = {"FFmpeg": lambda: version("ffprobe", "-version").split()[2],
             "MediaInfo": lambda: version("mediainfo", "--Version").split("v")[-1].strip(),
             "ExifTool": lambda: version("exiftool", "-ver").strip()}
    programs = {"FFmpeg": "ffprobe", "MediaInfo": "mediainfo", "ExifTool": "exiftool"}
    known = [f"{name} {ask()}" for name, ask in tools.items() if shutil.which(programs[name])]
    return (f"{cpu}, {os.cpu_count()} CPUs, {platform.system()} {platform.release()}; {', '.join(known)}, "
            f"{platform.freedesktop_os_release()['PRETTY_NAME']}")
