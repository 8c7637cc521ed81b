"""Scans by many machines of which one lies."""

import os

from machines import FILES, expect_all, paths_in

_LIAR = """
import json, zlib
from kolum import _remote

# Dask may load this more than once.
honest = _remote.honest = getattr(_remote, "honest", _remote.describe)

def describe(task):
    answers = honest(task)
    lines = zlib.decompress(answers.lines).split(b"\\n")[:-1]
    lines = lie(task, answers, lines)
    if lines is not None:
        answers.lines = zlib.compress(b"".join(line + b"\\n" for line in lines))
    return answers

_remote.describe = describe
"""


def liar(machines, tmp_path, lie):
    """A worker whose answers go through the function "lie"."""
    module = tmp_path / "liar.py"
    module.write_text(_LIAR + lie)
    machines.worker("liar", "--preload", str(module))


def problems(result):
    return [line for line in result.err.splitlines() if "kolum-cluster:" in line]


def test_lines_about_other_files_reach_no_library(machines, share, library, tmp_path):
    other = tmp_path / "other.mp3"
    other.write_bytes((share / "00.mp3").read_bytes())
    liar(machines, tmp_path, f"""
def lie(task, answers, lines):
    return [json.dumps({{**json.loads(line), "file": {str(other)!r}}}).encode() if b"/07.mp3" in line else line for line in lines]
""")
    result = machines.scanned(library, share, status=1)
    assert result.summary["skipped"] == 1 and "07.mp3: its answer is about another file" in result.err
    assert len(paths_in(library)) == FILES - 1
    assert os.fsencode(other) not in paths_in(library) and not any(b"/07.mp3" in path for path in paths_in(library))


def test_lines_that_are_no_json_or_of_another_schema_cost_their_files(machines, share, library, tmp_path):
    liar(machines, tmp_path, """
def lie(task, answers, lines):
    return [b"\\x1b[2J" if b"/03.mp3" in line else line.replace(b'"schema":2', b'"schema":1') if b"/04.mp3" in line else
            line[:-1] + b',"x":"' + b"x" * (2 << 20) + b'"}' if b"/05.mp3" in line else line for line in lines]
""")
    result = machines.scanned(library, share, status=1)
    assert result.summary["skipped"] == 3 and len(paths_in(library)) == FILES - 3
    for name, why in (("03.mp3", "is not JSON"), ("04.mp3", "of another schema"), ("05.mp3", "bytes")):
        assert any(name in line and why in line for line in problems(result)), result.err
    assert "\x1b" not in result.err


def test_more_lines_than_files_cost_their_batch(machines, share, library, tmp_path):
    liar(machines, tmp_path, """
def lie(task, answers, lines):
    return lines + lines if any(b"/02.png" in name for name in task.names) else lines
""")
    result = machines.scanned(library, "--batch-files", 2, share, status=1)
    assert "lines for" in result.err
    assert 0 < result.summary["skipped"] <= 2
    assert len(paths_in(library)) == FILES - result.summary["skipped"]


def test_answers_that_cannot_be_unpacked_cost_their_batch(machines, share, library, tmp_path):
    liar(machines, tmp_path, """
def lie(task, answers, lines):
    if not any(b"/02.png" in name for name in task.names):
        return lines
    answers.lines = zlib.compress(bytes(200 << 20)) if len(task.names) > 1 else b"garbage"
""")
    result = machines.scanned(library, "--batch-files", 2, share, status=1)
    assert "cannot be unpacked" in result.err
    assert 0 < result.summary["skipped"] <= 2
    assert len(paths_in(library)) == FILES - result.summary["skipped"]


def test_liar_cannot_speak_for_another_machine(machines, share, library, tmp_path):
    liar(machines, tmp_path, """
def lie(task, answers, lines):
    answers.sees_root, answers.address = False, "tcp://127.0.0.1:1"
    return lines
""")
    result = machines.scanned(library, "--batch-files", 100, share, status=1)
    assert "not of the machine that it names" in result.err and result.summary["skipped"] == FILES


def test_another_machine_makes_up_for_a_liar(machines, share, library, tmp_path):
    liar(machines, tmp_path, """
def lie(task, answers, lines):
    answers.sees_root = False
    return lines
""")
    machines.worker("honest")
    machines.scanned(library, "--batch-files", 2, share, status=1)
    expect_all(library, share, tmp_path)
