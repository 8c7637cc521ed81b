"""The manual page of kolum-cluster."""

import pathlib
import re
import subprocess

from kolum import _cluster_command

PAGE = pathlib.Path(__file__).parent.parent / "kolum-cluster.1"


def _options_of_the_command():
    scan = _cluster_command._parser()._subparsers._group_actions[0].choices["scan"]
    return {name for action in scan._actions for name in action.option_strings if name.startswith("--")}


def test_names_every_option():
    named = set(re.findall(r"^\.It Fl (?:h , )?(-[a-z-]+)", PAGE.read_text(), re.MULTILINE))
    assert {f"-{name}" for name in named} == _options_of_the_command()


def test_is_clean():
    lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", PAGE], capture_output=True, text=True)
    assert (lint.stdout, lint.returncode) == ("", 0)
