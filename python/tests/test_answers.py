"""Answers of machines that are out of order, or in strange hands: what the coordinator takes of them."""

import json
import tracemalloc
import zlib

import pytest

from kolum import _answers
from kolum._answers import Nonsense, checked, greeting
from kolum._batches import Found
from kolum._remote import Answers

FILES = (Found(b"/share/a.mp3"), Found(b"/share/b\xe9.mp3"), Found(b"/share/c\nd.mp3"))
A = {"schema": _answers.SCHEMA, "file": "/share/a.mp3", "kind": {"id": 2, "name": "audio"}}
B = {**A, "file": "/share/b\ufffd.mp3", "fileBytes": "/share/b%E9.mp3"}
C = {**A, "file": "/share/c\nd.mp3"}


def packed(*lines):
    text = b"".join((line if isinstance(line, bytes) else json.dumps(line).encode()) + b"\n" for line in lines)
    return Answers(lines=zlib.compress(text), machine="node (one)", address="tcp://node:1", root="/share")


def taken(found):
    return [json.loads(line)["file"] for line in found.lines.splitlines()]


def test_honest_answers_are_taken_to_the_letter():
    answers = packed(A, B, C)
    found = checked(answers, FILES)
    assert found.lines == zlib.decompress(answers.lines)
    assert (found.refused, found.not_read, found.machine) == ([], [], "node (one)")


def test_failures_are_counted_from_the_lines():
    failed = {"schema": _answers.SCHEMA, "file": A["file"], "error": {"code": "no-media", "reason": "no media"}}
    answers = packed(failed, B, C)
    answers.failures["invented"] = 1000
    assert checked(answers, FILES).failures == {"no-media": 1}


def test_lines_follow_the_files_that_were_read():
    answers = packed(A, C)
    answers.not_read = [(1, "not-found", "No such file or directory")]
    found = checked(answers, FILES)
    assert taken(found) == [A["file"], C["file"]] and found.not_read == answers.not_read


@pytest.mark.parametrize("line, why", [
    (b"{", "not JSON"), (b"\xff", "not JSON"), (b"[" * 100_000, "not JSON"), (b"", "not JSON"),
    (b"9" * 100_000, "not JSON"),
    (b"[]", "schema"), (b"null", "schema"), ({**B, "schema": 1}, "schema"), ({**B, "schema": "2"}, "schema"),
    ({**B, "file": "/etc/passwd", "fileBytes": "/etc/passwd"}, "another file"), (A, "another file"),
    ({**B, "fileBytes": "/share/../etc/passwd"}, "another file"), ({**B, "fileBytes": 7}, "another file"),
    ({"schema": _answers.SCHEMA, "kind": {}}, "another file"), ({**A, "file": "\ud800"}, "another file"),
    ({**B, "kind": 7}, "says nothing"), ({**B, "error": "broken"}, "without a reason"),
    ({**B, "error": {"code": "\x1b[2J", "reason": ""}}, "without a reason"),
    ({**B, "error": {"code": "not-found", "reason": ""}}, "without a reason"),
    ({**B, "error": {"code": "no-media"}}, "without a reason"),
    ({**B, "title": "x" * (2 << 20)}, "bytes"),
])
def test_a_line_that_makes_no_sense_costs_its_file_only(line, why):
    found = checked(packed(A, line, C), FILES)
    assert taken(found) == [A["file"], C["file"]]
    assert [number for number, _ in found.refused] == [1] and why in found.refused[0][1]


@pytest.mark.parametrize("lines, why", [
    ((A, B, C, C), "4 lines for 3 files"), ((A, B), "2 lines for 3 files"), ((), "0 lines for 3 files")])
def test_an_answer_has_a_line_for_each_file(lines, why):
    with pytest.raises(Nonsense, match=why):
        checked(packed(*lines), FILES)


def changed(**fields):
    answers = packed(A, B, C)
    for name, value in fields.items():
        setattr(answers, name, value)
    return answers


@pytest.mark.parametrize("answers, why", [
    (None, "another kind"), ({"lines": b""}, "another kind"), (changed(sees_root="no"), "another kind"),
    (changed(machine=7), "texts"), (changed(root=None), "texts"), (changed(lines="text"), "no lines"),
    (changed(lines=b"garbage"), "unpacked"), (changed(lines=packed(A).lines[:-3]), "not whole"),
    (changed(lines=packed(A, B, C).lines + b"more"), "not whole"), (changed(lines=zlib.compress(b"no end")), "not whole"),
    (changed(not_read=[(3, "not-found", "")]), "not asked"), (changed(not_read=[(-1, "not-found", "")]), "not asked"),
    (changed(not_read=[(0, "not-found", "")] * 2), "not asked"), (changed(not_read=[(0, "no-media", "")]), "not asked"),
    (changed(not_read=[(True, "not-found", "")]), "not asked"), (changed(not_read={0: "not-found"}), "not asked"),
    (changed(not_read=[(0, [], "")]), "not asked"), (changed(not_read=[(0, "not-found", 7)]), "texts"),
])
def test_an_answer_of_another_form_is_nonsense(answers, why):
    with pytest.raises(Nonsense, match=why):
        checked(answers, FILES)


def test_what_unpacks_to_much_is_not_unpacked():
    packer = zlib.compressobj(9)
    bomb = b"".join(packer.compress(bytes(1 << 20)) for _ in range(512)) + packer.flush()
    assert len(bomb) < 1 << 20
    tracemalloc.start()
    try:
        with pytest.raises(Nonsense, match="more than 64 MiB"):
            checked(changed(lines=bomb), FILES)
        assert tracemalloc.get_traced_memory()[1] < 160 << 20
    finally:
        tracemalloc.stop()


def test_texts_for_people_are_short():
    answers = changed(machine="m" * 10_000_000, not_read=[(0, "not-found", "r" * 10_000_000)], lines=packed(B, C).lines)
    found = checked(answers, FILES)
    assert len(found.machine) <= 300 and len(found.not_read[0][2]) <= 300


def test_greetings_have_a_version_and_a_number():
    assert greeting({"version": "kolum 1", "jobs": 4}) == ("kolum 1", 4)
    for said in (None, [], {}, {"version": 1, "jobs": 1}, {"version": "1", "jobs": 0}, {"version": "1", "jobs": "4"}):
        with pytest.raises(Nonsense):
            greeting(said)
    with pytest.raises(Nonsense, match="does not run"):
        greeting({"error": "kolum does not run"})


def test_schema_is_that_of_the_tool(kolum_tool, samples):
    line = kolum_tool("probe", "--json", str(samples / "Photos/bars.png"))
    assert json.loads(line)["schema"] == _answers.SCHEMA
