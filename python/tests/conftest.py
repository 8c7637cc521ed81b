import os
import subprocess
from pathlib import Path

import pytest


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
