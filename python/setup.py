"""The version, which is CMake's. Everything else is in pyproject.toml."""

import re
from pathlib import Path

from setuptools import setup

project = Path(__file__).resolve().parent.parent / "CMakeLists.txt"
setup(version=re.search(r"^project\(kolum VERSION ([0-9.]+) ", project.read_text(), re.MULTILINE)[1])
