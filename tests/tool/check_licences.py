#!/usr/bin/env python3
"""check_licences.py KOLUM PAGE FILE...: compares the licences that KOLUM lists with the table of
PAGE, and with the libraries that the FILEs (programs and libraries of this project) need."""

import json
import re
import subprocess
import sys
from pathlib import Path

# The run-time of the languages.
SYSTEM = {"libc", "libm", "libstdc++", "libgcc_s", "ld-linux-x86-64"}

failures: list[str] = []
kolum, page, *files = sys.argv[1:]
said = subprocess.run([kolum, "doctor", "--json"], capture_output=True, text=True).stdout
parts = [part for part in map(json.loads, said.splitlines()) if part["kind"] == "licence"]

table = [[cell.strip() for cell in line.split("|")[1:-1]]
         for line in Path(page).read_text().splitlines() if line.startswith("| ")][1:]
for part in parts:
    licence = part["licence"]
    if part["part"].startswith("FFmpeg"):
        if not re.fullmatch(r"(L?GPL version [0-9.]+ or later|nonfree and unredistributable)", licence):
            failures.append(f"FFmpeg's licence: {licence}")
        licence = "LGPL or GPL, by its build"
    # It may have been built without libgeonames, in which case its licence is that of its sources.
    if part["part"] == "osm_info" and licence == "MIT":
        licence = "GPL-3.0-only"
    row = [part["part"], ", ".join(part.get("linkedBy", [])), licence]
    if row not in table:
        failures.append(f"{page} lacks {row}")
if len(table) != len(parts) or not parts:
    failures.append(f"{page} has {len(table)} parts, not {len(parts)}")

own = {part["part"] for part in parts if "linkedBy" not in part}
listed = {(user, library) for part in parts if part["isThere"] for user in part.get("linkedBy", ())
          for library in re.findall(r"lib[a-z0-9.-]*[a-z0-9]", part["part"])}
linked = set()
for file in files:
    user = Path(file).name.split(".so")[0]
    if user not in own:
        failures.append(f"{user} has no licence")
    dynamic = subprocess.run(["readelf", "--dynamic", "--wide", file], capture_output=True, text=True,
                             check=True).stdout
    needed = {name.split(".so")[0] for name in re.findall(r"NEEDED.*\[(.*)\]", dynamic)}
    linked |= {(user, name) for name in needed - SYSTEM - own}
failures += [f"{user} is linked with {library}, which has no licence" for user, library in sorted(linked - listed)]
failures += [f"{user} is not linked with {library}" for user, library in sorted(listed - linked)]
for failure in failures:
    print(failure)
sys.exit(bool(failures))
