import os
import shutil
import subprocess
from pathlib import Path

import pytest

from machines import Machines


@pytest.fixture(scope="session")
def samples() -> Path:
    """The sample library that "./run" makes."""
    return Path(os.environ["KOLUM_SAMPLES"])


@pytest.fixture(scope="session")
def kolum_tool():
    """Runs the kolum tool."""

    def run(*arguments: str) -> str:
        return subprocess.run([os.environ["KOLUM_TOOL"], *arguments], check=True, capture_output=True,
                              text=True).stdout

    return run


@pytest.fixture
def machines(tmp_path):
    place = tmp_path / "machines"
    place.mkdir()
    started = Machines(place)
    yield started
    started.end()


@pytest.fixture
def share(tmp_path, samples):
    """Forty songs and pictures, a file that is not media, and names that are odd."""
    folder = tmp_path / "share"
    folder.mkdir()
    song, picture = samples / "Music/Tones/01-first-tone.mp3", samples / "Photos/bars.png"
    for number in range(20):
        shutil.copy(song, folder / f"{number:02}.mp3")
        shutil.copy(picture, folder / f"{number:02}.png")
    (folder / "text.mp4").write_text("no film")
    for name in (b"caf\xe9.png", b"two\nlines.png"):
        shutil.copy(picture, os.fsencode(folder) + b"/" + name)
    return folder


@pytest.fixture
def library(tmp_path):
    return tmp_path / "cluster.db"
